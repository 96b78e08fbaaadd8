#include "kz/util/StringTokenizer.h"

#include <algorithm>

namespace kz::util {

StringTokenizer::StringTokenizer(const String& text, const wchar_t* delimiters,
                                 bool returnDelimiters)
    : text_(text), delimiters_(delimiters), returnDelimiters_(returnDelimiters) {
  skipDelimiters();
}

String StringTokenizer::nextToken() {
  const std::wstring& text = text_.characters();
  const std::size_t start = position_;
  position_ = std::min(text.find_first_of(delimiters_, start), text.size());
  // Where a delimiter comes next, it is the part: without it there would be none.
  if (position_ == start && hasMoreTokens()) ++position_;
  const std::size_t length = position_ - start;
  skipDelimiters();
  return text.substr(start, length);
}

int StringTokenizer::countTokens() const {
  StringTokenizer rest(*this);
  int count = 0;
  for (; rest.hasMoreTokens(); ++count) rest.nextToken();
  return count;
}

void StringTokenizer::skipDelimiters() noexcept {
  if (returnDelimiters_) return;
  position_ = std::min(text_.characters().find_first_not_of(delimiters_, position_),
                       text_.characters().size());
}

}  // namespace kz::util
