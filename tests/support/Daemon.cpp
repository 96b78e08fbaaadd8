#include "support/Daemon.h"

#include <fcntl.h>
#include <grp.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

void Daemon::start(std::vector<std::string> arguments,
                   std::map<std::string, std::string> environment, uid_t user,
                   const std::string& output) {
  process_ = fork();
  if (process_ != 0) return;
  if (geteuid() == 0 && (setgroups(0, nullptr) != 0 || setgid(user) != 0 || setuid(user) != 0)) {
    _exit(126);
  }
  prctl(PR_SET_PDEATHSIG, SIGKILL);
  const int file = open(output.c_str(), O_RDWR | O_CREAT | O_APPEND, 0644);
  dup2(file, STDOUT_FILENO);
  dup2(file, STDERR_FILENO);
  std::vector<std::string> variables;
  for (const auto& [name, value] : environment) variables.push_back(name + "=" + value);
  const auto pointers = [](std::vector<std::string>& texts) {
    std::vector<char*> all;
    for (std::string& text : texts) all.push_back(text.data());
    all.push_back(nullptr);
    return all;
  };
  execve(arguments.front().c_str(), pointers(arguments).data(), pointers(variables).data());
  _exit(127);
}

void Daemon::end() {
  if (process_ < 0) return;
  kill(process_, SIGKILL);
  waitpid(process_, nullptr, 0);
  process_ = -1;
}
