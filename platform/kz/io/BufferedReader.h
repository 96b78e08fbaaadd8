// Lines from a reader. A line ends at a line feed, which is not part of it; a carriage return
// before it is. The last line need not have an end.
//
// A caller that cannot trust its input gives readLine a limit: then no line takes more memory than
// that, and a line without an end does not keep it reading. skipRest reads over what is left of it.
#ifndef KNOB_KZ_IO_BUFFERED_READER_H
#define KNOB_KZ_IO_BUFFERED_READER_H

#include <limits>

#include "kz/Reference.h"
#include "kz/String.h"
#include "kz/io/Reader.h"

namespace kz::io {

class BufferedReader : public Object {
 public:
  // The buffer size is in characters.
  BufferedReader(Reader* reader, long bufferSize);

  // The length of the line, or -1 at the end, where the line is empty. Of a line of more characters
  // than the limit (1 or more) the first so many are given, and the next call goes on with the
  // rest.
  int readLine(String& line, int limit = std::numeric_limits<int>::max());
  // Whether the last line had more characters than the limit.
  bool isCut() const noexcept { return cut_; }
  // Reads to the end of a line that was cut, keeping nothing.
  void skipRest();
  // Steps over the character if it comes next.
  void skip(wchar_t character);

 private:
  // Whether there is a character at the position.
  bool available();
  bool fill();
  // Steps over the line feed at the position, unless the buffer ends there.
  bool endLine() noexcept;

  Reference<Reader> reader_;
  std::wstring buffer_;
  std::size_t position_ = 0;
  bool cut_ = false;
};

}  // namespace kz::io

#endif
