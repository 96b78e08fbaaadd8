#include "tuning/cataloguefile/CatalogueText.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>
#include <utility>

namespace tn::cataloguefile {
namespace {

Fault notReadable(int error) {
  return {0, "cannot be read: " + std::generic_category().message(error),
          TN_CATALOGUE_NOT_READABLE};
}

}  // namespace

// Without O_NONBLOCK, opening a FIFO that nobody writes to would wait.
CatalogueText::CatalogueText(const std::string& path, Faults& faults)
    : descriptor_(open(path.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC)) {
  std::string text;
  if (descriptor_ >= 0 && !isRegular()) {
    faults.push_back({0, "is not a regular file", TN_CATALOGUE_NOT_A_FILE});
  } else if (descriptor_ < 0 || !read(text)) {
    faults.push_back(notReadable(errno));
  } else if (text.size() > kLargestCatalogue) {
    faults.push_back({0, "is larger than 4 MiB", TN_CATALOGUE_NOT_A_FILE});
  } else {
    text_ = std::move(text);
  }
}

CatalogueText::~CatalogueText() {
  if (descriptor_ >= 0) close(descriptor_);
}

bool CatalogueText::isRegular() const {
  struct stat status {};
  return fstat(descriptor_, &status) == 0 && S_ISREG(status.st_mode);
}

bool CatalogueText::read(std::string& text) const {
  constexpr size_t kStep = size_t{64} << 10;
  while (text.size() <= kLargestCatalogue) {
    const size_t size = text.size();
    text.resize(size + kStep);
    const ssize_t got = ::read(descriptor_, text.data() + size, kStep);
    text.resize(size + static_cast<size_t>(got > 0 ? got : 0));
    if (got == 0) return true;
    if (got < 0 && errno != EINTR) return false;
  }
  return true;
}

}  // namespace tn::cataloguefile
