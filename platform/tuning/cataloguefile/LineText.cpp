#include "tuning/cataloguefile/LineText.h"

#include <algorithm>
#include <cstdlib>
#include <locale.h>
#include <wctype.h>

#include "tuning/Characters.h"

namespace tn::cataloguefile {
namespace {

constexpr size_t kShown = 60;

constexpr struct {
  char character;
  std::string_view name;
} kNames[] = {{'"', "a double quote"}, {'\\', "a backslash"}, {':', "a colon"}, {' ', "a blank"}};

// In one line of a catalogue a tab is one as well.
bool isLineControl(char character) { return isControl(character) || character == '\t'; }

locale_t plainLocale() {
  static const locale_t locale = newlocale(LC_CTYPE_MASK, "C", nullptr);
  return locale;
}

// A file of the system, which is opened for the first letter outside ASCII.
locale_t unicodeLocale() {
  static const locale_t locale = newlocale(LC_CTYPE_MASK, "C.UTF-8", nullptr);
  return locale;
}

bool continuesCharacter(char character) {
  return (static_cast<unsigned char>(character) & 0xc0U) == 0x80U;
}

}  // namespace

std::string lineFault(std::string_view text, const LineRule& rule) {
  if (text.empty()) return "is empty";
  if (std::ranges::any_of(text, isLineControl))
    return "holds a line end or another control character";
  if (text.front() == ' ' || text.back() == ' ') return "begins or ends with a blank";
  if (text.size() > rule.longest) {
    return "has " + std::to_string(text.size()) + " bytes, more than " +
           std::to_string(rule.longest);
  }
  for (const auto& [character, name] : kNames) {
    if (rule.forbidden.find(character) != text.npos && text.find(character) != text.npos) {
      return "holds " + std::string(name);
    }
  }
  return "";
}

std::string quoted(std::string_view text) {
  size_t end = std::min(text.size(), kShown);
  while (end < text.size() && continuesCharacter(text[end])) --end;
  return '"' + std::string(text.substr(0, end)) + (end < text.size() ? "...\"" : "\"");
}

std::wstring upperCase(std::string_view text) {
  const std::string bytes(text);
  std::wstring letters(text.begin(), text.end());  // where the locale is missing
  const bool isPlain = std::ranges::none_of(text, [](char c) { return (c & 0x80) != 0; });
  const locale_t before = uselocale(isPlain ? plainLocale() : unicodeLocale());
  const size_t count = std::mbstowcs(nullptr, bytes.c_str(), 0);
  if (count <= letters.size()) {
    letters.resize(std::mbstowcs(letters.data(), bytes.c_str(), count));
  }
  std::ranges::transform(letters, letters.begin(), towupper);
  uselocale(before);
  return letters;
}

std::string printable(std::string_view text) {
  constexpr std::string_view kDigits = "0123456789abcdef";
  std::string shown;
  for (const char character : text) {
    if (!isLineControl(character)) {
      shown += character;
      continue;
    }
    const auto byte = static_cast<unsigned char>(character);
    shown += {'\\', 'x', kDigits[byte >> 4U], kDigits[byte & 0xfU]};
  }
  return shown;
}

}  // namespace tn::cataloguefile
