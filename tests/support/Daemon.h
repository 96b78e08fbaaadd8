// A server of the test's own: a process that ends with the object, or with the test at the latest.
#ifndef KNOB_TESTS_SUPPORT_DAEMON_H
#define KNOB_TESTS_SUPPORT_DAEMON_H

#include <csignal>
#include <sys/wait.h>
#include <utility>

#include "support/Process.h"

class Daemon {
 public:
  Daemon() = default;
  Daemon(Daemon&& other) noexcept : process_(std::exchange(other.process_, -1)) {}
  ~Daemon() { end(); }

  // Its output goes to the file. `user`: to run as, when the test runs as root.
  void start(std::vector<std::string> arguments, std::map<std::string, std::string> environment,
             uid_t user, const std::string& output) {
    Process process{std::move(arguments), std::move(environment)};
    process.folder = "/";  // the user may not get to where the test runs
    process.user = user;
    process_ = process.start({"/dev/null", output, output});
  }
  // None before the start.
  void signal(int number) const {
    if (process_ > 0) kill(process_, number);
  }
  void end() {
    signal(SIGKILL);
    if (process_ > 0) waitpid(process_, nullptr, 0);
    process_ = -1;
  }

 private:
  pid_t process_ = -1;
};

#endif
