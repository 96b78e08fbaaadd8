#include "tuning/cataloguefile/LineText.h"

#include <algorithm>

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

std::string lowerCase(std::string_view text) {
  std::string lowered(text);
  std::ranges::transform(lowered, lowered.begin(), lower);
  return lowered;
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
