// Put in front of the program with LD_PRELOAD: lets calls of the system fail that hardly ever do,
// and records what reaches the disk.
//
// FAULT=KIND:EFFECT:N   the N-th call of the kind has the effect, counted from 1
// FAULT=KIND:EFFECT:N+  so have all after it
// FAULT_TRACE=FILE      what was done to files is appended there, with the number of calls of the
//                       kind at the end of the process, unless that is _exit
//
// A kind is the word before the parenthesis in each of the functions below, an effect a row of
// kEffects.
#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <string_view>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <unistd.h>
#include <utility>

// The C library's own, by the names that are not replaced here.
extern "C" {
void* __libc_malloc(size_t size);
void* __libc_calloc(size_t count, size_t size);
void* __libc_realloc(void* block, size_t size);
}

namespace {

constexpr int kShort = -1;  // one byte only
constexpr std::pair<std::string_view, int> kEffects[] = {
    {"short", kShort},  {"ENOSPC", ENOSPC},         {"EIO", EIO},
    {"EDQUOT", EDQUOT}, {"EINTR", EINTR},           {"EMFILE", EMFILE},
    {"EACCES", EACCES}, {"ECONNRESET", ECONNRESET}, {"ENOMEM", ENOMEM}};

// Nothing here allocates: the first call may come before the program's start.
struct {
  bool read = false;
  char kind[16] = "";
  int error = 0;
  long first = 0;
  char lasting = 0;  // '+'
  long calls = 0;
  int trace = -1;
} plan;

void readPlan() {
  plan.read = true;
  if (const char* const path = std::getenv("FAULT_TRACE")) {
    constexpr int kFlags = O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC;
    plan.trace = static_cast<int>(syscall(SYS_openat, AT_FDCWD, path, kFlags, 0666));
  }
  const char* const text = std::getenv("FAULT");
  if (text == nullptr) return;
  char effect[16] = "";
  std::sscanf(text, "%15[^:]:%15[^:]:%ld%c", plan.kind, effect, &plan.first, &plan.lasting);
  for (const auto& [name, error] : kEffects) {
    if (name == effect) plan.error = error;
  }
  if (plan.error == 0) std::abort();
}

// The effect on this call: 0 for none, else an error or kShort.
int effectOn(std::string_view kind) {
  if (environ == nullptr) return 0;
  if (!plan.read) readPlan();
  if (kind != plan.kind) return 0;
  ++plan.calls;
  const bool later = plan.calls > plan.first && plan.first != 0 && plan.lasting != 0;
  if (plan.calls != plan.first && !later) return 0;
  if (plan.error != kShort) errno = plan.error;
  return plan.error;
}

inline bool isFull() { return effectOn("malloc") != 0; }

// "OPERATION PATH OFFSET SIZE\n", then the bytes.
void trace(const char* operation, const char* path, long offset, long size = 0,
           const void* bytes = nullptr) {
  if (plan.trace < 0) return;
  dprintf(plan.trace, "%s %s %ld %ld\n", operation, path, offset, size);
  if (size > 0) syscall(SYS_write, plan.trace, bytes, size);
}

const char* pathOf(int file) {
  static char path[4096];
  char link[32];
  std::snprintf(link, sizeof link, "/proc/self/fd/%d", file);
  const long length = syscall(SYS_readlinkat, AT_FDCWD, link, path, sizeof path - 1);
  path[length > 0 ? length : 0] = '\0';
  return path;
}

[[gnu::destructor]] void traceCount() { trace("calls", "-", plan.calls); }

// A call that passes bytes.
template <typename... More>
long passed(std::string_view kind, long number, int file, auto* bytes, size_t size, More... more) {
  const int effect = effectOn(kind);
  if (effect == ECONNRESET) {  // in one direction, so in the other
    syscall(SYS_shutdown, file, SHUT_RDWR);
    errno = effect;
  }
  if (effect == kShort && size > 1) size = 1;
  return effect > 0 ? -1 : syscall(number, file, bytes, size, more...);
}

// What was written there, or up to where the file stands now.
long written(int file, const void* bytes, long size, off_t offset = -1) {
  if (size <= 0 || plan.trace < 0) return size;
  if (offset < 0) offset = syscall(SYS_lseek, file, 0, SEEK_CUR) - size;
  if (offset >= 0) trace("write", pathOf(file), offset, size, bytes);
  return size;
}

}  // namespace

