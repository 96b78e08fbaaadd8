#include "tuning/cataloguefile/CatalogueText.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>

namespace tn::cataloguefile {
namespace {

class File {
 public:
  // Without O_NONBLOCK, opening a FIFO that nobody writes to would wait.
  explicit File(const std::string& path)
      : descriptor_(open(path.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC)) {}
  File(const File&) = delete;
  File& operator=(const File&) = delete;
  ~File() {
    if (isOpen()) close(descriptor_);
  }

  bool isOpen() const { return descriptor_ >= 0; }

  bool isRegular() const {
    struct stat status {};
    return fstat(descriptor_, &status) == 0 && S_ISREG(status.st_mode);
  }

  // Up to the end of the file, or one byte more than is allowed. False, with errno, if that fails.
  bool read(std::string& text) const {
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

 private:
  int descriptor_;
};

Fault notReadable(int error) {
  return {0, "cannot be read: " + std::generic_category().message(error),
          TN_CATALOGUE_NOT_READABLE};
}

}  // namespace

std::optional<std::string> readCatalogueText(const std::string& path, Faults& faults) {
  const File file(path);
  std::string text;
  if (file.isOpen() && !file.isRegular()) {
    faults.push_back({0, "is not a regular file", TN_CATALOGUE_NOT_A_FILE});
  } else if (!file.isOpen() || !file.read(text)) {
    faults.push_back(notReadable(errno));
  } else if (text.size() > kLargestCatalogue) {
    faults.push_back({0, "is larger than 4 MiB", TN_CATALOGUE_NOT_A_FILE});
  } else {
    return text;
  }
  return std::nullopt;
}

}  // namespace tn::cataloguefile
