#include "companions/Terminal.h"

#include <array>
#include <csignal>
#include <poll.h>
#include <pty.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

constexpr int kPatienceMilliseconds = 10'000;

std::vector<char*> pointers(std::vector<std::string>& texts) {
  std::vector<char*> all;
  for (std::string& text : texts) all.push_back(text.data());
  all.push_back(nullptr);
  return all;
}

}  // namespace

Terminal::Terminal(std::vector<std::string> command,
                   std::map<std::string, std::string> environment) {
  std::vector<std::string> variables;
  for (auto const& [name, value] : environment) variables.push_back(name + "=" + value);
  winsize size{50, 200, 0, 0};
  shell_ = forkpty(&terminal_, nullptr, nullptr, &size);
  if (shell_ == 0) {
    execve(command[0].c_str(), pointers(command).data(), pointers(variables).data());
    _exit(127);
  }
}

Terminal::~Terminal() {
  close(terminal_);
  kill(shell_, SIGKILL);
  waitpid(shell_, nullptr, 0);
}

void Terminal::type(std::string const& keys) const {
  (void)!write(terminal_, keys.data(), keys.size());
}

std::string Terminal::waitFor(std::string const& text) {
  std::size_t end = 0;
  while ((end = seen_.find(text)) == std::string::npos) {
    pollfd waiting{terminal_, POLLIN, 0};
    std::array<char, 4096> piece{};
    if (poll(&waiting, 1, kPatienceMilliseconds) <= 0) return seen_;
    const ssize_t count = read(terminal_, piece.data(), piece.size());
    if (count <= 0) return seen_;
    seen_.append(piece.data(), static_cast<std::size_t>(count));
  }
  std::string before = seen_.substr(0, end + text.size());
  seen_.erase(0, end + text.size());
  return before;
}
