#include "support/Process.h"

#include <array>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <grp.h>
#include <poll.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

constexpr auto kPatience = std::chrono::seconds(60);

struct Pipe {
  Pipe() { (void)!pipe2(ends.data(), O_CLOEXEC); }
  Pipe(Pipe const&) = delete;
  Pipe& operator=(Pipe const&) = delete;
  ~Pipe() {
    closeEnd(0);
    closeEnd(1);
  }
  void closeEnd(std::size_t end) {
    if (ends[end] >= 0) close(ends[end]);
    ends[end] = -1;
  }
  std::array<int, 2> ends{-1, -1};
};

void redirect(int stream, int pipeEnd, std::string const& target) {
  if (target == "-") {
    close(stream);
  } else if (target == "|") {
    Pipe broken;
    broken.closeEnd(0);
    dup2(broken.ends[1], stream);
  } else {
    dup2(target.empty() ? pipeEnd : open(target.c_str(), O_WRONLY), stream);
  }
}

std::vector<char*> pointers(std::vector<std::string>& texts) {
  std::vector<char*> all;
  for (std::string& text : texts) all.push_back(text.data());
  all.push_back(nullptr);
  return all;
}

bool drain(Pipe& source, std::string& into) {
  std::array<char, 65536> piece{};
  const ssize_t count = read(source.ends[0], piece.data(), piece.size());
  if (count > 0) into.append(piece.data(), static_cast<std::size_t>(count));
  if (count <= 0) source.closeEnd(0);
  return count > 0;
}

}  // namespace

void Process::become() const {
  if (!folder.empty() && chdir(folder.c_str()) != 0) _exit(126);
  if (fileLimit >= 0) {
    const rlimit limit{static_cast<rlim_t>(fileLimit), static_cast<rlim_t>(fileLimit)};
    setrlimit(RLIMIT_FSIZE, &limit);
  }
  if (user != 0 && geteuid() == 0) {
    if (setgroups(0, nullptr) != 0 || setgid(user) != 0 || setuid(user) != 0) _exit(126);
  }
  std::vector<std::string> words = arguments;
  std::vector<std::string> variables;
  for (auto const& [name, value] : environment) variables.push_back(name + "=" + value);
  execve(words[0].c_str(), pointers(words).data(), pointers(variables).data());
  _exit(127);
}

Outcome Process::run() const {
  Pipe in;
  Pipe out;
  Pipe err;
  const pid_t child = fork();
  if (child == 0) {
    dup2(in.ends[0], STDIN_FILENO);
    redirect(STDOUT_FILENO, out.ends[1], outTo);
    redirect(STDERR_FILENO, err.ends[1], errTo);
    become();
  }
  in.closeEnd(0);
  out.closeEnd(1);
  err.closeEnd(1);
  std::signal(SIGPIPE, SIG_IGN);
  (void)!write(in.ends[1], input.data(), input.size());
  in.closeEnd(1);

  Outcome outcome;
  const auto end = std::chrono::steady_clock::now() + kPatience;
  while (out.ends[0] >= 0 || err.ends[0] >= 0) {
    std::array<pollfd, 2> waiting{{{out.ends[0], POLLIN, 0}, {err.ends[0], POLLIN, 0}}};
    if (poll(waiting.data(), waiting.size(), 1000) == 0 && std::chrono::steady_clock::now() > end) {
      kill(child, SIGKILL);
      outcome.err += "(killed by the test)";
      break;
    }
    if (waiting[0].revents != 0) drain(out, outcome.out);
    if (waiting[1].revents != 0) drain(err, outcome.err);
  }
  int status = 0;
  waitpid(child, &status, 0);
  outcome.status = WIFSIGNALED(status) ? 128 + WTERMSIG(status) : WEXITSTATUS(status);
  return outcome;
}

pid_t Process::start() const {
  const pid_t child = fork();
  if (child == 0) {
    const int nowhere = open("/dev/null", O_RDWR);
    for (int stream = 0; stream <= 2; ++stream) dup2(nowhere, stream);
    become();
  }
  return child;
}

std::string programFolder() {
  return std::filesystem::read_symlink("/proc/self/exe").parent_path().string();
}

Process knob(std::string const& home, std::vector<std::string> arguments) {
  arguments.insert(arguments.begin(), programFolder() + "/knob");
  return {std::move(arguments), {{"HOME", home}, {"XDG_STATE_HOME", home + "/state"}}};
}