extern "C" {

#ifndef KNOB_SANITIZE
void* malloc(size_t size) { return isFull() ? nullptr : __libc_malloc(size); }
void* calloc(size_t n, size_t size) { return isFull() ? nullptr : __libc_calloc(n, size); }
void* realloc(void* old, size_t size) { return isFull() ? nullptr : __libc_realloc(old, size); }
#endif

int open(const char* path, int flags, ...) {
  if (effectOn("open") != 0) return -1;
  va_list more;
  va_start(more, flags);
  const mode_t mode = va_arg(more, mode_t);
  va_end(more);
  const long file = syscall(SYS_openat, AT_FDCWD, path, flags, mode);
  if ((flags & O_CREAT) != 0 && file >= 0) trace("create", path, 0);
  if ((flags & O_TRUNC) != 0 && file >= 0) trace("truncate", path, 0);
  return static_cast<int>(file);
}
[[gnu::alias("open")]] int open64(const char* path, int flags, ...);
int __open_2(const char* path, int flags) { return open(path, flags, 0); }

// What a system tells of only now is lost, but for files that are read as well: they were synced.
int close(int file) {
  const int effect = effectOn("close");
  const bool writtenOnly = (fcntl(file, F_GETFL) & O_ACCMODE) == O_WRONLY;
  if (effect > 0 && writtenOnly) syscall(SYS_ftruncate, file, 0);
  const long result = syscall(SYS_close, file);
  if (effect > 0) errno = effect;
  return effect > 0 ? -1 : static_cast<int>(result);
}

ssize_t read(int file, void* to, size_t size) { return passed("read", SYS_read, file, to, size); }
ssize_t pread64(int file, void* bytes, size_t size, off64_t offset) {
  return passed("read", SYS_pread64, file, bytes, size, offset);
}
[[gnu::alias("pread64")]] ssize_t pread(int file, void* bytes, size_t size, off_t offset);

ssize_t write(int file, const void* bytes, size_t size) {
  return written(file, bytes, passed("write", SYS_write, file, bytes, size));
}
ssize_t pwrite64(int file, const void* bytes, size_t size, off64_t offset) {
  return written(file, bytes, passed("write", SYS_pwrite64, file, bytes, size, offset), offset);
}

// Asked for, but never done: no power is cut here, and a thousand runs would wait for the disk.
int fsync(int file) {
  if (effectOn("sync") != 0) return -1;
  trace("sync", pathOf(file), 0);
  return 0;
}
[[gnu::alias("fsync")]] int fdatasync(int file);

int ftruncate64(int file, off64_t size) {
  if (effectOn("ftruncate") != 0) return -1;
  const long result = syscall(SYS_ftruncate, file, size);
  if (result == 0) trace("truncate", pathOf(file), size);
  return static_cast<int>(result);
}

int unlink(const char* path) {
  if (effectOn("unlink") != 0) return -1;
  const long result = syscall(SYS_unlinkat, AT_FDCWD, path, 0);
  if (result == 0) trace("unlink", path, 0);
  return static_cast<int>(result);
}

int connect(int socket, const sockaddr* address, socklen_t size) {
  return effectOn("connect") ? -1 : static_cast<int>(syscall(SYS_connect, socket, address, size));
}
ssize_t send(int socket, const void* bytes, size_t size, int flags) {
  return passed("send", SYS_sendto, socket, bytes, size, flags, nullptr, 0);
}
ssize_t recv(int socket, void* bytes, size_t size, int flags) {
  return passed("recv", SYS_recvfrom, socket, bytes, size, flags, nullptr, nullptr);
}
}
