// A file that is read: a regular file, a device, or a pipe. A directory is refused. A named pipe
// that nobody has opened for writing within ten seconds is refused rather than waited for without
// end.
#ifndef KNOB_KZ_IO_FILE_INPUT_STREAM_H
#define KNOB_KZ_IO_FILE_INPUT_STREAM_H

#include <optional>

#include "kz/String.h"
#include "kz/io/FileDescriptor.h"
#include "kz/io/InputStream.h"

namespace kz::io {

class FileInputStream : public InputStream {
 public:
  explicit FileInputStream(String const& name);

  std::size_t read(char* bytes, std::size_t count) override;

 private:
  void awaitWriter();

  FileDescriptor file_;
  std::optional<char> first_;  // read while waiting for a writer
};

}  // namespace kz::io

#endif
