// Lines from a reader. A line ends at a line feed, which is not part of it; a carriage return
// before it is. The last line need not have an end.
#ifndef KNOB_KZ_IO_BUFFERED_READER_H
#define KNOB_KZ_IO_BUFFERED_READER_H

#include "kz/Reference.h"
#include "kz/String.h"
#include "kz/io/Reader.h"

namespace kz::io {

class BufferedReader : public Object {
 public:
  // The buffer size is in characters.
  BufferedReader(Reader* reader, long bufferSize);

  // The length of the line, or -1 at the end, where the line is empty.
  int readLine(String& line);

 private:
  bool fill();

  Reference<Reader> reader_;
  std::wstring buffer_;
  std::size_t position_ = 0;
};

}  // namespace kz::io

#endif
