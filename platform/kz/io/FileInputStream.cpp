#include "kz/io/FileInputStream.h"

#include <cerrno>
#include <fcntl.h>
#include <linux/magic.h>
#include <poll.h>
#include <sys/stat.h>
#include <sys/vfs.h>

#include "kz/Exception.h"

namespace kz::io {
namespace {

constexpr int kWriterTimeoutMilliseconds = 10000;

[[noreturn]] void fail(int error) { throw ResultException(statusOfErrno(error)); }

// A pipe that a shell set up between two programs has its writer already.
bool isNamedPipe(int descriptor, struct stat const& entry) {
  struct statfs system {};
  return S_ISFIFO(entry.st_mode) && fstatfs(descriptor, &system) == 0 &&
         system.f_type != PIPEFS_MAGIC;
}

void awaitWriter(int descriptor) {
  struct pollfd waiting {
    descriptor, POLLIN, 0
  };
  int ready = 0;
  do {
    ready = poll(&waiting, 1, kWriterTimeoutMilliseconds);
  } while (ready < 0 && errno == EINTR);
  if (ready < 0) fail(errno);
  if (ready == 0) fail(ETIMEDOUT);
}

}  // namespace

FileInputStream::FileInputStream(String const& name)
    // Not blocking: opening a named pipe would wait for a writer.
    : file_(name.getBytes(), O_RDONLY | O_NONBLOCK) {
  struct stat entry {};
  if (fstat(file_.get(), &entry) != 0) fail(errno);
  if (S_ISDIR(entry.st_mode)) fail(EISDIR);
  if (isNamedPipe(file_.get(), entry)) awaitWriter(file_.get());
  if (!S_ISREG(entry.st_mode) && fcntl(file_.get(), F_SETFL, O_RDONLY) != 0) fail(errno);
}

}  // namespace kz::io
