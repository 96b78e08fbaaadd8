// A file that is written. Opening creates it when it is missing and, unless it is appended to,
// empties it when it exists.
#ifndef KNOB_KZ_IO_FILE_OUTPUT_STREAM_H
#define KNOB_KZ_IO_FILE_OUTPUT_STREAM_H

#include "kz/String.h"
#include "kz/io/FileDescriptor.h"
#include "kz/io/OutputStream.h"

namespace kz::io {

class FileOutputStream : public OutputStream {
 public:
  FileOutputStream(const String& name, bool append);

  void write(const char* bytes, std::size_t count) override;
  void close() override { file_.close(); }

 private:
  FileDescriptor file_;
};

}  // namespace kz::io

#endif
