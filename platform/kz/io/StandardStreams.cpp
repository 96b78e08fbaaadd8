#include "kz/io/StandardStreams.h"

#include <csignal>
#include <fcntl.h>
#include <unistd.h>

namespace kz::io {

void guardStandardStreams() noexcept {
  std::signal(SIGPIPE, SIG_IGN);
  std::signal(SIGXFSZ, SIG_IGN);
  for (int descriptor = STDIN_FILENO; descriptor <= STDERR_FILENO; ++descriptor) {
    if (fcntl(descriptor, F_GETFD) != -1) continue;
    // The lowest free descriptor is this one. Opened the wrong way round: its use has to fail.
    (void)open("/dev/null", descriptor == STDIN_FILENO ? O_WRONLY : O_RDONLY);
  }
}

}  // namespace kz::io
