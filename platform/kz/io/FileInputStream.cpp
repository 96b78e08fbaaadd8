#include "kz/io/FileInputStream.h"

#include <cerrno>
#include <fcntl.h>
#include <linux/magic.h>
#include <poll.h>
#include <sys/stat.h>
#include <sys/vfs.h>
#include <unistd.h>

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

}  // namespace

FileInputStream::FileInputStream(String const& name)
    // Not blocking: opening a named pipe would wait for a writer.
    : file_(name.getBytes(), O_RDONLY | O_NONBLOCK) {
  struct stat entry {};
  if (fstat(file_.get(), &entry) != 0) fail(errno);
  if (S_ISDIR(entry.st_mode)) fail(EISDIR);
  if (isNamedPipe(file_.get(), entry)) awaitWriter();
  if (!S_ISREG(entry.st_mode) && fcntl(file_.get(), F_SETFL, O_RDONLY) != 0) fail(errno);
}

void FileInputStream::awaitWriter() {
  struct pollfd waiting {
    file_.get(), POLLIN, 0
  };
  int ready = 0;
  do {
    ready = poll(&waiting, 1, kWriterTimeoutMilliseconds);
  } while (ready < 0 && errno == EINTR);
  if (ready < 0) fail(errno);
  if (ready > 0) return;
  // Reading tells a writer that has nothing to say yet from no writer.
  char byte = 0;
  const ssize_t count = ::read(file_.get(), &byte, 1);
  if (count == 0) fail(ETIMEDOUT);
  if (count < 0 && errno != EAGAIN) fail(errno);
  if (count > 0) first_ = byte;
}

std::size_t FileInputStream::read(char* bytes, std::size_t count) {
  if (!first_) return readSome(file_.get(), bytes, count);
  *bytes = *first_;
  first_.reset();
  return 1;
}

}  // namespace kz::io
