// A piece of a test under a user whom permissions hold back: one who owns nothing where the tests
// run as root, otherwise the same one.
#ifndef KNOB_TESTS_SUPPORT_OTHER_USER_H
#define KNOB_TESTS_SUPPORT_OTHER_USER_H

#include <sys/wait.h>
#include <unistd.h>

#include "support/Process.h"
#include "support/TempFolder.h"

// The text that the piece gives.
template <typename Piece>
std::string asNobody(Piece piece) {
  const TempFolder folder;
  std::ofstream result(folder / "result");
  const pid_t child = fork();
  if (child == 0) {
    if (geteuid() == 0 && setuid(kNobody) != 0) _exit(1);
    result << piece() << std::flush;
    _exit(0);
  }
  waitpid(child, nullptr, 0);
  return readFile(folder / "result");
}

#endif
