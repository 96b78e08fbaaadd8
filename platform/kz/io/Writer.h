// A sink of text.
#ifndef KNOB_KZ_IO_WRITER_H
#define KNOB_KZ_IO_WRITER_H

#include "kz/String.h"

namespace kz::io {

class Writer : public Object {
 public:
  virtual void write(const String& text) = 0;
  // The text and a line feed, handed on in one piece.
  virtual void writeLine(const String& text) = 0;
  // Hands what is buffered to the system.
  virtual void flush() = 0;
  // Flushes and closes; a second call does nothing. When flushing fails, a second call closes.
  virtual void close() = 0;
};

}  // namespace kz::io

#endif
