#include "kz/io/FileInputStream.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>

#include "kz/Exception.h"

namespace kz::io {

FileInputStream::FileInputStream(const String& name) : file_(name.getBytes(), O_RDONLY) {
  struct stat entry {};
  if (fstat(file_.get(), &entry) != 0) throw ResultException(statusOfErrno(errno));
  if (S_ISDIR(entry.st_mode)) throw ResultException(statusOfErrno(EISDIR));
}

}  // namespace kz::io
