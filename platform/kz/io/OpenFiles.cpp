#include "kz/io/OpenFiles.h"

#include <charconv>
#include <fcntl.h>
#include <filesystem>
#include <sys/stat.h>

namespace kz::io {
namespace {

// A descriptor that is closed by exec cannot have come through one.
bool isOwn(int descriptor) {
  const int flags = fcntl(descriptor, F_GETFD);
  return flags != -1 && (flags & FD_CLOEXEC) != 0;
}

}  // namespace

bool isOpenHere(const std::string& path) {
  struct stat file {};
  if (stat(path.c_str(), &file) != 0 || !S_ISREG(file.st_mode)) return false;
  std::error_code unknown;
  std::filesystem::directory_iterator entry("/proc/self/fd", unknown);
  for (; entry != end(entry); entry.increment(unknown)) {
    const std::string name = entry->path().filename();
    int descriptor = -1;
    std::from_chars(name.data(), name.data() + name.size(), descriptor);
    struct stat open {};
    if (isOwn(descriptor) && fstat(descriptor, &open) == 0 && open.st_dev == file.st_dev &&
        open.st_ino == file.st_ino) {
      return true;
    }
  }
  return false;
}

}  // namespace kz::io
