#include "kz/io/FileOutputStream.h"

#include <fcntl.h>

namespace kz::io {

FileOutputStream::FileOutputStream(const String& name, bool append)
    : file_(name.getBytes(), O_WRONLY | O_CREAT | (append ? O_APPEND : O_TRUNC)) {}

void FileOutputStream::write(const char* bytes, std::size_t count) {
  writeAll(file_.get(), bytes, count);
}

}  // namespace kz::io
