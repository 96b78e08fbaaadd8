#include "kz/io/FolderWatch.h"

#include <cerrno>
#include <csignal>
#include <fcntl.h>

#include "kz/Exception.h"

namespace kz::io {
namespace {

volatile std::sig_atomic_t reported = 0;

void report(int) { reported = 1; }

void listen() {
  struct sigaction action {};
  action.sa_handler = report;
  action.sa_flags = SA_RESTART;
  sigaction(SIGIO, &action, nullptr);
  sigset_t signals;
  sigemptyset(&signals);
  sigaddset(&signals, SIGIO);
  sigprocmask(SIG_UNBLOCK, &signals, nullptr);
}

FileDescriptor watch(std::string const& folder) {
  FileDescriptor descriptor(folder, O_RDONLY | O_DIRECTORY);
  constexpr unsigned long kEvents =
      DN_MODIFY | DN_CREATE | DN_DELETE | DN_RENAME | DN_ATTRIB | DN_MULTISHOT;
  if (fcntl(descriptor.get(), F_NOTIFY, kEvents) != 0) {
    throw ResultException(statusOfErrno(errno));
  }
  return descriptor;
}

}  // namespace

FolderWatch::FolderWatch(std::string const& folder) : folder_(folder) { listen(); }

bool FolderWatch::perhapsChanged() noexcept {
  if (armed_ && reported == 0) return false;
  // Taken back before the watch is renewed: a change from here on is reported again.
  reported = 0;
  arm();
  return true;
}

void FolderWatch::arm() noexcept {
  try {
    // The one it lies in by name: the folder may be a link, which can be made to lead elsewhere.
    watched_ = {watch(folder_), watch(folder_.substr(0, folder_.rfind('/')))};
    armed_ = true;
  } catch (Exception const&) {
    armed_ = false;  // every look is a "perhaps" then
  }
}

}  // namespace kz::io
