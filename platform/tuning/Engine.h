// One open connection to one engine: what the tuning library needs of whatever holds settings.
// The library in front of it has checked handles, pointers and selectors and copies what an engine
// returns into the caller's buffers; the engine knows which settings exist, what they hold and
// which values they take.
//
// An engine implements the protected operations and throws TuningError. The library calls the try
// operations, which end every exception as a status: an engine may come out of a module that has a
// C++ runtime of its own, and no exception may pass from one runtime into another.
//
// Ids are the engine's own. Every operation that is given a category or setting id that the engine
// does not know fails with TN_UNKNOWN_CATEGORY or TN_UNKNOWN_SETTING; one that does not fit the
// setting's value type with TN_WRONG_VALUE_TYPE; values of a setting that is not available are
// refused with TN_SETTING_UNAVAILABLE.
#ifndef KNOB_TUNING_ENGINE_H
#define KNOB_TUNING_ENGINE_H

#include <cstdint>
#include <string>
#include <vector>

#include "service/TuningInterface.h"
#include "tuning/Guarded.h"

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
  // Closes the connection.
  virtual ~Engine() = default;

  // What the library calls. Virtual, and neither overridden nor final: so a call enters the code of
  // the engine's own library, where its exceptions are caught.
  virtual TnStatus tryLeave() noexcept {
    return guarded([&] { leave(); });
  }
  virtual TnStatus tryCategories(std::vector<int32_t>& ids) noexcept {
    return guarded([&] { ids = categories(); });
  }
  virtual TnStatus tryCategory(int32_t categoryId, CategoryInfo& info) noexcept {
    return guarded([&] { info = category(categoryId); });
  }
  virtual TnStatus trySettings(int32_t categoryId, std::vector<int32_t>& ids) noexcept {
    return guarded([&] { ids = settings(categoryId); });
  }
  virtual TnStatus trySetting(int32_t settingId, SettingInfo& info) noexcept {
    return guarded([&] { info = setting(settingId); });
  }
  virtual TnStatus tryIsAvailable(int32_t settingId, bool& available) noexcept {
    return guarded([&] { available = isAvailable(settingId); });
  }
  virtual TnStatus tryDescription(int32_t settingId, std::string& text) noexcept {
    return guarded([&] { text = description(settingId); });
  }
  virtual TnStatus tryBooleanValue(int32_t settingId, Selector selector, bool& value) noexcept {
    return guarded([&] { value = booleanValue(settingId, selector); });
  }
  virtual TnStatus tryIntegerValue(int32_t settingId, Selector selector, int32_t& value) noexcept {
    return guarded([&] { value = integerValue(settingId, selector); });
  }
  virtual TnStatus tryStringValue(int32_t settingId, Selector selector,
                                  std::string& value) noexcept {
    return guarded([&] { value = stringValue(settingId, selector); });
  }
  virtual TnStatus trySelectionValue(int32_t settingId, Selector selector,
                                     std::vector<int32_t>& items) noexcept {
    return guarded([&] { items = selectionValue(settingId, selector); });
  }
  virtual TnStatus tryBooleanWords(int32_t settingId, BooleanWords& words) noexcept {
    return guarded([&] { words = booleanWords(settingId); });
  }
  virtual TnStatus tryLimits(int32_t settingId, Limits& range) noexcept {
    return guarded([&] { range = limits(settingId); });
  }
  virtual TnStatus trySelectionItems(int32_t settingId, std::vector<int32_t>& items) noexcept {
    return guarded([&] { items = selectionItems(settingId); });
  }
  virtual TnStatus trySelectionText(int32_t settingId, int32_t item, std::string& text) noexcept {
    return guarded([&] { text = selectionText(settingId, item); });
  }
  virtual TnStatus trySetBoolean(int32_t settingId, bool value) noexcept {
    return guarded([&] { setBoolean(settingId, value); });
  }
  virtual TnStatus trySetInteger(int32_t settingId, int64_t value) noexcept {
    return guarded([&] { setInteger(settingId, value); });
  }
  virtual TnStatus trySetString(int32_t settingId, const std::string& value) noexcept {
    return guarded([&] { setString(settingId, value); });
  }
  virtual TnStatus trySetSelection(int32_t settingId, const std::vector<int32_t>& items) noexcept {
    return guarded([&] { setSelection(settingId, items); });
  }

 protected:
  // What the engine still has to do when its caller is done: make changes take effect, say. Called
  // once, before the engine is destroyed; throws what could not be done.
  virtual void leave() {}

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
