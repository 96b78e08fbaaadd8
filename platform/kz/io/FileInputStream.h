// A file that is read: a regular file, a device, or a pipe; a named pipe is waited for until a
// program opens it for writing. A directory is refused.
#ifndef KNOB_KZ_IO_FILE_INPUT_STREAM_H
#define KNOB_KZ_IO_FILE_INPUT_STREAM_H

#include "kz/String.h"
#include "kz/io/FileDescriptor.h"
#include "kz/io/InputStream.h"

namespace kz::io {

class FileInputStream : public InputStream {
 public:
  explicit FileInputStream(const String& name);

  std::size_t read(char* bytes, std::size_t count) override {
    return readSome(file_.get(), bytes, count);
  }

 private:
  FileDescriptor file_;
};

}  // namespace kz::io

#endif
