#include "tuning/cataloguefile/LineText.h"

#include <algorithm>

namespace tn::cataloguefile {
namespace {

constexpr size_t kShown = 60;

constexpr struct {
  char character;
  std::string_view name;
} kNames[] = {{'"', "a double quote"}, {'\\', "a backslash"}, {':', "a colon"}, {' ', "a blank"}};

bool isControl(char character) {
  const auto byte = static_cast<unsigned char>(character);
  return byte < 0x20 || byte == 0x7f;
}

bool continuesCharacter(char character) {
  return (static_cast<unsigned char>(character) & 0xc0U) == 0x80U;
}

}  // namespace

std::string lineFault(std::string_view text, const LineRule& rule) {
  if (text.empty()) return "is empty";
  if (std::ranges::any_of(text, isControl)) return "holds a line end or another control character";
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

std::string lowerCase(std::string_view text) {
  std::string lower(text);
  for (char& character : lower) {
    if (character >= 'A' && character <= 'Z') character = static_cast<char>(character + 'a' - 'A');
  }
  return lower;
}

std::string printable(std::string_view text) {
  constexpr std::string_view kDigits = "0123456789abcdef";
  std::string shown;
  for (const char character : text) {
    if (!isControl(character)) {
      shown += character;
      continue;
    }
    const auto byte = static_cast<unsigned char>(character);
    shown += {'\\', 'x', kDigits[byte >> 4U], kDigits[byte & 0xfU]};
  }
  return shown;
}

}  // namespace tn::cataloguefile
