// Put in front of the program with LD_PRELOAD: lets calls of the system fail that hardly ever do,
// ends the process at one, and records what reaches the disk.
//
// FAULT=KIND:EFFECT:N   the N-th call of the kind has the effect, counted from 1
// FAULT=KIND:EFFECT:N+  so have all after it
// FAULT_COUNT=FILE      how many calls of the kind there were is written there at the end of the
//                       process, unless it ends with _exit
// FAULT_TRACE=FILE      what was done to files is appended there (tests/fault/Disk.h)
//
// A kind is the word before the parenthesis in each of the functions below; "any" is all of them
// but allocation. An effect is a row of kEffects.
#include <cerrno>
#include <csignal>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <iterator>
#include <string_view>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <unistd.h>

// The C library's own, by the names that are not replaced here.
extern "C" {
void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* block, std::size_t size);
}

namespace {

constexpr int kShort = -1;  // one byte only
constexpr int kKill = -2;
constexpr struct {
  std::string_view name;
  int error;
} kEffects[] = {{"short", kShort},  {"kill", kKill},    {"ENOSPC", ENOSPC},
                {"EIO", EIO},       {"EDQUOT", EDQUOT}, {"EINTR", EINTR},
                {"EMFILE", EMFILE}, {"EACCES", EACCES}, {"ECONNRESET", ECONNRESET},
                {"ENOMEM", ENOMEM}};

// Nothing here allocates: the first call may come before the program's start.
struct {
  bool read = false;
  std::string_view kind{};
  int error = 0;
  long first = 0;
  bool lasting = false;
  long calls = 0;
  int trace = -1;
} plan;

bool unsynced[1024];  // by descriptor: written since it was last synced

bool& unsyncedOf(int file) { return unsynced[static_cast<unsigned>(file) % std::size(unsynced)]; }

long openFile(const char* path, int flags) {
  return syscall(SYS_openat, AT_FDCWD, path, flags | O_CLOEXEC, 0666);
}

void readPlan() {
  plan.read = true;
  if (const char* const path = std::getenv("FAULT_TRACE")) {
    plan.trace = static_cast<int>(openFile(path, O_WRONLY | O_CREAT | O_APPEND));
  }
  const char* const variable = std::getenv("FAULT");
  if (variable == nullptr) return;
  const std::string_view text = variable;
  const std::size_t effect = text.find(':') + 1;
  const std::size_t number = text.find(':', effect) + 1;
  if (effect == 0 || number == 0) std::abort();
  plan.kind = text.substr(0, effect - 1);
  for (const auto& [name, error] : kEffects) {
    if (name == text.substr(effect, number - 1 - effect)) plan.error = error;
  }
  if (plan.error == 0) std::abort();
  plan.first = std::atol(variable + number);
  plan.lasting = text.ends_with('+');
}

// The effect on this call: 0 for none, else an error or kShort.
int effectOn(std::string_view kind) {
  if (environ == nullptr) return 0;
  if (!plan.read) readPlan();
  if (kind != plan.kind && (plan.kind != "any" || kind == "malloc")) return 0;
  ++plan.calls;
  if (plan.first == 0 || plan.calls < plan.first) return 0;
  if (plan.calls > plan.first && !plan.lasting) return 0;
  if (plan.error == kKill) raise(SIGKILL);
  if (plan.error != kShort) errno = plan.error;
  return plan.error;
}

// "OPERATION PATH OFFSET SIZE\n", then the bytes.
void trace(const char* operation, const char* path, long offset, long size = 0,
           const void* bytes = nullptr) {
  if (plan.trace < 0) return;
  dprintf(plan.trace, "%s %s %ld %ld\n", operation, path, offset, size);
  if (size > 0) syscall(SYS_write, plan.trace, bytes, size);
}
void trace(const char* operation, int file, long offset, long size = 0,
           const void* bytes = nullptr) {
  if (plan.trace < 0) return;
  char link[32];
  char path[4096];
  std::snprintf(link, sizeof link, "/proc/self/fd/%d", file);
  const long length = syscall(SYS_readlinkat, AT_FDCWD, link, path, sizeof path - 1);
  path[length > 0 ? length : 0] = '\0';
  trace(operation, path, offset, size, bytes);
}

int opened(const char* path, int flags, mode_t mode) {
  if (effectOn("open") != 0) return -1;
  const bool made = (flags & O_CREAT) != 0 && syscall(SYS_access, path, F_OK) != 0;
  const long file = syscall(SYS_openat, AT_FDCWD, path, flags, mode);
  if (made && file >= 0) trace("create", path, 0);
  if ((flags & O_TRUNC) != 0 && file >= 0) trace("truncate", path, 0);
  return static_cast<int>(file);
}

ssize_t written(int file, const void* bytes, std::size_t size, off_t offset, bool positioned) {
  const int effect = effectOn("write");
  if (effect > 0) return -1;
  if (effect == kShort && size > 1) size = 1;
  if (!positioned) offset = plan.trace < 0 ? 0 : syscall(SYS_lseek, file, 0, SEEK_CUR);
  const long done = positioned ? syscall(SYS_pwrite64, file, bytes, size, offset)
                               : syscall(SYS_write, file, bytes, size);
  unsyncedOf(file) = true;
  if (done > 0 && offset >= 0) trace("write", file, offset, done, bytes);
  return done;
}

// Asked for, but never done: no power is cut here, and a thousand runs would wait for the disk.
int synced(int file) {
  if (effectOn("sync") != 0) return -1;
  unsyncedOf(file) = false;
  trace("sync", file, 0);
  return 0;
}

int truncated(int file, off_t size) {
  if (effectOn("ftruncate") != 0) return -1;
  const long result = syscall(SYS_ftruncate, file, size);
  if (result == 0) trace("truncate", file, size);
  return static_cast<int>(result);
}

// A connection that is reset in one direction is reset in the other.
bool cut(int socket, int effect) {
  if (effect != ECONNRESET) return effect > 0;
  syscall(SYS_shutdown, socket, SHUT_RDWR);
  errno = effect;
  return true;
}

std::size_t shortened(int effect, std::size_t size) {
  return effect == kShort && size > 1 ? 1 : size;
}

[[gnu::destructor]] void writeCount() {
  const char* const path = std::getenv("FAULT_COUNT");
  if (path == nullptr) return;
  const int file = static_cast<int>(openFile(path, O_WRONLY | O_CREAT | O_TRUNC));
  dprintf(file, "%ld", plan.calls);
  syscall(SYS_close, file);
}

}  // namespace

