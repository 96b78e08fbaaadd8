#include "support/Daemon.h"

#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include "support/Process.h"

void Daemon::start(std::vector<std::string> arguments,
                   std::map<std::string, std::string> environment, uid_t user,
                   const std::string& output) {
  Process process{std::move(arguments), std::move(environment)};
  process.folder = "/";  // the user may not get to where the test runs
  const Start start(process, process.arguments.front());
  process_ = fork();
  if (process_ != 0) return;
  if (!becomeUser(user)) _exit(126);
  prctl(PR_SET_PDEATHSIG, SIGKILL);  // which a change of the user would take back
  const int file = open(output.c_str(), O_RDWR | O_CREAT | O_APPEND, 0644);
  dup2(file, STDOUT_FILENO);
  dup2(file, STDERR_FILENO);
  start.become();
}

void Daemon::end() {
  if (process_ < 0) return;
  kill(process_, SIGKILL);
  waitpid(process_, nullptr, 0);
  process_ = -1;
}
