#include "output/MessageArguments.h"

#include <algorithm>

namespace {

constexpr MessageArguments::Entry kTable[] = {{"ACCESS_ERROR", ""},
                                              {"COPYRIGHT", ""},
                                              {"ERR_CREATE_FILE", "ttn"},
                                              {"ERR_FILE_NOT_CREATED", ""},
                                              {"ERR_INTERACTIVE_INPUT", ""},
                                              {"ERR_INVALID_COMMAND", ""},
                                              {"ERR_INVALID_VALUE", "tn"},
                                              {"ERR_READ_FILE", "ttn"},
                                              {"ERR_SKIP_STG", "t"},
                                              {"ERR_STG_VALUE", "tn"},
                                              {"ERR_VALUE_NOT_FOUND", "n"},
                                              {"FATAL_ERROR", "n"},
                                              {"FILE_IN_USE_ERROR", ""},
                                              {"FILE_NOT_FOUND_ERROR", ""},
                                              {"HDR_CATEGORY", "ntn"},
                                              {"HDR_CLIENT", ""},
                                              {"HDR_COUNT", "n"},
                                              {"HDR_MATCH_STG", "t"},
                                              {"HDR_QRY_STRING", "t"},
                                              {"HDR_SERVER", ""},
                                              {"INFO_MAX_DISK", ""},
                                              {"INFO_MAX_MEM", ""},
                                              {"INFO_MAX_MEM_DISK", ""},
                                              {"INFO_NO_MATCH", "t"},
                                              {"INFO_OVERWRITE", "t"},
                                              {"INFO_RESTART", ""},
                                              {"INFO_STGS_WRITTEN", "t"},
                                              {"INFO_STG_UPDATED", "n"},
                                              {"INFO_STG_UPDATED_FILE", "t"},
                                              {"INVALID_SETTING_VALUE", ""},
                                              {"MISSING_OPTION_VALUE", "t"},
                                              {"NAME", "t"},
                                              {"READING_ENDED_ON_ERROR", "t"},
                                              {"TAG_BOOL_OPTIONS", "tt"},
                                              {"TAG_DEF_VALUE", "t"},
                                              {"TAG_DESC", "tt"},
                                              {"TAG_ID", ""},
                                              {"TAG_OPTIONS", ""},
                                              {"TAG_RANGE", "nt"},
                                              {"TAG_VALUE", ""},
                                              {"UNKNOWN_OPTION", "t"},
                                              {"USAGE", ""},
                                              {"WRITE_SETTING_ERROR", "nt"}};
static_assert(std::ranges::is_sorted(kTable, {}, &MessageArguments::Entry::key));

constexpr std::size_t kMostDigits = 4;  // a message has no room for more characters than they say

// Takes characters of the set off the beginning of the text.
void skip(std::wstring_view& text, std::wstring_view set,
          std::size_t most = std::wstring_view::npos) {
  text.remove_prefix(std::min({text.find_first_not_of(set), text.size(), most}));
}

// The number of a status is its key.
bool isStatus(std::string_view key) {
  if (key.starts_with('-')) key.remove_prefix(1);
  return !key.empty() && key.find_first_not_of("0123456789") == key.npos;
}

// What the conversion at the beginning of the text takes, 0 for one that has no meaning here. The
// conversion is taken off.
char takeConversion(std::wstring_view& text) {
  constexpr std::wstring_view kDigits = L"0123456789";
  skip(text, L"-+ #0'");
  skip(text, kDigits, kMostDigits);
  if (text.starts_with(L'.')) {
    text.remove_prefix(1);
    skip(text, kDigits, kMostDigits);
  }
  if (text.empty()) return 0;
  const wchar_t letter = text.front();
  text.remove_prefix(1);
  if (letter == L's') return MessageArguments::TEXT;
  return std::wstring_view(L"dioxXu").find(letter) != std::wstring_view::npos
             ? MessageArguments::NUMBER
             : '\0';
}

}  // namespace

std::span<MessageArguments::Entry const> MessageArguments::table() { return kTable; }

std::optional<std::string_view> MessageArguments::of(std::string_view key) {
  const auto* const entry = std::ranges::lower_bound(kTable, key, {}, &Entry::key);
  if (entry != std::end(kTable) && entry->key == key) return entry->kinds;
  return isStatus(key) ? std::optional(std::string_view()) : std::nullopt;
}

bool MessageArguments::suffice(std::string_view kinds, std::wstring_view text) {
  for (std::size_t at = text.find(L'%'); at != std::wstring_view::npos; at = text.find(L'%')) {
    text.remove_prefix(at + 1);
    if (text.starts_with(L'%')) {
      text.remove_prefix(1);
    } else {
      const char kind = takeConversion(text);
      if (kinds.empty() || kind != kinds.front()) return false;
      kinds.remove_prefix(1);
    }
  }
  return true;
}
