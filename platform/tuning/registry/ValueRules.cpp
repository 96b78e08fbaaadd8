#include "tuning/registry/ValueRules.h"

#include <algorithm>
#include <charconv>
#include <limits>
#include <set>
#include <system_error>

#include "tuning/Characters.h"

namespace tn::registry {
namespace {

TnStatus refusedBoolean(const CatalogueSetting& /*setting*/, std::string_view canonical) {
  return canonical == "0" || canonical == "1" ? TN_SUCCESS : TN_VALUE_OUT_OF_RANGE;
}

TnStatus refusedInteger(const CatalogueSetting& setting, std::string_view canonical) {
  const std::optional<int32_t> value = parseInteger(canonical);
  const bool inRange = value && *value >= setting.minimum && *value <= largest(setting);
  return inRange ? TN_SUCCESS : TN_VALUE_OUT_OF_RANGE;
}

bool isBlank(std::string_view text) { return text.find_first_not_of(" \t") == text.npos; }

TnStatus refusedString(const CatalogueSetting& setting, std::string_view canonical) {
  const auto longest = std::min<size_t>(static_cast<size_t>(setting.maximum), TN_TEXT_SIZE - 1);
  const auto shortest = static_cast<size_t>(setting.minimum);
  // A settings file carries no blanks at the ends of a value, so blanks alone are as good as
  // nothing.
  if (canonical.size() < shortest || (shortest > 0 && isBlank(canonical))) return TN_EMPTY_VALUE;
  if (canonical.size() > longest) return TN_VALUE_TOO_LONG;
  return std::ranges::any_of(canonical, isControl) ? TN_CONTROL_CHARACTER : TN_SUCCESS;
}

TnStatus refusedItems(const CatalogueSetting& setting, std::string_view canonical) {
  const auto items = parseItems(canonical);
  const auto isChoice = [&](int32_t item) {
    return item >= 0 && static_cast<size_t>(item) < setting.words.size();
  };
  if (!items || !std::ranges::all_of(*items, isChoice)) return TN_NOT_A_CHOICE;
  const std::set<int32_t> distinct(items->begin(), items->end());
  return distinct.size() == items->size() ? TN_SUCCESS : TN_DUPLICATE_CHOICE;
}

TnStatus refusedSingle(const CatalogueSetting& setting, std::string_view canonical) {
  const auto items = parseItems(canonical);
  if (items && items->size() != 1) return TN_ONE_CHOICE_REQUIRED;
  return refusedItems(setting, canonical);
}

// A settings file has no way to write that nothing is selected.
TnStatus refusedMultiple(const CatalogueSetting& setting, std::string_view canonical) {
  if (canonical.empty()) return TN_EMPTY_VALUE;
  return refusedItems(setting, canonical);
}

using Rule = TnStatus (*)(const CatalogueSetting&, std::string_view);
constexpr Rule kRules[] = {refusedBoolean, refusedInteger, refusedString, refusedSingle,
                           refusedMultiple};
static_assert(TN_TYPE_BOOLEAN == 0 && TN_TYPE_INTEGER == 1 && TN_TYPE_STRING == 2 &&
                  TN_TYPE_SINGLE_SELECTION == 3 && TN_TYPE_MULTIPLE_SELECTION == 4,
              "the rules lie in the order of the types");

}  // namespace

TnStatus refusal(const CatalogueSetting& setting, std::string_view canonical) {
  return kRules[setting.type](setting, canonical);
}

int32_t largest(const CatalogueSetting& setting) {
  const bool symbolic = setting.maximum == TN_MAX_MEMORY || setting.maximum == TN_MAX_DISK ||
                        setting.maximum == TN_MAX_MEMORY_AND_DISK;
  return symbolic ? std::numeric_limits<int32_t>::max() : setting.maximum;
}

std::string formatItems(std::span<const int32_t> items) {
  std::string text;
  for (const int32_t item : items) {
    if (!text.empty()) text += ' ';
    text += std::to_string(item);
  }
  return text;
}

std::optional<std::vector<int32_t>> parseItems(std::string_view canonical) {
  std::vector<int32_t> items;
  for (std::string_view rest = canonical; !rest.empty();) {
    const size_t end = std::min(rest.find(' '), rest.size());
    const std::optional<int32_t> item = parseInteger(rest.substr(0, end));
    if (!item) return std::nullopt;
    items.push_back(*item);
    rest.remove_prefix(std::min(end + 1, rest.size()));
  }
  if (formatItems(items) != canonical) return std::nullopt;
  return items;
}

std::optional<int32_t> parseInteger(std::string_view canonical) {
  int32_t value = 0;
  const char* end = canonical.data() + canonical.size();
  const auto [rest, error] = std::from_chars(canonical.data(), end, value);
  if (error != std::errc() || rest != end || std::to_string(value) != canonical) {
    return std::nullopt;
  }
  return value;
}

}  // namespace tn::registry