extern "C" {

#ifndef KNOB_SANITIZE
void* malloc(std::size_t size) { return effectOn("malloc") ? nullptr : __libc_malloc(size); }
void* calloc(std::size_t count, std::size_t size) {
  return effectOn("malloc") ? nullptr : __libc_calloc(count, size);
}
void* realloc(void* block, std::size_t size) {
  return effectOn("malloc") ? nullptr : __libc_realloc(block, size);
}
#endif

int open(const char* path, int flags, ...) {
  va_list more;
  va_start(more, flags);
  const mode_t mode = va_arg(more, mode_t);
  va_end(more);
  return opened(path, flags, mode);
}
[[gnu::alias("open")]] int open64(const char* path, int flags, ...);
int __open_2(const char* path, int flags) { return opened(path, flags, 0); }
int __open64_2(const char* path, int flags) { return opened(path, flags, 0); }

// What a system tells of only now is lost: what was written and not synced.
int close(int file) {
  const int effect = effectOn("close");
  if (effect > 0 && unsyncedOf(file)) syscall(SYS_ftruncate, file, 0);
  unsyncedOf(file) = false;
  const long result = syscall(SYS_close, file);
  if (effect > 0) errno = effect;
  return effect > 0 ? -1 : static_cast<int>(result);
}

ssize_t read(int file, void* bytes, std::size_t size) {
  const int effect = effectOn("read");
  return effect > 0 ? -1 : syscall(SYS_read, file, bytes, shortened(effect, size));
}
ssize_t pread64(int file, void* bytes, std::size_t size, off64_t offset) {
  const int effect = effectOn("read");
  return effect > 0 ? -1 : syscall(SYS_pread64, file, bytes, shortened(effect, size), offset);
}
[[gnu::alias("pread64")]] ssize_t pread(int file, void* bytes, std::size_t size, off_t offset);

ssize_t write(int file, const void* bytes, std::size_t size) {
  return written(file, bytes, size, 0, false);
}
ssize_t pwrite64(int file, const void* bytes, std::size_t size, off64_t offset) {
  return written(file, bytes, size, offset, true);
}
[[gnu::alias("pwrite64")]] ssize_t pwrite(int file, const void* bytes, std::size_t size,
                                          off_t offset);

int fsync(int file) { return synced(file); }
int fdatasync(int file) { return synced(file); }
int ftruncate64(int file, off64_t size) { return truncated(file, size); }
int ftruncate(int file, off_t size) { return truncated(file, size); }

int unlink(const char* path) {
  if (effectOn("unlink") != 0) return -1;
  const long result = syscall(SYS_unlinkat, AT_FDCWD, path, 0);
  if (result == 0) trace("unlink", path, 0);
  return static_cast<int>(result);
}

int connect(int socket, const sockaddr* address, socklen_t size) {
  return effectOn("connect") ? -1 : static_cast<int>(syscall(SYS_connect, socket, address, size));
}
ssize_t send(int socket, const void* bytes, std::size_t size, int flags) {
  const int effect = effectOn("send");
  if (cut(socket, effect)) return -1;
  return syscall(SYS_sendto, socket, bytes, shortened(effect, size), flags, nullptr, 0);
}
ssize_t recv(int socket, void* bytes, std::size_t size, int flags) {
  const int effect = effectOn("recv");
  if (cut(socket, effect)) return -1;
  return syscall(SYS_recvfrom, socket, bytes, shortened(effect, size), flags, nullptr, nullptr);
}
}
