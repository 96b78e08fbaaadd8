#include "tuning/registry/StoreStatus.h"

#include <cerrno>

namespace tn::registry {
namespace {

TnStatus failure(int error, TnStatus noRight) {
  switch (error) {
    case EACCES:
    case EPERM:
    case EROFS:
      return noRight;
    case ENOENT:
    case ENOTDIR:
      return TN_STORE_NO_FOLDER;
    case ENAMETOOLONG:
    case ELOOP:
      return TN_STORE_PATH_UNUSABLE;
    case EISDIR:
      return TN_STORE_NOT_A_FILE;
    case ENOSPC:
    case EDQUOT:
    case EFBIG:
      return TN_STORE_FULL;
    case ENOMEM:
      return TN_OUT_OF_MEMORY;
    default:
      return TN_STORE_IO_ERROR;
  }
}

}  // namespace

TnStatus readFailure(int error) { return failure(error, TN_STORE_NOT_READABLE); }

TnStatus writeFailure(int error) { return failure(error, TN_STORE_NOT_WRITABLE); }

}  // namespace tn::registry
