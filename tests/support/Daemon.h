// A server of the test's own: a process that ends with the object, or with the test at the latest.
#ifndef KNOB_TESTS_SUPPORT_DAEMON_H
#define KNOB_TESTS_SUPPORT_DAEMON_H

#include <csignal>
#include <map>
#include <string>
#include <sys/types.h>
#include <utility>
#include <vector>

class Daemon {
 public:
  Daemon() = default;
  Daemon(Daemon&& other) noexcept : process_(std::exchange(other.process_, -1)) {}
  ~Daemon() { end(); }

  // Its output goes to the file. `user`: to run as, when the test runs as root.
  void start(std::vector<std::string> arguments, std::map<std::string, std::string> environment,
             uid_t user, const std::string& output);
  // None before the start.
  void signal(int number) const {
    if (process_ > 0) kill(process_, number);
  }
  void end();  // SIGKILL

 private:
  pid_t process_ = -1;
};

#endif
