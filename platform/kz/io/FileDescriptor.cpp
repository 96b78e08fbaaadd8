#include "kz/io/FileDescriptor.h"

#include <cerrno>
#include <fcntl.h>
#include <unistd.h>
#include <utility>

#include "kz/Exception.h"

namespace kz::io {
namespace {

// The result of a system call, tried again when a signal interrupted it.
template <typename Call>
auto retried(Call call) {
  for (;;) {
    const auto result = call();
    if (result >= 0) return result;
    if (errno != EINTR) throw ResultException(statusOfErrno(errno));
  }
}

}  // namespace

FileDescriptor::FileDescriptor(std::string const& path, int flags)
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
  if (::close(detach()) != 0 && errno != EINTR) throw ResultException(statusOfErrno(errno));
}

void writeAll(int descriptor, char const* bytes, std::size_t count) {
  while (count > 0) {
    const auto written =
        static_cast<std::size_t>(retried([&] { return write(descriptor, bytes, count); }));
    bytes += written;
    count -= written;
  }
}

std::size_t readSome(int descriptor, char* bytes, std::size_t count) {
  return static_cast<std::size_t>(retried([&] { return read(descriptor, bytes, count); }));
}

}  // namespace kz::io
