// What the local engine's store holds after a cut of the power at any point of a change, or after
// the program was killed.
#include <chrono>
#include <csignal>
#include <gtest/gtest.h>

#include "fault/Disk.h"
#include "fault/Harness.h"

namespace {

namespace fs = std::filesystem;

const std::string kTimeout = "/usr/bin/timeout";

class LocalStore : public testing::Test {
 protected:
  Command command(const std::string& name) const {
    for (const Command& each : harness.commands()) {
      if (each.name == name) return each;
    }
    throw std::invalid_argument(name);
  }

  Disk::Files files() const {
    Disk::Files all;
    for (const auto& file : fs::directory_iterator(folder)) {
      all[file.path()] = readFile(file.path());
    }
    return all;
  }
  void replaceFiles(const Disk::Files& by) const {
    for (const auto& file : fs::directory_iterator(folder)) fs::remove(file);
    for (const auto& [path, content] : by) writeFile(path, content);
  }

  // Runs the command on the store that is there now, and loads what may be left by a cut at every
  // stride-th step and at the end.
  void cut(const Command& change, std::size_t stride) {
    const Disk::Files before = files();
    const Values old = harness.values();
    fs::remove(trace);
    Process process = harness.faulted(change, "");
    process.environment["FAULT_TRACE"] = trace;
    ASSERT_EQ(0, process.run().status);
    const Values wanted = harness.values();
    ASSERT_NE(old, wanted);
    harness.expect(old, wanted);
    const Disk disk(trace, folder, before);
    ASSERT_GT(disk.steps(), 5U);
    for (std::size_t step = disk.steps() % stride; step <= disk.steps(); step += stride) {
      for (const Disk::Files& left : disk.afterCut(step)) {
        SCOPED_TRACE(change.name + " " + std::to_string(step));
        replaceFiles(left);
        ++built;
        harness.checkValues(change, "");
        EXPECT_TRUE(step < disk.steps() || harness.values() == wanted) << "it was reported";
        if (HasFailure()) return;
      }
    }
  }

  Harness harness{engineKinds().front()};
  const std::string folder = harness.home() + "/store";
  const std::string trace = harness.home() + "/trace";
  int built = 0;
};

TEST_F(LocalStore, HoldsTheOldOrTheNewValuesWhenThePowerIsCut) {
  for (const auto& [name, stride] : {std::pair{"set", 1U}, std::pair{"import", 11U}}) {
    harness.reset();
    cut(command(name), stride);
    replaceFiles({});  // the first change of all, which makes the store
    cut(command(name), stride);
  }
  RecordProperty("states", built);
}

// At times spread over the whole run; KNOB_KILLS=N for so many.
TEST_F(LocalStore, HoldsTheOldOrTheNewValuesWhenItsWritersAreKilled) {
  const char* const asked = std::getenv("KNOB_KILLS");
  const int kills = asked != nullptr ? std::atoi(asked) : 300;
  constexpr int kMoments = 97;
  int killed = 0;
  int within = 0;  // between the first and the last thing done to a file
  for (std::string const name : {"set", "import"}) {
    const Command change = command(name);
    harness.learn(change);
    replaceFiles({});
    const Values defaults = harness.values();
    const Values old = harness.old();
    std::size_t steps = 0;
    double seconds = 60;
    for (int i = -1; i < kills / 2; ++i) {
      const bool first = i % 2 == 1;
      first ? replaceFiles({}) : harness.reset();
      harness.expect(first ? defaults : old, harness.wanted());
      fs::remove(trace);
      Process process = harness.faulted(change, "");
      process.environment["FAULT_TRACE"] = trace;
      const double moment = i < 0 ? seconds : seconds * (i % kMoments + 1) / kMoments;
      process.arguments.insert(process.arguments.begin(),
                               {kTimeout, "-s", "KILL", std::to_string(moment)});
      const auto begin = std::chrono::steady_clock::now();
      const Outcome run = process.run();
      const std::size_t done = Disk(trace, folder, {}).steps();
      fs::remove(trace);
      SCOPED_TRACE(name + " " + std::to_string(moment));
      if (i < 0) {
        seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
        steps = done;
      }
      ASSERT_TRUE(run.status == 0 || run.status == 128 + SIGKILL) << run.status << run.err;
      killed += run.status != 0;
      within += run.status != 0 && done > 0 && done < steps;
      harness.checkValues(change, "");
      if (run.status == 0 || run.out.find(" was updated.") != run.out.npos) {
        EXPECT_EQ(harness.wanted(), harness.values());
      }
      harness.checkLaterRun(change);
      ASSERT_FALSE(HasFailure());
    }
  }
  EXPECT_GT(within, 0);
  RecordProperty("killed", killed);
  RecordProperty("killed_within_the_change", within);
}

// One in two of them is killed.
TEST_F(LocalStore, LosesNoChangeOfManyWriters) {
  const char* const asked = std::getenv("KNOB_KILLS");
  const std::size_t rounds = asked != nullptr ? std::stoul(asked) / 20 : 15;
  const Engine& engine = harness.engine();
  const Command import = command("import");
  harness.learn(import);
  for (std::size_t round = 0; round < rounds; ++round) {
    harness.reset();
    Process writers = harness.program({});
    std::string script;
    for (std::size_t i = 0; i < engine.ids.size(); ++i) {
      const double moment = i % 2 == 0 ? 60 : 0.001 * static_cast<double>(i + 1 + round % 50);
      script += kTimeout + " -s KILL " + std::to_string(moment) + " " + writers.arguments[0] + " " +
                engine.ids[i] + " " + engine.value + " -S " + engine.server + " >" +
                harness.home() + "/writer" + std::to_string(i) + " 2>&1 &\n";
    }
    writers.arguments = {"/bin/sh", "-c", script + "wait"};
    writers.run();
    const Values found = harness.values();
    for (std::size_t i = 0; i < engine.ids.size(); ++i) {
      const std::string said = readFile(harness.home() + "/writer" + std::to_string(i));
      const std::string& id = engine.ids[i];
      const bool told = said.find(" was updated.") != said.npos;
      EXPECT_TRUE(told || i % 2 == 1) << said;
      EXPECT_TRUE(found.at(id) == harness.wanted().at(id) ||
                  (!told && found.at(id) == harness.old().at(id)))
          << id << said;
    }
    ASSERT_FALSE(HasFailure());
  }
}

}  // namespace
