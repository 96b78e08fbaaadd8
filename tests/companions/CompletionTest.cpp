// Completion in a real bash and a real zsh, driven by keys on a terminal. A line is completed and
// then noted by the shell itself: two keys put "note" in front of it and run it.
#include <gtest/gtest.h>
#include <unistd.h>

#include "http/HttpDouble.h"
#include "postgresql/Server.h"
#include "support/Process.h"
#include "support/TempFolder.h"

namespace {

using Words = std::vector<std::string>;

constexpr char kBash[] = "source $F/knob.bash; source $F/knob-diff.bash";
constexpr char kZsh[] = "fpath=($F $fpath); autoload -U compinit; compinit -u -D";
constexpr char kNote[] = "\x01note \r";  // to the beginning of the line, a word, return

class Completion : public testing::TestWithParam<std::string> {
 protected:
  void SetUp() override {
    if (access(shell.c_str(), X_OK) != 0) GTEST_SKIP() << shell << " is not installed";
    for (const Words& change : {Words{"15", "1"}, {"74", "$(touch " + evaluated + ") 'x"}}) {
      EXPECT_EQ(0, knob(home.path(), {"-S", store, change[0], change[1]}).run().status);
    }
  }
  // The lines as they are after the keys, every word in angle brackets. `screen`: all that the
  // terminal showed.
  std::string completed(const Words& lines, std::string* screen = nullptr) const {
    Process typing = knob(home.path(), {});
    typing.arguments = {"/usr/bin/script", "-qc",
                        shell + (bash ? " --norc --noprofile -i" : " -f -i"), "/dev/null"};
    typing.environment.insert({{"PATH", programFolder() + ":/usr/bin:/bin"},
                               {"TERM", "dumb"},
                               {"SHELL", "/bin/sh"},
                               {"F", KNOB_SOURCE_DIR "/share/completions"},
                               {"NOTES", home / "notes"},
                               {"A", store}});
    typing.input = (bash ? kBash : kZsh) + std::string("; PS1=; stty columns 200 rows 50\r") +
                   "note() { (printf '<%s>' \"$@\"; echo) >> $NOTES; }\r";
    for (const std::string& keys : lines) typing.input += keys + kNote;
    typing.input += "exit\r";  // an end of the input may come while the shell does not look
    std::filesystem::remove(home / "notes");
    const Outcome run = typing.run();
    if (screen != nullptr) *screen = run.out;
    return readFile(home / "notes");
  }

  TempFolder home;
  const bool bash = GetParam() == "bash";
  const std::string shell = bash ? "/bin/bash" : "/usr/bin/zsh";
  const std::string store = "file:" + (home / "a.db"), evaluated = home / "evaluated";
};

TEST_P(Completion, PutsIdsAndValuesOfTheEngineThatTheLineNames) {
  const std::string server = "<knob><-S><" + store + ">";
  EXPECT_EQ(
      completed({"knob replacement\t", "knob 'lock wait l\t", "knob 15 fr\t", "knob 25 \t",
                 "knob -S \"$A\" replacement\t", "knob -S $A 65 of\t", "knob -J\t", "knob --SE\t",
                 "knob-diff --sett\t", "knob-diff localh\tx", "knob-diff patronis\th",
                 "knob no such setting\t", "knob replica\t", "knob -S $A 74 \t"}),
      "<knob><15>\n<knob><25>\n<knob><15><1>\n<knob><25><20>\n" + server + "<15>\n" + server +
          "<65><off>\n<knob><-JSON>\n<knob><--SERVER>\n<knob-diff><--settings>\n"
          "<knob-diff><localhost><x>\n<knob-diff><patronis://h>\n<knob><no><such><setting>\n"
          "<knob><replica>\n" +
          server + "<74><$(touch " + evaluated + ") 'x>\n");
  EXPECT_FALSE(std::filesystem::exists(evaluated)) << "of the engine";
  // The line's own command is run once, with the line.
  EXPECT_EQ(completed({"knob -S \"$(echo x >> " + evaluated + ";echo x)\" 25 \t"}),
            "<knob><-S><x><25>\n");
  EXPECT_EQ("x\n", readFile(evaluated));
}

#ifdef KNOB_POSTGRESQL
TEST_P(Completion, AsksAPostgreSqlServerToo) {
  if (!Server::obstacle().empty()) GTEST_SKIP() << Server::obstacle();
  const std::string server = Server::shared().uri(), words = "<knob><-S><" + server + ">";
  EXPECT_EQ(
      completed({"P='" + server + "'\rknob -S \"$P\" red_buf\t \t", "knob -S $P search_pa\t"}),
      words + "<136><16384>\n" + words + "<1928>\n");
}
#endif

TEST_P(Completion, ShowsSeveralAndLeavesTheWord) {
  std::string screen;
  EXPECT_EQ(completed({"knob page\t\t"}, &screen), "<knob><page>\n");
  EXPECT_NE(screen.find("48  Page Cache Size"), std::string::npos) << screen;
  EXPECT_NE(screen.find("Page Verification"), std::string::npos);
  EXPECT_EQ(screen.find("_knob"), std::string::npos) << "a message of the shell: " << screen;
}

TEST_P(Completion, GivesThePromptBackWhenTheServerIsSilent) {
  const HttpDouble silent([](const std::string&) { return Reply{}; });
  const std::string server = "postgresql://u:pw@" + silent.address();
  EXPECT_EQ(completed({"knob -S " + server + " work\t"}), "<knob><-S><" + server + "><work>\n");
}

INSTANTIATE_TEST_SUITE_P(, Completion, testing::Values("bash", "zsh"),
                         [](const auto& instance) { return instance.param; });

}  // namespace
