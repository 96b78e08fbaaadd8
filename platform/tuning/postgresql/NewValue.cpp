#include "tuning/postgresql/NewValue.h"

#include <algorithm>
#include <utility>

#include "tuning/Characters.h"
#include "tuning/TuningError.h"
#include "tuning/postgresql/NameList.h"

namespace tn::postgresql {
namespace {

// Of a setting that cannot be changed at all, that is what is wrong with any value.
[[noreturn]] void refuse(const Setting& setting, TnStatus status) {
  throw TuningError(setting.preset ? TnStatus{TN_SETTING_READ_ONLY} : status);
}

}  // namespace

NewValue::NewValue(std::string shown, std::vector<std::string> parts, bool list)
    : shown_(std::move(shown)), parts_(std::move(parts)), list_(list) {}

NewValue NewValue::ofBoolean(bool value) {
  const std::string text = value ? Setting::kOn : Setting::kOff;
  return {text, {text}, false};
}

NewValue NewValue::ofInteger(const Setting& setting, int64_t value) {
  if (value < setting.lowest || value > setting.highest) {
    refuse(setting, TN_VALUE_OUT_OF_RANGE);
  }
  const std::string text = std::to_string(value);
  return {text, {text}, false};
}

NewValue NewValue::ofText(const Setting& setting, const std::string& value) {
  if (std::any_of(value.begin(), value.end(), isControl)) refuse(setting, TN_CONTROL_CHARACTER);
  if (setting.list == NameList::Kind::none) return {value, {value}, false};
  auto names = NameList::ofPerson(value, setting.list);
  if (!names) throw TuningError(TN_LIST_MALFORMED);
  if (setting.listIsOneText) return ofOneText(setting, NameList::shown(*names));
  return {NameList::shown(*names), std::move(*names), true};
}

// As the running server has it, where that is the same list: another text would wait for a restart.
NewValue NewValue::ofOneText(const Setting& setting, const std::string& list) {
  if (list != setting.current) return {list, {list}, false};
  return {list, {std::string(setting.running)}, false};
}

NewValue NewValue::ofChoice(const Setting& setting, const std::vector<int32_t>& items) {
  if (items.size() != 1) refuse(setting, TN_ONE_CHOICE_REQUIRED);
  const auto item = static_cast<std::size_t>(items.front());
  if (item >= setting.items.size() || !setting.items[item].available) {
    refuse(setting, TN_NOT_A_CHOICE);
  }
  const std::string& text = setting.items[item].text;
  return {text, {text}, false};
}

std::string NewValue::text() const { return list_ ? NameList::stored(parts_) : parts_.front(); }

}  // namespace tn::postgresql
