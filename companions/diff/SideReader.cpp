#include "diff/SideReader.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <map>
#include <optional>
#include <poll.h>
#include <string_view>
#include <sys/wait.h>
#include <unistd.h>

#include "diff/SettingsFile.h"
#include "kz/Exception.h"
#include "kz/io/FileDescriptor.h"
#include "kz/io/FileInputStream.h"
#include "kz/util/FilePath.h"

namespace diff {
namespace {

using kz::io::FileDescriptor;

constexpr size_t kLargestFile = 64 << 20;  // bytes; an export of 1,500 settings has about one

struct Pipe {
  Pipe() {
    std::array<int, 2> ends{};
    if (pipe2(ends.data(), O_CLOEXEC) != 0) throw Trouble(std::strerror(errno));
    readEnd = FileDescriptor(ends[0]);
    writeEnd = FileDescriptor(ends[1]);
  }
  FileDescriptor readEnd, writeEnd;
};

void append(std::string& content, std::string_view piece) {
  if (content.size() + piece.size() > kLargestFile) throw Trouble("it is too large to be settings");
  content += piece;
}

// Statuses of failed system calls end in the system's own number, but for two that have one of
// their own.
std::string reasonOf(int status) {
  if (status == kz::kStatusAccessDenied) return std::strerror(EACCES);
  if (status == kz::kStatusFileNotFound) return std::strerror(ENOENT);
  return std::strerror(status & 0xFF);
}

std::vector<char*> pointers(std::vector<std::string>& texts) {
  std::vector<char*> all;
  all.reserve(texts.size() + 1);
  for (std::string& text : texts) all.push_back(text.data());
  all.push_back(nullptr);
  return all;
}

std::vector<std::string> variablesFor(const Side& side) {
  std::vector<std::string> variables;
  for (const auto& [name, value] : side.environment) {
    variables.emplace_back(name).append("=").append(value);
  }
  for (char** variable = environ; *variable != nullptr; ++variable) {
    const std::string_view text = *variable;
    if (!side.environment.contains(std::string(text.substr(0, text.find('='))))) {
      variables.emplace_back(text);
    }
  }
  return variables;
}

// A running knob that writes the settings of its server into a pipe.
class Export {
 public:
  explicit Export(const Side& side) {
    Pipe settings, messages;
    const std::string program = kz::util::FilePath::getProgramDir().getBytes() + "/knob";
    const int target = settings.writeEnd.get();
    std::vector<std::string> words = {program, "-S", side.server,
                                      "-F",    "-O", "/dev/fd/" + std::to_string(target)};
    if (!side.user.empty()) words.insert(words.end(), {"-U", side.user});
    std::vector<std::string> variables = variablesFor(side);
    const std::vector<char*> argv = pointers(words), envp = pointers(variables);
    const int nothing = open("/dev/null", O_RDWR | O_CLOEXEC);
    process_ = fork();
    if (process_ == 0) {
      dup2(nothing, STDIN_FILENO);
      dup2(nothing, STDOUT_FILENO);
      dup2(messages.writeEnd.get(), STDERR_FILENO);
      fcntl(target, F_SETFD, 0);
      execve(program.c_str(), argv.data(), envp.data());
      _exit(127);
    }
    if (nothing >= 0) close(nothing);
    if (process_ < 0) throw Trouble(std::strerror(errno));
    settings_ = std::move(settings.readEnd);
    messages_ = std::move(messages.readEnd);
  }
  Export(const Export&) = delete;
  Export& operator=(const Export&) = delete;
  ~Export() {
    if (process_ <= 0) return;
    kill(process_, SIGKILL);
    waitpid(process_, nullptr, 0);
  }

  std::array<FileDescriptor*, 2> sources() { return {&settings_, &messages_}; }

  // Takes what the descriptor, one of the two, has to give.
  void take(FileDescriptor& source) {
    std::array<char, 16384> piece{};
    const size_t count = kz::io::readSome(source.get(), piece.data(), piece.size());
    append(&source == &settings_ ? content_ : words_, {piece.data(), count});
    if (count == 0) source.close();
  }

  // Waits for the end. The content of the settings file.
  const std::string& finish() {
    int status = 0;
    while (waitpid(process_, &status, 0) < 0 && errno == EINTR) {
    }
    process_ = -1;
    if (WIFEXITED(status) && WEXITSTATUS(status) == 0 && words_.empty()) return content_;
    const std::string_view line = std::string_view(words_).substr(0, words_.find('\n'));
    if (!line.empty()) throw Trouble(std::string(line));
    throw Trouble(WIFEXITED(status) && WEXITSTATUS(status) == 127
                      ? "the program knob is not installed beside this one"
                      : "knob ended without writing the settings");
  }

 private:
  pid_t process_ = -1;
  FileDescriptor settings_, messages_;
  std::string content_, words_;
};

using Exports = std::map<const Side*, Export>;

// Carries the action out; what it says of trouble begins with the side's name then.
template <typename Action>
auto named(const Side& side, Action action) {
  try {
    return action();
  } catch (const Trouble& trouble) {
    throw Trouble(side.shown + ": " + trouble.what());
  }
}

// Until every export has ended.
void collect(Exports& exports) {
  for (;;) {
    std::vector<pollfd> waiting;
    std::vector<std::pair<Exports::value_type*, FileDescriptor*>> sources;
    for (auto& running : exports) {
      for (FileDescriptor* const source : running.second.sources()) {
        if (!source->isOpen()) continue;
        waiting.push_back({source->get(), POLLIN, 0});
        sources.emplace_back(&running, source);
      }
    }
    if (waiting.empty()) return;
    if (poll(waiting.data(), waiting.size(), -1) < 0 && errno != EINTR) {
      throw Trouble(std::strerror(errno));
    }
    for (size_t i = 0; i < waiting.size(); ++i) {
      if (waiting[i].revents == 0) continue;
      auto* const running = sources[i].first;
      FileDescriptor& source = *sources[i].second;
      named(*running->first, [&] { running->second.take(source); });
    }
  }
}

}  // namespace

std::string SideReader::readFile(const std::string& path) {
  try {
    kz::io::FileInputStream file(path);
    std::string content;
    std::array<char, 16384> piece{};
    while (const size_t count = file.read(piece.data(), piece.size())) {
      append(content, {piece.data(), count});
    }
    return content;
  } catch (const kz::ResultException& failure) {
    throw Trouble(path + ": " + reasonOf(failure.getResult()));
  } catch (const Trouble& trouble) {
    throw Trouble(path + ": " + trouble.what());
  }
}

std::vector<Settings> SideReader::readAll(const std::vector<Side>& sides, const Tags& tags) {
  Exports exports;
  for (const Side& side : sides) {
    if (side.isServer()) exports.try_emplace(&side, side);
  }
  collect(exports);
  std::vector<Settings> all;
  for (const Side& side : sides) {
    const std::string file = side.isServer() ? std::string() : readFile(side.path);
    all.push_back(named(side, [&] {
      return SettingsFile::parse(side.isServer() ? exports.at(&side).finish() : file, tags);
    }));
  }
  return all;
}

}  // namespace diff
