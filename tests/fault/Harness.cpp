#include "fault/Harness.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <regex>

namespace {

// Whether messages tell of the setting.
bool isNamed(const std::string& messages, const std::string& id) {
  return std::regex_search(messages, std::regex("[Ss]etting " + id + "\\b"));
}

// A text that cannot be looked up is replaced by words that say so, whatever the exit status; so is
// what a cluster's configuration would tell of a setting.
bool lacksTexts(const std::string& text) {
  const auto says = [&](const char* words) { return text.find(words) != text.npos; };
  return says(" not installed") || says("KNOB_") ||  // of which a JSON header shows the end only
         says("configuration cannot be read at the moment");
}

}  // namespace

Harness::Harness(const EngineKind& kind) : engine_(kind.make(home_.path())) {
  std::string changes;
  for (const std::string& id : engine_.ids) {
    changes += "Setting ID: " + id + "\nCurrent Value: " + engine_.value + "\n";
  }
  writeFile(home_ / "import", changes);
}

std::vector<Command> Harness::commands() const {
  const std::string& id = engine_.ids[0];
  return {{"show", {id}},
          {"set", {id, engine_.value}, {id}},
          {"search", {"-H", "e", "-JSON"}},
          {"export", {"-O", output_, "-F"}},
          {"exportJson", {"-O", output_, "-JSON"}},
          {"import", {"-I", home_ / "import"}, engine_.ids}};
}

Process Harness::program(const Command& command) const {
  std::vector<std::string> arguments = command.arguments;
  arguments.insert(arguments.end(), {"-S", engine_.server});
  Process process = knob(home_.path(), arguments);
  process.environment.insert(engine_.environment.begin(), engine_.environment.end());
  return process;
}

Process Harness::faulted(const Command& command, const std::string& fault) const {
  Process process = program(command);
  process.environment["LD_PRELOAD"] = KNOB_FAULT_PRELOAD;
  if (!fault.empty()) process.environment["FAULT"] = fault;
  return process;
}

long Harness::count(const Command& command, const std::string& kind) const {
  const TempFolder folder;
  Process process = faulted(command, kind + ":EIO:0");
  process.environment["FAULT_COUNT"] = folder / "count";
  EXPECT_EQ(0, process.run().status);
  reset();
  return std::stol(readFile(folder / "count"));
}

void Harness::learn(const Command& command) {
  reset();
  old_ = values();
  const Outcome run = program(command).run();
  EXPECT_EQ(0, run.status) << run.err;
  EXPECT_EQ("", run.err);
  wanted_ = values();
  for (const std::string& id : command.changes) EXPECT_NE(old_[id], wanted_[id]) << id;
  wantedOut_ = run.out;
  wantedOutput_ = readFile(output_);
  wantedFiles_ = files();
  reset();
}

void Harness::check(const Command& command, const Outcome& run, Reports reports) {
  EXPECT_LT(run.status, 128) << "ended by a signal, or too late";
  const bool saysSo = lacksTexts(run.out) || lacksTexts(readFile(output_));
  if (run.status == 0 && !saysSo && reports == Reports::arrive) {
    EXPECT_EQ(wantedOut_, run.out);
    EXPECT_TRUE(exportIsWhole());
    EXPECT_TRUE(run.err.empty() || command.name == "import") << run.err;
  } else if (reports == Reports::arrive) {
    const bool inJson = run.out.find("\"error\": ") != run.out.npos;
    EXPECT_TRUE(saysSo || inJson || !run.err.empty())
        << "exit status " << run.status << " and no word";
    EXPECT_TRUE(command.name == "import" || std::count(run.err.begin(), run.err.end(), '\n') <= 1)
        << run.err;
  }
  checkValues(command, run.err);
  for (const std::string& id : command.changes) {
    const bool denied = run.err.find("Setting " + id + " was not changed") != run.err.npos;
    EXPECT_TRUE(!denied || values().at(id) == old_[id]) << id << " was changed";
  }
  if (command.name == "set") {
    const auto says = [&](const char* words) { return run.err.find(words) != run.err.npos; };
    EXPECT_TRUE(!says("Nothing was changed") || values() == old_) << run.err;
    EXPECT_TRUE(!says("The setting was changed") || values() == wanted_) << run.err;
  }
  const bool done = run.status == 0 && !lacksTexts(run.out);
  if (done || run.out.find(" was updated.") != run.out.npos) {
    for (const std::string& id : command.changes) {
      if (!isNamed(run.err, id)) {
        EXPECT_EQ(wanted_[id], values().at(id)) << id << " was reported";
      }
    }
  }
}

void Harness::checkValues(const Command& command, const std::string& told) {
  const Values& found = values();
  ASSERT_EQ(old_.size(), found.size());
  for (const auto& [id, value] : found) {
    EXPECT_TRUE(value == old_[id] || value == wanted_[id]) << id << ": " << value;
  }
  bool over = false;
  for (const std::string& id : command.changes) {
    if (isNamed(told, id)) continue;
    const bool changed = found.at(id) == wanted_[id];
    EXPECT_FALSE(over && changed) << id << " was changed after one that was not";
    over = over || !changed;
  }
}

void Harness::checkLaterRun(const Command& command) {
  const Outcome run = program(command).run();
  EXPECT_EQ(0, run.status);
  EXPECT_EQ("", run.err);
  EXPECT_EQ(wantedOut_, run.out);
  EXPECT_TRUE(exportIsWhole());
  EXPECT_EQ(wanted_, values());
  EXPECT_EQ(wantedFiles_, files());
}

void Harness::reset() const {
  writeFile(output_, "an export of another time");
  if (engine_.state() != first_) engine_.reset();
}

const Values& Harness::values() {
  const auto [known, isNew] = valuesOf_.try_emplace(engine_.state());
  if (isNew) {
    const std::string before = readFile(output_);
    known->second = engine_.values();
    // Reading may have completed what a command left, so this state has the same values.
    valuesOf_[engine_.state()] = known->second;
    writeFile(output_, before);
  }
  return known->second;
}

std::string Harness::files() const {
  std::vector<std::string> names;
  for (const auto& entry : std::filesystem::recursive_directory_iterator(home_.path())) {
    names.push_back(entry.path());
  }
  std::sort(names.begin(), names.end());
  std::string all;
  for (const std::string& name : names) all += name + "\n";
  return all;
}
