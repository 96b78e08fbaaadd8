// Text written as UTF-8 bytes on a stream, through a buffer: one system call for all that was
// written between two flushes, unless that outgrows the buffer.
//
// When the stream fails, its exception passes to the caller and what was buffered is dropped: it is
// never written a second time.
#ifndef KNOB_KZ_IO_OUTPUT_STREAM_WRITER_H
#define KNOB_KZ_IO_OUTPUT_STREAM_WRITER_H

#include <string>

#include "kz/Reference.h"
#include "kz/io/OutputStream.h"
#include "kz/io/Writer.h"

namespace kz::io {

class OutputStreamWriter : public Writer {
 public:
  // No encoding name (null) means UTF-8, the only encoding there is; another throws
  // ResultException. The buffer size is in bytes.
  OutputStreamWriter(OutputStream* stream, const wchar_t* encoding, long bufferSize);

  void write(const String& text) override;
  void writeLine(const String& text) override;
  void flush() override;
  void close() override;

 private:
  void flushIfFull();

  Reference<OutputStream> stream_;
  std::size_t bufferSize_;
  std::string buffer_;
  std::string written_;  // what the last flush wrote; kept for its memory
};

}  // namespace kz::io

#endif
