// The one gateway from the program to the engine's tuning interface. It holds the connection, turns
// the interface's records and values into objects and texts, and every failure status into an
// SvcException with a message for people.
//
// Every operation throws SvcException with the interface's status unless it says otherwise.
// Operations on settings need a connection.
#ifndef KNOB_SERVICE_SVC_CONFIG_HELPER_H
#define KNOB_SERVICE_SVC_CONFIG_HELPER_H

#include <cstdint>

#include "kz/String.h"
#include "kz/collections/List.h"
#include "output/MessageHelper.h"
#include "service/CategoryInfo.h"
#include "service/SettingInfo.h"
#include "service/SvcException.h"
#include "service/TuningInterface.h"

class SvcConfigHelper : public kz::Object {
 public:
  using StringList = kz::collections::List<kz::String>;

  // Which value of a setting.
  static constexpr int DEFAULT_VALUE = TN_DEFAULT_VALUE;
  static constexpr int CURRENT_VALUE = TN_CURRENT_VALUE;

  SvcConfigHelper();

  // All three empty: the local engine. Texts over 255 bytes are refused. After a failure the
  // interface is stopped.
  void connect(kz::String server, kz::String user, kz::String password);
  // Never throws; a second call does nothing.
  void disconnect();

  // The text of a code: the interface's with the code in front, the program's own without.
  kz::String createErrorMsg(int code);

  // New lists and records, which the caller takes a reference on, in the engine's order. Settings
  // that are not available are in the list.
  kz::collections::List<CategoryInfo>* getCategoryList();
  int getCategoryListCount();
  kz::collections::List<SettingInfo>* getSettingInfoList(int categoryId);
  // Throws UNKNOWN_SETTING for a setting that the engine does not know and, on demand, for one that
  // is not available.
  SettingInfo* getSettingInfo(int settingId, bool mustBeAvailable);
  // Never throws.
  bool isSettingAvailable(int settingId);

  kz::String getStringValue(int settingId, int which);
  kz::String getLongValue(int settingId, int which);
  // In the setting's own words.
  kz::String getBooleanValue(int settingId, int which);
  void getBooleanStrings(int settingId, kz::String& trueWord, kz::String& falseWord);
  kz::String getBooleanTrueStr(int settingId);
  kz::String getBooleanFalseStr(int settingId);
  // A new list of the selected items' indices in decimal.
  StringList* getSelectionValues(int settingId, int which);
  kz::String getSelectionString(int settingId, int item);
  // A new list of the texts of all items, in order.
  StringList* getAllPossibleSelections(int settingId);
  void getValueLimit(int settingId, int* maximum, int* minimum);
  kz::String getSettingHelp(int settingId);

  // The engine judges the values. A text that the interface could not carry, over 1,023 bytes or
  // with a NUL in it, is refused before the call.
  void setStringValue(int settingId, kz::String value, int which);
  void setLongValue(int settingId, std::int64_t value, int which);
  void setBooleanValue(int settingId, bool value, int which);
  void setSelectionValue(int settingId, int count, int* items, int which);

 private:
  void check(TnStatus status);
  [[noreturn]] void fail(int code);
  SettingInfo* makeSettingInfo(int settingId, const TnSettingRecord& record);

  TnHandle handle = TN_NO_HANDLE;
  bool stopped = false;
  kz::Reference<MessageHelper> interfaceMessages;
  kz::Reference<MessageHelper> programMessages;
};

#endif
