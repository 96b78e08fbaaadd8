#include "tuning/registry/StoreFile.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdint>
#include <fcntl.h>
#include <string_view>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

#include "tuning/TuningError.h"
#include "tuning/registry/StoreLayout.h"
#include "tuning/registry/StoreStatus.h"

namespace tn::registry {
namespace {

// The head of every SQLite file: the magic text with its NUL, and two big-endian numbers.
using Header = std::array<unsigned char, 100>;
constexpr std::string_view kMagic("SQLite format 3\0", 16);
constexpr size_t kLayoutVersionOffset = 60;
constexpr size_t kApplicationIdOffset = 68;

uint32_t numberAt(const Header& header, size_t offset) {
  uint32_t number = 0;
  for (size_t i = 0; i < 4; ++i) number = number << 8 | header[offset + i];
  return number;
}

int opened(const std::string& path, int flags) {
  int file = -1;
  do {
    file = open(path.c_str(), flags | O_CLOEXEC, 0644);
  } while (file < 0 && errno == EINTR);
  return file;
}

// Zeros where the file is shorter. A signal, or a system that gives less than is there, makes no
// difference: half a header would be that of another program's file.
Header readHeader(const std::string& path) {
  const int file = opened(path, O_RDONLY | O_NONBLOCK);
  if (file < 0) throw TuningError(readFailure(errno));
  Header header{};
  ssize_t count = 1;
  for (size_t size = 0; count != 0 && size < header.size();) {
    count = pread(file, header.data() + size, header.size() - size, static_cast<off_t>(size));
    if (count > 0) size += static_cast<size_t>(count);
    if (count < 0 && errno != EINTR) break;
  }
  const int error = errno;
  close(file);
  if (count < 0) throw TuningError(readFailure(error));
  return header;
}

}  // namespace

StoreFile::StoreFile(std::string path) : path_(std::move(path)) {}

std::optional<StoreFile::Identity> StoreFile::find() const {
  struct stat status {};
  if (stat(path_.c_str(), &status) != 0) {
    if (errno == ENOENT) return std::nullopt;
    throw TuningError(readFailure(errno));
  }
  if (!S_ISREG(status.st_mode)) throw TuningError(TN_STORE_NOT_A_FILE);
  return Identity{status.st_dev, status.st_ino};
}

// A header of zeros is that of an empty file, or is left by a machine that stopped during the very
// first change: SQLite undoes that change, or finds the file damaged.
void StoreFile::checkHeader() const {
  const Header header = readHeader(path_);
  if (std::ranges::all_of(header, [](unsigned char byte) { return byte == 0; })) return;
  if (!std::equal(kMagic.begin(), kMagic.end(), header.begin()) ||
      numberAt(header, kApplicationIdOffset) != kApplicationId) {
    throw TuningError(TN_STORE_FOREIGN);
  }
  const uint32_t version = numberAt(header, kLayoutVersionOffset);
  if (version > kLayoutVersion) throw TuningError(TN_STORE_NEWER);
  if (version < kLayoutVersion) throw TuningError(TN_STORE_DAMAGED);
}

void StoreFile::create() const {
  const int file = opened(path_, O_RDWR | O_CREAT);
  if (file < 0) throw TuningError(writeFailure(errno));
  close(file);
}

}  // namespace tn::registry
