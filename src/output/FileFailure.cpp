#include "output/FileFailure.h"

#include "kz/Exception.h"

namespace {

struct Reason {
  int status;
  const char* key;
};
constexpr Reason kReasons[] = {{kz::kStatusAccessDenied, "ACCESS_ERROR"},
                               {kz::kStatusFileNotFound, "FILE_NOT_FOUND_ERROR"}};

}  // namespace

kz::io::IoException fileFailure(const MessageHelper& messages, const char* key,
                                const kz::String& fileName, const char* reasonKey, int status) {
  return kz::io::IoException(messages.getResStr(
      key, fileName.getBytes().c_str(), messages.getResStr(reasonKey).getBytes().c_str(), status));
}

void throwFileFailure(const MessageHelper& messages, const char* key, const kz::String& fileName,
                      int status) {
  for (const Reason& reason : kReasons) {
    if (reason.status == status) throw fileFailure(messages, key, fileName, reason.key, status);
  }
  throw kz::ResultException(status);
}
