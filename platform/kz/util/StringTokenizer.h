// The parts of a text between delimiter characters. Empty parts are not returned; the delimiters
// are, each as a part of its own, when that is asked for.
#ifndef KNOB_KZ_UTIL_STRING_TOKENIZER_H
#define KNOB_KZ_UTIL_STRING_TOKENIZER_H

#include "kz/String.h"

namespace kz::util {

class StringTokenizer {
 public:
  StringTokenizer(const String& text, const wchar_t* delimiters, bool returnDelimiters = false);

  bool hasMoreTokens() const noexcept { return position_ < text_.characters().size(); }
  // Empty when there are no more.
  String nextToken();
  // How many nextToken() will still return.
  int countTokens() const;

 private:
  void skipDelimiters() noexcept;

  String text_;
  std::wstring delimiters_;
  bool returnDelimiters_;
  std::size_t position_ = 0;
};

}  // namespace kz::util

#endif
