// The process's standard input.
#ifndef KNOB_KZ_IO_STDIO_INPUT_STREAM_H
#define KNOB_KZ_IO_STDIO_INPUT_STREAM_H

#include <unistd.h>

#include "kz/io/FileDescriptor.h"
#include "kz/io/InputStream.h"

namespace kz::io {

class StdioInputStream : public InputStream {
 public:
  std::size_t read(char* bytes, std::size_t count) override {
    return readSome(STDIN_FILENO, bytes, count);
  }
};

}  // namespace kz::io

#endif
