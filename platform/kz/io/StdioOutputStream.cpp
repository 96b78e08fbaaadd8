#include "kz/io/StdioOutputStream.h"

#include <unistd.h>

#include "kz/io/FileDescriptor.h"

namespace kz::io {

StdioOutputStream::StdioOutputStream() : StdioOutputStream(STDOUT_FILENO) {}

Reference<OutputStream> StdioOutputStream::getStdErrorStream() {
  return Reference<OutputStream>(new StdioOutputStream(STDERR_FILENO));
}

void StdioOutputStream::write(const char* bytes, std::size_t count) {
  writeAll(descriptor_, bytes, count);
}

}  // namespace kz::io
