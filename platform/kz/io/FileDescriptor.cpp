#include "kz/io/FileDescriptor.h"

#include <cerrno>
#include <fcntl.h>
#include <poll.h>
#include <unistd.h>
#include <utility>

#include "kz/Exception.h"

namespace kz::io {
namespace {

[[noreturn]] void fail() { throw ResultException(statusOfErrno(errno)); }

// The result of a system call, tried again when a signal interrupted it.
template <typename Call>
auto retried(Call call) {
  for (;;) {
    const auto result = call();
    if (result >= 0) return result;
    if (errno != EINTR) fail();
  }
}

// Reading or writing, where the descriptor is one that does not wait: another process that shares
// it may have made it so. Then this waits.
template <typename Call>
std::size_t transferred(int descriptor, short event, Call call) {
  for (;;) {
    const ssize_t count = call();
    if (count >= 0) return static_cast<std::size_t>(count);
    if (errno == EAGAIN || errno == EWOULDBLOCK) {
      struct pollfd waiting {
        descriptor, event, 0
      };
      retried([&] { return poll(&waiting, 1, -1); });
    } else if (errno != EINTR) {
      fail();
    }
  }
}

}  // namespace

FileDescriptor::FileDescriptor(const std::string& path, int flags)
    : descriptor_(retried([&] { return open(path.c_str(), flags | O_CLOEXEC, 0666); })) {}

FileDescriptor& FileDescriptor::operator=(FileDescriptor&& other) noexcept {
  if (isOpen() && &other != this) ::close(descriptor_);
  descriptor_ = other.detach();
  return *this;
}

FileDescriptor::~FileDescriptor() {
  if (isOpen()) ::close(descriptor_);
}

int FileDescriptor::detach() noexcept { return std::exchange(descriptor_, -1); }

void FileDescriptor::close() {
  if (!isOpen()) return;
  // The descriptor is gone even when close fails, with EINTR too.
  if (::close(detach()) != 0 && errno != EINTR) fail();
}

void writeAll(int descriptor, const char* bytes, std::size_t count) {
  while (count > 0) {
    const std::size_t written =
        transferred(descriptor, POLLOUT, [&] { return write(descriptor, bytes, count); });
    bytes += written;
    count -= written;
  }
}

std::size_t readSome(int descriptor, char* bytes, std::size_t count) {
  return transferred(descriptor, POLLIN, [&] { return read(descriptor, bytes, count); });
}

}  // namespace kz::io
