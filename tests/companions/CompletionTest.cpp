// Completion in a real bash and a real zsh. A line is completed and then shown by the shell itself:
// two keys put "echo" in front of it and run it.
#include <csignal>
#include <gtest/gtest.h>
#include <poll.h>
#include <pty.h>
#include <sys/wait.h>
#include <unistd.h>

#include "http/HttpDouble.h"
#include "postgresql/Server.h"
#include "support/Process.h"
#include "support/TempFolder.h"

namespace {

const std::string kCompletions = std::string(KNOB_SOURCE_DIR) + "/share/completions";
// Keys: to the beginning of the line, "print it", return. Single quotes keep what was completed.
constexpr char kShowLine[] = "\x01printf '<%s>' \r";

// An interactive shell on a pseudo-terminal, driven by keys as a person drives it.
class Terminal {
 public:
  Terminal(const std::string& command, const std::map<std::string, std::string>& environment) {
    winsize size{50, 200, 0, 0};
    shell_ = forkpty(&terminal_, nullptr, nullptr, &size);
    if (shell_ != 0) return;
    clearenv();
    for (const auto& [name, value] : environment) setenv(name.c_str(), value.c_str(), 1);
    execl("/bin/sh", "sh", "-c", ("exec " + command).c_str(), nullptr);
    _exit(127);
  }
  ~Terminal() {
    close(terminal_);
    kill(shell_, SIGKILL);
    waitpid(shell_, nullptr, 0);
  }
  Terminal(const Terminal&) = delete;
  Terminal& operator=(const Terminal&) = delete;

