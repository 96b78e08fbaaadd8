#include "support/Process.h"

#include <csignal>
#include <fcntl.h>
#include <grp.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include "support/TempFolder.h"

namespace {

namespace fs = std::filesystem;

constexpr unsigned kPatienceSeconds = 60;

void redirect(int stream, const std::string& file, const std::string& target) {
  if (target == "-") {
    close(stream);
  } else if (target == "|") {
    int broken[2];
    (void)!pipe2(broken, O_CLOEXEC);
    dup2(broken[1], stream);
    close(broken[0]);
  } else {
    dup2(open((target.empty() ? file : target).c_str(), O_RDWR | O_CLOEXEC), stream);
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
  if (fs::create_directory(tree / "bin")) {
    const fs::path built = fs::path(programFolder()).parent_path();
    for (const char* const part : {"bin/knob", "lib", "share"}) {
      fs::copy(built / part, tree / part, fs::copy_options::recursive);
    }
    for (const auto& entry : fs::recursive_directory_iterator(tree.path())) {
      fs::permissions(entry, fs::perms{0755});
    }
  }
  return tree / "bin/knob";
}

}  // namespace

bool becomeUser(uid_t user) {
  return user == 0 || geteuid() != 0 ||
         (setgroups(0, nullptr) == 0 && setgid(user) == 0 && setuid(user) == 0);
}

Start::Start(const Process& process, std::string program)
    : process_(process), program_(std::move(program)), words_(process.arguments) {
  for (const auto& [name, value] : process.environment) variables_.push_back(name + "=" + value);
  wordPointers_ = pointers(words_);
  variablePointers_ = pointers(variables_);
}

void Start::become() const {
  const std::string& folder = process_.folder;
  if (!folder.empty() && chdir(folder.c_str()) != 0) _exit(126);
  if (process_.fileLimit >= 0) {
    const auto bytes = static_cast<rlim_t>(process_.fileLimit);
    const rlimit limit{bytes, bytes};
    setrlimit(RLIMIT_FSIZE, &limit);
  }
  if (!becomeUser(process_.user)) _exit(126);
  execve(program_.c_str(), wordPointers_.data(), variablePointers_.data());
  _exit(127);
}

Outcome Process::run() const {
  const TempFolder streams;
  writeFile(streams / "in", input);
  writeFile(streams / "out", "");
  writeFile(streams / "err", "");
  const bool elsewhere = user != 0 && geteuid() == 0 && arguments[0] == knobPath();
  const Start start(*this, elsewhere ? reachableProgram() : arguments[0]);
  const std::string in = streams / "in", out = streams / "out", err = streams / "err";
  const pid_t child = fork();
  if (child == 0) {
    redirect(STDIN_FILENO, in, in);
    redirect(STDOUT_FILENO, out, outTo);
    redirect(STDERR_FILENO, err, errTo);
    alarm(kPatienceSeconds);
    start.become();
  }
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
  const TempFolder folder;
  std::ofstream result(folder / "result");
  const pid_t child = fork();
  if (child == 0) {
    if (becomeUser(user)) result << piece() << std::flush;
    _exit(0);
  }
  waitpid(child, nullptr, 0);
  const std::string given = readFile(folder / "result");
  return given.empty() ? -1 : std::stoi(given);
}
