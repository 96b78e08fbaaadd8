// Put in front of the program with LD_PRELOAD: lets calls of the system fail that hardly ever do.
//
// FAULT=KIND:N      the N-th call of the kind fails, counted from 1
// FAULT=KIND:N+     so do all after it
// FAULT_COUNT=FILE  how many calls of the kind there were is written there at the end of the
//                   process, unless it ends with _exit
//
// A kind is a row of the table of kinds and the functions that ask fails() for it.
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <iterator>
#include <string_view>
#include <unistd.h>

// The C library's own, by the names that are not replaced here.
extern "C" {
void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* block, std::size_t size);
}

namespace {

struct Kind {
  std::string_view name;
  int error;
};
constexpr Kind kKinds[] = {{"malloc", ENOMEM}, {"sync", EIO}};
constexpr Kind const* kAllocation = &kKinds[0];
constexpr Kind const* kSync = &kKinds[1];

// Nothing here allocates: the first call may come before the program's start.
Kind const* chosen = nullptr;
long first = 0;
bool lasting = false;
long calls = 0;

void readPlan() {
  char const* const text = std::getenv("FAULT");
  if (text == nullptr) return;
  const std::string_view plan = text;
  const std::size_t colon = plan.find(':');
  for (Kind const& kind : kKinds) {
    if (kind.name == plan.substr(0, colon)) chosen = &kind;
  }
  if (chosen == nullptr || colon == plan.npos) std::abort();
  first = std::atol(text + colon + 1);
  lasting = plan.ends_with('+');
}

bool fails(Kind const* kind) {
  static bool planned = false;
  if (environ == nullptr) return false;
  if (!planned) {
    planned = true;
    readPlan();
  }
  if (kind != chosen || ++calls < first || (calls > first && !lasting) || first == 0) return false;
  errno = kind->error;
  return true;
}

[[gnu::destructor]] void writeCount() {
  char const* const path = std::getenv("FAULT_COUNT");
  if (path == nullptr) return;
  const int file = open(path, O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
  dprintf(file, "%ld", calls);
  close(file);
}

}  // namespace

extern "C" {

void* malloc(std::size_t size) { return fails(kAllocation) ? nullptr : __libc_malloc(size); }
void* calloc(std::size_t count, std::size_t size) {
  return fails(kAllocation) ? nullptr : __libc_calloc(count, size);
}
void* realloc(void* block, std::size_t size) {
  return fails(kAllocation) ? nullptr : __libc_realloc(block, size);
}

// Asked for, but never done: no power is cut here, and a thousand runs would wait for the disk.
int fsync(int) { return fails(kSync) ? -1 : 0; }
int fdatasync(int) { return fails(kSync) ? -1 : 0; }
}