  void type(const std::string& keys) const { (void)!write(terminal_, keys.data(), keys.size()); }
  // What came out since the last wait, up to and with the text; everything when the text does not
  // come within ten seconds.
  std::string waitFor(const std::string& text) {
    std::size_t end = 0;
    while ((end = seen_.find(text)) == std::string::npos) {
      pollfd waiting{terminal_, POLLIN, 0};
      char piece[4096];
      if (poll(&waiting, 1, 10'000) <= 0) return seen_;
      const ssize_t count = read(terminal_, piece, sizeof piece);
      if (count <= 0) return seen_;
      seen_.append(piece, static_cast<std::size_t>(count));
    }
    std::string before = seen_.substr(0, end + text.size());
    seen_.erase(0, end + text.size());
    return before;
  }

 private:
  int terminal_ = -1;
  pid_t shell_ = -1;
  std::string seen_{};
};

struct Shell {
  std::string program, options, setUp;
};

std::vector<Shell> shells() {
  return {{"/bin/bash", " --norc --noprofile -i",
           "source " + kCompletions + "/knob.bash; source " + kCompletions + "/knob-diff.bash"},
          {"/usr/bin/zsh", " -f -i",
           "fpath=(" + kCompletions + " $fpath); autoload -U compinit; compinit -u -D"}};
}

class Completion : public testing::TestWithParam<Shell> {
 protected:
  void SetUp() override {
    if (access(GetParam().program.c_str(), X_OK) != 0) {
      GTEST_SKIP() << GetParam().program << " is not installed";
    }
    run({"-S", store, "15", "1"});
    run({"-S", store, "74", "$(touch " + (home / "evaluated") + ") 'x"});
    terminal = std::make_unique<Terminal>(
        GetParam().program + GetParam().options,
        std::map<std::string, std::string>{{"HOME", home.path()},
                                           {"XDG_STATE_HOME", home / "state"},
                                           {"PATH", programFolder() + ":/usr/bin:/bin"},
                                           {"TERM", "dumb"},
                                           {"A", store}});
    terminal->type(GetParam().setUp + "; PS1=; echo rea''dy\r");
    terminal->waitFor("ready\r\n");
  }
  void run(std::vector<std::string> arguments) const {
    EXPECT_EQ(0, knob(home.path(), std::move(arguments)).run().status);
  }
  // The words of the line as they are after the keys, each in angle brackets.
  std::string completed(const std::string& keys) {
    const std::string first = keys.starts_with("knob-diff") ? "<knob-diff>" : "<knob>";
    terminal->type(keys + kShowLine);
    std::string all;
    do {
      all = terminal->waitFor(first);
    } while (all.find("printf") == std::string::npos && !all.empty());
    terminal->type("echo; echo d''one\r");
    std::string words = first + terminal->waitFor("done\r\n");
    return words.substr(0, words.rfind('>') + 1);
  }

  TempFolder home;
  const std::string store = "file:" + (home / "a.db");
  std::unique_ptr<Terminal> terminal;
};

TEST_P(Completion, PutsIdsAndValuesOfTheEngineThatTheLineNames) {
  const std::string server = "<-S><" + store + ">";
  const std::pair<std::string, std::string> cases[] = {
      {"knob replacement\t", "<knob><15>"},
      {"knob 'lock wait l\t", "<knob><25>"},
      {"knob 15 fr\t", "<knob><15><1>"},
      {"knob 25 \t", "<knob><25><20>"},
      {"knob -S \"$A\" replacement\t", "<knob>" + server + "<15>"},
      {"knob -S $A 65 of\t", "<knob>" + server + "<65><off>"},
      {"knob -J\t", "<knob><-JSON>"},
      {"knob --SE\t", "<knob><--SERVER>"},
      {"knob-diff --sett\t", "<knob-diff><--settings>"},
      {"knob-diff localh\tx", "<knob-diff><localhost><x>"},
      {"knob-diff patronis\th", "<knob-diff><patronis://h>"},
      {"knob no such setting\t", "<knob><no><such><setting>"},
      {"knob replica\t", "<knob><replica>"},
      {"knob -S \"$(touch " + (home / "evaluated") + ";echo x)\" 25 \t", "<knob><-S><x><25>"},
  };
  for (const auto& [keys, words] : cases) {
    EXPECT_EQ(words, completed(keys)) << keys;
    std::filesystem::remove(home / "evaluated");  // by the shell, when it ran the shown line
  }
  EXPECT_EQ("<knob>" + server + "<74><$(touch " + (home / "evaluated") + ") 'x>",
            completed("knob -S $A 74 \t"));
  EXPECT_FALSE(std::filesystem::exists(home / "evaluated"));
}

TEST_P(Completion, AsksAPostgreSqlServerToo) {
  if (!Server::obstacle().empty()) GTEST_SKIP() << Server::obstacle();
  const std::string server = Server::shared().uri();
  terminal->type("P='" + server + "'\r");
  EXPECT_EQ("<knob><-S><" + server + "><136><16384>", completed("knob -S \"$P\" red_buf\t \t"));
  EXPECT_EQ("<knob><-S><" + server + "><1928>", completed("knob -S $P search_pa\t"));
}

TEST_P(Completion, ShowsSeveralAndLeavesTheWord) {
  terminal->type("knob page\t\t");
  const std::string shown = terminal->waitFor("Page Verification");
  EXPECT_NE(shown.find("48  Page Cache Size"), std::string::npos) << shown;
  EXPECT_EQ(shown.find("_knob"), std::string::npos) << "a message of the shell: " << shown;
  EXPECT_EQ("<knob><page>", completed(""));
}

TEST_P(Completion, GivesThePromptBackWhenTheServerIsSilent) {
  const HttpDouble silent([](const std::string&) { return Reply{}; });
  const std::string server = "postgresql://u:pw@" + silent.address();
  EXPECT_EQ("<knob><-S><" + server + "><work>", completed("knob -S " + server + " work\t"));
}

INSTANTIATE_TEST_SUITE_P(Shells, Completion, testing::ValuesIn(shells()),
                         [](const auto& instance) { return instance.index == 0 ? "bash" : "zsh"; });

}  // namespace
