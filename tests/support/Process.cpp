#include "support/Process.h"

#include <csignal>
#include <fcntl.h>
#include <grp.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include "support/TempFolder.h"

namespace {

namespace fs = std::filesystem;

void redirect(int stream, const std::string& target) {
  if (target == "-") {
    close(stream);
  } else if (target == "|") {
    int broken[2];
    (void)!pipe2(broken, O_CLOEXEC);
    dup2(broken[1], stream);
    close(broken[0]);
  } else {
    const int direction = stream == STDIN_FILENO ? O_RDONLY : O_WRONLY;
    dup2(open(target.c_str(), direction | O_CREAT | O_APPEND | O_CLOEXEC, 0644), stream);
  }
}

std::string knobPath() { return programFolder() + "/knob"; }

std::vector<char*> pointers(std::vector<std::string>& texts) {
  std::vector<char*> all;
  for (std::string& text : texts) all.push_back(text.data());
  all.push_back(nullptr);
  return all;
}

// The program again, with all that it loads, in a folder that every user can get to: the build tree
// may lie below a home that is its owner's alone.
std::string reachableProgram() {
  static const TempFolder tree;
  const std::string copy = "cd '" + programFolder() +
                           "/..' && cp -r --parents bin/knob lib share " + tree.path() +
                           " && chmod -R 755 " + tree.path();
  if (!fs::exists(tree / "bin")) (void)!std::system(copy.c_str());
  return tree / "bin/knob";
}

// In a child, if the test runs as root and the user is another.
bool becomeUser(uid_t user) {
  return user == 0 || geteuid() != 0 ||
         (setgroups(0, nullptr) == 0 && setgid(user) == 0 && setuid(user) == 0);
}

}  // namespace

// All that the child needs is made before the fork: the child of a process with threads may wait
// without end for memory.
pid_t Process::start(const std::array<std::string, 3>& streams, unsigned seconds) const {
  const bool elsewhere = user != 0 && geteuid() == 0 && arguments[0] == knobPath();
  const std::string program = elsewhere ? reachableProgram() : arguments[0];
  std::vector<std::string> words = arguments;
  std::vector<std::string> variables;
  for (const auto& [name, value] : environment) variables.push_back(name + "=" + value);
  const std::vector<char*> wordPointers = pointers(words);
  const std::vector<char*> variablePointers = pointers(variables);
  const pid_t child = fork();
  if (child != 0) return child;
  for (const int stream : {0, 1, 2}) redirect(stream, streams[static_cast<std::size_t>(stream)]);
  alarm(seconds);
  if (!folder.empty() && chdir(folder.c_str()) != 0) _exit(126);
  if (!becomeUser(user)) _exit(126);
  prctl(PR_SET_PDEATHSIG, SIGKILL);  // which a change of the user would take back
  execve(program.c_str(), wordPointers.data(), variablePointers.data());
  _exit(127);
}

Outcome Process::run() const {
  const TempFolder files;
  const std::string in = files / "in", out = files / "out", err = files / "err";
  writeFile(in, input);
  const pid_t child = start({in, outTo.empty() ? out : outTo, errTo.empty() ? err : errTo}, 60);
  int status = 0;
  waitpid(child, &status, 0);
  return {WIFSIGNALED(status) ? 128 + WTERMSIG(status) : WEXITSTATUS(status), readFile(out),
          readFile(err)};
}

std::string programFolder() { return fs::read_symlink("/proc/self/exe").parent_path(); }

Process knob(const std::string& home, std::vector<std::string> arguments) {
  arguments.insert(arguments.begin(), knobPath());
  return {std::move(arguments), {{"HOME", home}, {"XDG_STATE_HOME", home + "/state"}}};
}

int inChild(const std::function<int()>& piece, uid_t user) {
  const auto result = static_cast<int*>(
      mmap(nullptr, sizeof(int), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0));
  *result = -1;
  const pid_t child = fork();
  if (child == 0) {
    if (becomeUser(user)) *result = piece();
    _exit(0);
  }
  waitpid(child, nullptr, 0);
  return *result;
}
