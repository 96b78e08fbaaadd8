// The process's standard output or standard error. The descriptor is the process's: it is neither
// owned nor closed.
#ifndef KNOB_KZ_IO_STDIO_OUTPUT_STREAM_H
#define KNOB_KZ_IO_STDIO_OUTPUT_STREAM_H

#include "kz/Reference.h"
#include "kz/io/OutputStream.h"

namespace kz::io {

class StdioOutputStream : public OutputStream {
 public:
  // Standard output.
  StdioOutputStream();
  static Reference<OutputStream> getStdErrorStream();

  void write(const char* bytes, std::size_t count) override;
  void close() override {}

 private:
  explicit StdioOutputStream(int descriptor) : descriptor_(descriptor) {}

  int descriptor_;
};

}  // namespace kz::io

#endif
