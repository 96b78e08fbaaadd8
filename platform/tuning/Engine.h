// One open connection to one engine: what the tuning library needs of whatever holds settings.
// The library in front of it has checked handles, pointers and selectors and copies what an engine
// returns into the caller's buffers; the engine knows which settings exist, what they hold and
// which values they take.
//
// Ids are the engine's own. Every operation that is given a category or setting id that the engine
// does not know throws TuningError with TN_UNKNOWN_CATEGORY or TN_UNKNOWN_SETTING; one that does
// not fit the setting's value type throws TN_WRONG_VALUE_TYPE; values of a setting that is not
// available are refused with TN_SETTING_UNAVAILABLE.
#ifndef KNOB_TUNING_ENGINE_H
#define KNOB_TUNING_ENGINE_H

#include <cstdint>
#include <string>
#include <vector>

#include "service/TuningInterface.h"

namespace tn {

enum class Selector : TnValueSelector {
  defaultValue = TN_DEFAULT_VALUE,
  currentValue = TN_CURRENT_VALUE
};

struct CategoryInfo {
  std::string name;     // at most 255 bytes
  int32_t changed = 0;  // how many of its settings differ from their default
};

struct SettingInfo {
  TnValueType type = TN_TYPE_STRING;
  std::string name;  // at most 255 bytes
  bool server = true;
};

struct BooleanWords {
  std::string whenTrue;
  std::string whenFalse;
};

struct Limits {
  int32_t maximum = 0;  // or one of the symbolic maxima
  int32_t minimum = 0;
};

class Engine {
 public:
  Engine() = default;
  Engine(const Engine&) = delete;
  Engine& operator=(const Engine&) = delete;
  // Closes the connection. What the engine does when it is left (make its changes take effect,
  // say) happens here; it cannot report a failure.
  virtual ~Engine() = default;

  // In display order; at most TN_CATEGORY_CAPACITY, and at most TN_SETTING_CAPACITY settings in
  // each. An engine with more settings than that throws TN_TOO_MANY_SETTINGS: none may be lost.
  virtual std::vector<int32_t> categories() = 0;
  virtual CategoryInfo category(int32_t categoryId) = 0;
  virtual std::vector<int32_t> settings(int32_t categoryId) = 0;

  virtual SettingInfo setting(int32_t settingId) = 0;
  // False for an unknown id too. Does not throw TuningError.
  virtual bool isAvailable(int32_t settingId) = 0;
  // One line of text for an administrator, of any length.
  virtual std::string description(int32_t settingId) = 0;

  virtual bool booleanValue(int32_t settingId, Selector selector) = 0;
  virtual int32_t integerValue(int32_t settingId, Selector selector) = 0;
  virtual std::string stringValue(int32_t settingId, Selector selector) = 0;
  // The selected items, as values of selectionItems().
  virtual std::vector<int32_t> selectionValue(int32_t settingId, Selector selector) = 0;

  virtual BooleanWords booleanWords(int32_t settingId) = 0;
  virtual Limits limits(int32_t settingId) = 0;
  // In display order. Users type an item's position in this list, so item values are positions.
  virtual std::vector<int32_t> selectionItems(int32_t settingId) = 0;
  virtual std::string selectionText(int32_t settingId, int32_t item) = 0;

  // Setters check the value against the setting, throw the status that tells what is wrong with
  // it, and return when the change is durable. A value that is current already is success and
  // writes nothing.
  virtual void setBoolean(int32_t settingId, bool value) = 0;
  virtual void setInteger(int32_t settingId, int64_t value) = 0;
  virtual void setString(int32_t settingId, const std::string& value) = 0;
  virtual void setSelection(int32_t settingId, const std::vector<int32_t>& items) = 0;
};

}  // namespace tn

#endif
