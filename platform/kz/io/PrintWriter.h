// Prints text and lines on a writer. With automatic flushing every line is handed on at once; text
// without a line end waits for the next line or flush.
#ifndef KNOB_KZ_IO_PRINT_WRITER_H
#define KNOB_KZ_IO_PRINT_WRITER_H

#include "kz/Reference.h"
#include "kz/io/Writer.h"

namespace kz::io {

class PrintWriter : public Object {
 public:
  PrintWriter(Writer* writer, bool autoFlush) : writer_(writer), autoFlush_(autoFlush) {}

  void print(const String& text) { writer_->write(text); }
  // The text and a line feed.
  void println(const String& text) {
    writer_->writeLine(text);
    if (autoFlush_) flush();
  }
  void flush() { writer_->flush(); }
  void close() { writer_->close(); }

 private:
  Reference<Writer> writer_;
  bool autoFlush_;
};

}  // namespace kz::io

#endif
