#include "output/FileFailure.h"

#include "kz/Exception.h"
#include "kz/io/IoException.h"

namespace {

struct Reason {
  int status;
  const char* key;
};
constexpr Reason kReasons[] = {{kz::kStatusAccessDenied, "ACCESS_ERROR"},
                               {kz::kStatusFileInUse, "FILE_IN_USE_ERROR"},
                               {kz::kStatusFileNotFound, "FILE_NOT_FOUND_ERROR"}};

}  // namespace

void throwFileFailure(const MessageHelper& messages, const char* key, const kz::String& fileName,
                      int status) {
  for (const Reason& reason : kReasons) {
    if (reason.status != status) continue;
    throw kz::io::IoException(messages.getResStr(key, fileName.getBytes().c_str(),
                                                 messages.getResStr(reason.key).getBytes().c_str(),
                                                 status));
  }
  throw kz::ResultException(status);
}
