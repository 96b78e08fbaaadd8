#include "kz/Status.h"

#include <cerrno>

namespace kz {

int statusOfErrno(int error) noexcept {
  switch (error) {
    case EACCES:
    case EPERM:
    case EROFS:
      return kStatusAccessDenied;
    case ENOENT:
      return kStatusFileNotFound;
    default:
      // Past the codes above, so that no other error is taken for one of them.
      return static_cast<int>(0x80070100U +
                              (error > 0 && error < 0x100 ? static_cast<unsigned>(error) : 0xFFU));
  }
}

}  // namespace kz
