// What text means to every engine, whatever the language of the system: letters of ASCII without
// regard to case, and the characters that no value may hold.
#ifndef KNOB_TUNING_CHARACTERS_H
#define KNOB_TUNING_CHARACTERS_H

#include <algorithm>
#include <string_view>

namespace tn {

inline char lower(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + ('a' - 'A')) : c; }

inline bool isSameIgnoringCase(std::string_view a, std::string_view b) {
  return std::ranges::equal(a, b, {}, lower, lower);
}

// A control character that no value may hold. A tab may be in one, though an import loses it.
inline bool isControl(char c) {
  return (static_cast<unsigned char>(c) < ' ' && c != '\t') || c == '\x7f';
}

}  // namespace tn

#endif
