#include "tuning/cataloguefile/SettingReader.h"

#include <algorithm>
#include <limits>
#include <set>
#include <utility>

#include "tuning/registry/ValueRules.h"

namespace tn::cataloguefile {
namespace {

using registry::Side;
using Texts = TableReader::Texts;

constexpr int32_t kLeastNumber = std::numeric_limits<int32_t>::min();
constexpr int32_t kLargestNumber = std::numeric_limits<int32_t>::max();

// A settings file is read by its lines' beginnings, which end with a colon.
constexpr LineRule kNameRule{TN_NAME_SIZE - 1, "\"\\:"};
constexpr LineRule kChoiceRule{TN_NAME_SIZE - 1, "\"\\"};
// An import takes the first word of a line for a boolean, and callers provide three bytes less than
// they have room for.
constexpr LineRule kWordRule{TN_WORD_SIZE - 4, "\"\\ "};
// A message with its arguments has 2,047 bytes at most, and what is longer is cut.
constexpr LineRule kDescriptionRule{1900, "\\"};

constexpr std::string_view kOnOff[] = {"on", "off"};

constexpr struct {
  std::string_view word;
  int32_t maximum;
} kSymbolicMaxima[] = {
    {"memory", TN_MAX_MEMORY}, {"disk", TN_MAX_DISK}, {"memory or disk", TN_MAX_MEMORY_AND_DISK}};

std::string rangeText(int64_t least, const std::string& most) {
  return std::to_string(least) + " to " + most;
}

std::string maximumText(int32_t maximum) {
  for (const auto& symbolic : kSymbolicMaxima) {
    if (symbolic.maximum == maximum) return std::string(symbolic.word);
  }
  return std::to_string(maximum);
}

std::string subjectOf(const toml::table& table) {
  const auto id = table["id"].value_exact<int64_t>();
  if (id) return "setting " + std::to_string(*id);
  const auto name = table["name"].value_exact<std::string_view>();
  return name ? "setting " + quoted(*name) : "a setting";
}

}  // namespace

struct SettingReader::Kind {
  std::string_view name;
  TnValueType type;
  void (SettingReader::*read)();
};

const SettingReader::Kind SettingReader::kKinds[] = {
    {"boolean", TN_TYPE_BOOLEAN, &SettingReader::readBoolean},
    {"integer", TN_TYPE_INTEGER, &SettingReader::readInteger},
    {"text", TN_TYPE_STRING, &SettingReader::readText},
    {"one-of", TN_TYPE_SINGLE_SELECTION, &SettingReader::readOneOf},
    {"any-of", TN_TYPE_MULTIPLE_SELECTION, &SettingReader::readAnyOf},
};

SettingReader::SettingReader(const toml::table& table, MadeTexts& made, Faults& faults)
    : table_(table, faults), made_(made) {
  table_.setSubject(subjectOf(table));
  setting_.available = true;
}

registry::CatalogueSetting SettingReader::read() {
  readId();
  setting_.name = table_.oneLine("name", kNameRule);
  setting_.description = table_.oneLine("description", kDescriptionRule);
  readSide();
  readRestart();
  readKind();
  return setting_;
}

void SettingReader::readId() { setting_.id = number("id", 1, kLargestNumber).value_or(0); }

void SettingReader::readSide() {
  const std::string_view side = table_.text("side", Need::optional).value_or("server");
  setting_.side = side == "client" ? Side::client : Side::server;
  if (side != "client" && side != "server") {
    table_.fault("side", "the side " + quoted(side) + " is neither server nor client");
  }
}

void SettingReader::readRestart() {
  const bool restart = table_.boolean("restart", Need::optional).value_or(false);
  if (setting_.id == 0) return;
  const bool announced = std::ranges::binary_search(TN_RESTART_SETTINGS, setting_.id);
  if (restart && !announced) {
    table_.fault("restart",
                 "restart = true needs an id for which a restart is announced; "
                 "knob-catalogue --help lists them");
  } else if (announced && !restart) {
    table_.fault("id", "a restart is announced for this id: give restart = true, or another id");
  }
}

void SettingReader::readKind() {
  const auto name = table_.text("type");
  if (!name) return;
  const auto* kind = std::ranges::find(kKinds, *name, &Kind::name);
  if (kind == std::end(kKinds)) {
    table_.fault("type", "the type " + quoted(*name) +
                             " is none of boolean, integer, text, one-of and any-of");
    return;
  }
  setting_.type = kind->type;
  (this->*kind->read)();
  table_.refuseOtherKeys("a setting of type " + std::string(*name));
}

void SettingReader::readBoolean() {
  const auto value = table_.boolean("default");
  setting_.words = kOnOff;
  if (const auto words = table_.texts("words", Need::optional)) {
    if (words->size() != 2) {
      table_.fault("words", "words has to hold two words, the one for true first");
      return;
    }
    if (!wordsAreSound("words", *words, kWordRule)) return;
    // Every boolean takes these, whatever its own words are.
    const std::wstring whenTrue = upperCase((*words)[0]);
    const std::wstring whenFalse = upperCase((*words)[1]);
    if (whenTrue == whenFalse) table_.fault("words", "the two words are the same");
    if (whenTrue == L"FALSE" || whenTrue == L"0" || whenFalse == L"TRUE" || whenFalse == L"1") {
      table_.fault("words", "the word for true has to come first");
    }
    setting_.words = made_.words.emplace_back(*words);
  }
  if (value) setDefault(*value ? "1" : "0", *value ? "true" : "false");
}

void SettingReader::readInteger() {
  const auto value = table_.integer("default");
  const auto minimum = number("minimum", kLeastNumber, kLargestNumber);
  const auto maximum = integerMaximum();
  if (!minimum || !maximum) return;
  setting_.minimum = *minimum;
  setting_.maximum = *maximum;
  if (*minimum > registry::largest(setting_)) {
    table_.fault("minimum", "the minimum " + std::to_string(*minimum) + " is above the maximum " +
                                maximumText(*maximum));
  } else if (value) {
    setDefault(std::to_string(*value), std::to_string(*value));
  }
}

void SettingReader::readText() {
  const auto value = table_.text("default");
  const auto longest = number("maximum", 1, TN_TEXT_SIZE - 1);
  const bool mayBeEmpty = table_.boolean("may_be_empty", Need::optional).value_or(false);
  if (mayBeEmpty && setting_.id != TN_EMPTY_VALUE_SETTING) {
    table_.fault("may_be_empty", "may_be_empty = true is possible with the id " +
                                     std::to_string(TN_EMPTY_VALUE_SETTING) + " only");
  }
  if (!longest) return;
  setting_.minimum = mayBeEmpty ? 0 : 1;
  setting_.maximum = *longest;
  if (value) setDefault(std::string(*value), quoted(*value));
}

void SettingReader::readOneOf() {
  const auto value = table_.text("default");
  if (!readChoices() || !value) return;
  if (auto canonical = positions({*value})) setDefault(std::move(*canonical), quoted(*value));
}

void SettingReader::readAnyOf() {
  const auto value = table_.texts("default");
  if (!readChoices() || !value) return;
  if (auto canonical = positions(*value)) setDefault(std::move(*canonical), "");
}

std::optional<int32_t> SettingReader::number(std::string_view key, int32_t least, int32_t most) {
  const auto value = table_.integer(key);
  if (!value) return std::nullopt;
  if (*value >= least && *value <= most) return static_cast<int32_t>(*value);
  table_.fault(key, "the " + std::string(key) + ' ' + std::to_string(*value) + " is outside " +
                        rangeText(least, std::to_string(most)));
  return std::nullopt;
}

std::optional<int32_t> SettingReader::integerMaximum() {
  const toml::node* node = table_.find("maximum", Need::optional);
  if (node == nullptr || !node->is_string()) {
    const auto maximum = number("maximum", kLeastNumber, kLargestNumber);
    if (!maximum || maximumText(*maximum) == std::to_string(*maximum)) return maximum;
    table_.fault("maximum", "the maximum " + std::to_string(*maximum) + " stands for " +
                                quoted(maximumText(*maximum)) +
                                "; choose another number, or write that");
    return std::nullopt;
  }
  const std::string& word = **node->as_string();
  for (const auto& symbolic : kSymbolicMaxima) {
    if (symbolic.word == word) return symbolic.maximum;
  }
  table_.fault("maximum", "the maximum " + quoted(word) +
                              " is neither a number nor memory, disk, or memory or disk");
  return std::nullopt;
}

bool SettingReader::wordsAreSound(std::string_view key, const Texts& words, const LineRule& rule) {
  std::set<std::string_view> distinct;
  bool sound = true;
  for (const std::string_view word : words) {
    std::string fault = lineFault(word, rule);
    if (fault.empty() && !distinct.insert(word).second) fault = "is there twice";
    if (fault.empty()) continue;
    table_.fault(key, quoted(word) + " in " + std::string(key) + ' ' + fault);
    sound = false;
  }
  return sound;
}

bool SettingReader::readChoices() {
  const auto choices = table_.texts("choices");
  if (!choices) return false;
  if (choices->empty() || choices->size() > TN_SELECTION_CAPACITY) {
    table_.fault("choices",
                 "choices has to hold 1 to " + std::to_string(TN_SELECTION_CAPACITY) + " texts");
    return false;
  }
  if (!wordsAreSound("choices", *choices, kChoiceRule)) return false;
  setting_.words = made_.words.emplace_back(*choices);
  return true;
}

std::optional<std::string> SettingReader::positions(const Texts& chosen) {
  std::vector<int32_t> items;
  for (const std::string_view choice : chosen) {
    const auto found = std::ranges::find(setting_.words, choice);
    if (found == setting_.words.end()) {
      table_.fault("default", "the default " + quoted(choice) + " is not one of the choices");
      return std::nullopt;
    }
    items.push_back(static_cast<int32_t>(found - setting_.words.begin()));
  }
  return registry::formatItems(items);
}

void SettingReader::setDefault(std::string canonical, const std::string& shown) {
  setting_.defaultValue = made_.defaults.emplace_back(std::move(canonical));
  switch (registry::refusal(setting_, setting_.defaultValue)) {
    case TN_SUCCESS:
      return;
    case TN_VALUE_OUT_OF_RANGE:
      return table_.fault("default",
                          "the default " + shown + " is outside " +
                              rangeText(setting_.minimum, maximumText(setting_.maximum)));
    case TN_VALUE_TOO_LONG:
      return table_.fault("default",
                          "the default has " + std::to_string(setting_.defaultValue.size()) +
                              " bytes, more than the maximum " + std::to_string(setting_.maximum));
    case TN_EMPTY_VALUE:
      return table_.fault("default", "the default is empty");
    case TN_CONTROL_CHARACTER:
      return table_.fault("default", "the default holds a line end or another control character");
    case TN_DUPLICATE_CHOICE:
      return table_.fault("default", "the default has a choice twice");
    default:
      return table_.fault("default", "the default is not a value of the setting");
  }
}

}  // namespace tn::cataloguefile
