#include "fault/Harness.h"

#include <algorithm>
#include <chrono>
#include <regex>

namespace {

// The longest documented wait, 40 s, and what a busy machine adds.
constexpr std::chrono::seconds kLongestRun(50);

bool has(const std::string& text, const std::string& part) { return text.find(part) != text.npos; }

// Whether messages tell of the setting.
bool isNamed(const std::string& messages, const std::string& id) {
  return std::regex_search(messages, std::regex("[Ss]etting " + id + "\\b"));
}

// A text that cannot be looked up is replaced by words that say so, whatever the exit status (of
// which a JSON header shows the end only); so is what a cluster's configuration would tell.
bool lacksTexts(const std::string& text) {
  return has(text, " not installed") || has(text, "configuration cannot be read at the moment");
}

}  // namespace

void Harness::SetUp() {
  const std::string obstacle = GetParam().obstacle();
  if (!obstacle.empty()) GTEST_SKIP() << obstacle;
  engine = GetParam().make(home.path());
  first_ = engine.state();
  std::string changes;
  for (const std::string& id : engine.ids) {
    changes += "Setting ID: " + id + "\nCurrent Value: " + engine.value + "\n";
  }
  writeFile(home / "import", changes);
}

std::map<std::string, Command> Harness::commands() const {
  const std::string& id = engine.ids[0];
  return {{"show", {{id}}},
          {"set", {{id, engine.value}, {id}}},
          {"search", {{"-H", "e", "-JSON"}}},
          {"export", {{"-O", output_, "-F"}}},
          {"exportJson", {{"-O", output_, "-JSON"}}},
          {"import", {{"-I", home / "import"}, engine.ids}}};
}

Process Harness::program(const Command& command, int port) const {
  const std::string own = ":" + std::to_string(engine.port);
  std::string server = engine.server;
  if (port != 0) server.replace(server.find(own), own.size(), ":" + std::to_string(port));
  std::vector<std::string> arguments = command.arguments;
  arguments.insert(arguments.end(), {"-S", server});
  Process process = knob(home.path(), arguments);
  process.environment.insert(engine.environment.begin(), engine.environment.end());
  return process;
}

Process Harness::faulted(const Command& command, const Texts& variables) const {
  Process process = program(command);
  process.environment["LD_PRELOAD"] = KNOB_FAULT_PRELOAD;
  process.environment.insert(variables.begin(), variables.end());
  return process;
}

void Harness::learn(const Command& command) {
  reset();
  old = values();
  const Outcome run = program(command).run();
  EXPECT_EQ(0, run.status) << run.err;
  EXPECT_EQ("", run.err);
  wanted = values();
  for (const std::string& id : command.changes) EXPECT_NE(old[id], wanted[id]) << id;
  wantedOut_ = run.out;
  wantedOutput_ = readFile(output_);
  wantedFiles_ = filesIn(home.path());
  reset();
}

Outcome Harness::run(const Process& process) {
  const auto begin = std::chrono::steady_clock::now();
  const Outcome outcome = process.run();
  EXPECT_GT(kLongestRun, std::chrono::steady_clock::now() - begin);
  EXPECT_LT(outcome.status, 128) << "ended by a signal, or too late";
  return outcome;
}

Outcome Harness::check(const Command& command, const Process& process, bool mute) {
  reset();
  const Outcome run = Harness::run(process);
  const bool set = command.changes.size() == 1, import = command.changes.size() > 1;
  const bool saysSo = lacksTexts(run.out) || lacksTexts(readFile(output_));
  if (run.status == 0 && !saysSo && !mute) {
    EXPECT_EQ(wantedOut_, run.out);
    EXPECT_TRUE(wantedOutput_ == readFile(output_));
    EXPECT_TRUE(run.err.empty() || import) << run.err;
  } else if (!mute) {
    EXPECT_TRUE(saysSo || has(run.out, "\"error\": ") || !run.err.empty())
        << "exit status " << run.status << " and no word";
    EXPECT_TRUE(import || std::ranges::count(run.err, '\n') <= 1) << run.err;
  }
  checkValues(command, run.err);
  const bool done = (run.status == 0 && !lacksTexts(run.out)) || has(run.out, " was updated.");
  for (const std::string& id : command.changes) {
    const std::string& value = values().at(id);
    const bool denied = has(run.err, "Setting " + id + " was not changed") ||
                        (set && has(run.err, "Nothing was changed"));
    EXPECT_TRUE(!denied || value == old[id]) << id << " was changed: " << run.err;
    const bool told =
        (done && !isNamed(run.err, id)) || (set && has(run.err, "The setting was changed"));
    EXPECT_TRUE(!told || value == wanted[id]) << id << " was not changed: " << run.err;
  }
  checkLaterRun(command);
  return run;
}

void Harness::checkValues(const Command& command, const std::string& told) {
  const Texts& found = values();
  ASSERT_EQ(old.size(), found.size());
  for (const auto& [id, value] : found) {
    EXPECT_TRUE(value == old[id] || value == wanted[id]) << id << ": " << value;
  }
  bool over = false;
  for (const std::string& id : command.changes) {
    if (isNamed(told, id)) continue;
    const bool changed = found.at(id) == wanted[id];
    EXPECT_FALSE(over && changed) << id << " was changed after one that was not";
    over = over || !changed;
  }
}

void Harness::checkLaterRun(const Command& command) {
  const Outcome run = program(command).run();
  EXPECT_EQ(0, run.status);
  EXPECT_EQ("", run.err);
  EXPECT_EQ(wantedOut_, run.out);
  EXPECT_TRUE(wantedOutput_ == readFile(output_));
  EXPECT_EQ(wanted, values());
  constexpr auto kName = &Texts::value_type::first;
  EXPECT_TRUE(std::ranges::equal(wantedFiles_, filesIn(home.path()), {}, kName, kName));
}

void Harness::reset() const {
  writeFile(output_, "an export of another time");
  if (engine.state() != first_) engine.reset();
}

const Texts& Harness::values() {
  const auto [known, isNew] = valuesOf_.try_emplace(engine.state());
  if (isNew) known->second = engine.values();
  return known->second;
}
