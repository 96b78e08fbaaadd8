#include "tuning/registry/DefaultStorePath.h"

#include <cerrno>
#include <cstdlib>
#include <fcntl.h>
#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

#include "tuning/TuningError.h"
#include "tuning/registry/StoreStatus.h"

namespace tn::registry {
namespace {

constexpr mode_t kOwnerOnly = 0700;

bool isAbsolute(const char* path) { return path != nullptr && path[0] == '/'; }

std::string homeOfPasswordDatabase() {
  std::vector<char> buffer(1024);
  passwd entry{};
  passwd* found = nullptr;
  int error = 0;
  while ((error = getpwuid_r(getuid(), &entry, buffer.data(), buffer.size(), &found)) == ERANGE) {
    buffer.resize(buffer.size() * 2);
  }
  if (error == ENOMEM) throw TuningError(TN_OUT_OF_MEMORY);
  if (error != 0 || found == nullptr || !isAbsolute(found->pw_dir)) {
    throw TuningError(TN_NO_HOME_FOLDER);
  }
  return found->pw_dir;
}

std::string stateFolder() {
  const char* state = std::getenv("XDG_STATE_HOME");
  if (isAbsolute(state)) return state;
  const char* home = std::getenv("HOME");
  return (isAbsolute(home) ? home : homeOfPasswordDatabase()) + std::string("/.local/state");
}

// A folder that lasts is one whose entry in its parent has reached the disk.
void makeDurable(const std::string& parent) {
  const int folder = open(parent.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (folder < 0) return;  // no right to read the parent: nothing more can be done
  const bool failed = fsync(folder) != 0 && errno != EINVAL;
  const int error = errno;
  close(folder);
  if (failed) throw TuningError(writeFailure(error));
}

void makeFolder(const std::string& path) {
  if (mkdir(path.c_str(), kOwnerOnly) != 0) {
    if (errno == EEXIST) return;
    const size_t slash = path.find_last_of('/');
    if (errno != ENOENT || slash == 0) throw TuningError(writeFailure(errno));
    makeFolder(path.substr(0, slash));
    if (mkdir(path.c_str(), kOwnerOnly) != 0 && errno != EEXIST) {
      throw TuningError(writeFailure(errno));
    }
  }
  makeDurable(path.substr(0, path.find_last_of('/') + 1));
}

}  // namespace

std::string defaultStorePath() { return stateFolder() + "/knob/settings.db"; }

void makeFolderOf(const std::string& path) { makeFolder(path.substr(0, path.find_last_of('/'))); }

}  // namespace tn::registry
