#include "kz/io/OpenFiles.h"

#include <fcntl.h>
#include <sys/stat.h>

namespace kz::io {
namespace {

// A file gets the lowest free number, so behind as many free ones there is none of ours.
constexpr int kMostFree = 64;

}  // namespace

bool isOpenHere(const std::string& path) {
  struct stat file {};
  if (stat(path.c_str(), &file) != 0 || !S_ISREG(file.st_mode)) return false;
  for (int descriptor = 0, free = 0; free < kMostFree; ++descriptor) {
    const int flags = fcntl(descriptor, F_GETFD);
    free = flags == -1 ? free + 1 : 0;
    // A descriptor that is closed by exec cannot have come through one.
    const bool isOwn = flags != -1 && (flags & FD_CLOEXEC) != 0;
    struct stat open {};
    if (isOwn && fstat(descriptor, &open) == 0 && open.st_dev == file.st_dev &&
        open.st_ino == file.st_ino) {
      return true;
    }
  }
  return false;
}

}  // namespace kz::io
