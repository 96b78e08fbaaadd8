// The record of one setting.
#ifndef KNOB_SERVICE_SETTING_INFO_H
#define KNOB_SERVICE_SETTING_INFO_H

#include <algorithm>
#include <iterator>

#include "kz/String.h"
#include "service/TuningInterface.h"

class SettingInfo : public kz::Object {
 public:
  // Value types. The program treats both selections alike.
  static constexpr int BOOLEAN = TN_TYPE_BOOLEAN;
  static constexpr int INTEGER = TN_TYPE_INTEGER;
  static constexpr int STRING = TN_TYPE_STRING;
  static constexpr int SINGLE_SELECTION = TN_TYPE_SINGLE_SELECTION;
  static constexpr int MULTIPLE_SELECTION = TN_TYPE_MULTIPLE_SELECTION;

  // The program announces a restart after a change of the setting.
  static bool announcesRestart(int settingId) {
    const auto* const end = std::end(TN_RESTART_SETTINGS);
    return std::find(std::begin(TN_RESTART_SETTINGS), end, settingId) != end;
  }
  static bool mayBeEmpty(int settingId) { return settingId == TN_EMPTY_VALUE_SETTING; }

  SettingInfo(int settingId, int valueType, kz::String settingName, int settingExtraInfo,
              int clientServerFlag, bool isAvailable)
      : id(settingId),
        type(valueType),
        name(settingName),
        extraInfo(settingExtraInfo),
        clientServer(clientServerFlag),
        available(isAvailable) {}

  int id;
  int type;  // one of the above, or what the engine says
  kz::String name;
  int extraInfo;     // the engine's own; carried, not read
  int clientServer;  // 0: a client setting, otherwise a server setting
  bool available;
};

#endif
