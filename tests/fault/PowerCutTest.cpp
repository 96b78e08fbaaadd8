// What the local engine's store holds after a cut of the power at any point of a change, or after
// the program was killed.
#include <algorithm>
#include <chrono>
#include <csignal>
#include <sstream>
#include <thread>

#include "fault/Harness.h"

namespace {

// One thing that a run did to files, as the fault library records it.
struct Step {
  std::string kind;  // create, write, truncate, unlink, sync
  std::string path;
  std::size_t offset;
  std::string bytes;
  std::string settledBy;  // by whose sync it reaches the disk: names by that of their folder
};

// `size`: as many bytes of a write.
void apply(const Step& step, Texts& files, std::size_t size) {
  if (step.kind == "create") files[step.path];
  if (step.kind == "unlink") files.erase(step.path);
  const auto file = files.find(step.path);
  if (file == files.end()) return;  // its name never reached the disk
  std::string& content = file->second;
  if (step.kind == "truncate") content.resize(step.offset);
  if (step.kind != "write") return;
  content.resize(std::max(content.size(), step.offset + size));
  content.replace(step.offset, size, step.bytes, 0, size);
}

// What a disk may hold after the power went. What was synced is there; of the rest, bounded:
// nothing, all, any one or two things, all but any one or two, and any one torn in the middle.
std::set<Texts> afterCut(const Texts& before, const std::vector<Step>& steps) {
  std::vector<bool> settled;
  for (auto step = steps.begin(); step != steps.end(); ++step) {
    const auto settles = [&](const Step& later) {
      return later.kind == "sync" && later.path == step->settledBy;
    };
    settled.push_back(std::any_of(step, steps.end(), settles));
  }
  std::set<Texts> possible;
  // So many halves are kept of one or two loose steps, and of the other ones.
  const auto build = [&](std::size_t one, std::size_t two, std::size_t halves, std::size_t others) {
    Texts files = before;
    for (std::size_t i = 0; i < steps.size(); ++i) {
      const std::size_t kept = settled[i] ? 2 : i == one || i == two ? halves : others;
      if (kept > 0) apply(steps[i], files, steps[i].bytes.size() * kept / 2);
    }
    possible.insert(std::move(files));
  };
  build(steps.size(), steps.size(), 0, 0);
  build(steps.size(), steps.size(), 2, 2);
  for (std::size_t i = 0; i < steps.size(); ++i) {
    if (settled[i]) continue;
    build(i, i, 1, 2);
    for (std::size_t j = i; j < steps.size(); ++j) {
      if (settled[j]) continue;
      build(i, j, 2, 0);
      build(i, j, 0, 2);
    }
  }
  return possible;
}

Process killedAfter(double seconds, Process process) {
  process.arguments.insert(process.arguments.begin(),
                           {"/usr/bin/timeout", "-s", "KILL", std::to_string(seconds)});
  return process;
}

bool reports(const Outcome& end) { return end.out.find(" was updated.") != end.out.npos; }

class LocalStore : public Harness {
 protected:
  // What it does to files of the store is added to `steps`.
  Outcome record(const Command& change, std::vector<Step>& steps, double seconds = 60) const {
    const TempFolder records;
    const std::string file = records / "trace";
    const Outcome end = killedAfter(seconds, faulted(change, {{"FAULT_TRACE", file}})).run();
    std::istringstream trace(readFile(file));
    Step step{};
    for (std::size_t size = 0; trace >> step.kind >> step.path >> step.offset >> size;) {
      trace.get();
      step.bytes.resize(size);
      trace.read(step.bytes.data(), static_cast<std::streamsize>(size));
      const bool name = step.kind == "create" || step.kind == "unlink";
      step.settledBy = name ? folder : step.path;
      if (step.path.starts_with(folder)) steps.push_back(step);
    }
    return end;
  }

  // Runs the command on the store that is there now, and loads what may be left by a cut at every
  // stride-th step and at the end.
  void cut(const std::string& name, std::size_t stride) {
    const Command change = commands().at(name);
    const Texts before = filesIn(folder);
    std::vector<Step> steps;
    old = values();
    ASSERT_EQ(0, record(change, steps).status);
    wanted = values();
    ASSERT_NE(old, wanted);
    ASSERT_GT(steps.size(), 5U);
    for (std::size_t count = steps.size() % stride; count <= steps.size(); count += stride) {
      const auto end = steps.begin() + static_cast<std::ptrdiff_t>(count);
      for (const Texts& left : afterCut(before, {steps.begin(), end})) {
        SCOPED_TRACE(name + " " + std::to_string(count));
        replaceFiles(folder, left);
        ++built;
        checkValues(change);
        EXPECT_TRUE(count < steps.size() || values() == wanted) << "it was reported";
        if (HasFailure()) return;
      }
    }
  }

  const std::string folder = home / "store";
  const char* const asked = std::getenv("KNOB_KILLS");
  const int kills = asked != nullptr ? std::atoi(asked) : 300;
  int built = 0;
};

TEST_P(LocalStore, HoldsTheOldOrTheNewValuesWhenThePowerIsCut) {
  for (const auto& [name, stride] : {std::pair{"set", 1U}, std::pair{"import", 11U}}) {
    reset();
    cut(name, stride);
    replaceFiles(folder, {});  // the first change of all, which makes the store
    cut(name, stride);
  }
  RecordProperty("states", built);
}

// At times spread over the whole run.
TEST_P(LocalStore, HoldsTheOldOrTheNewValuesWhenItsWritersAreKilled) {
  constexpr int kMoments = 97;
  int killed = 0;
  int within = 0;  // between the first and the last thing done to a file
  for (const std::string name : {"set", "import"}) {
    const Command change = commands().at(name);
    learn(change);
    replaceFiles(folder, {});
    const Texts begun[] = {old, values()};
    std::vector<Step> whole;
    const auto begin = std::chrono::steady_clock::now();
    record(change, whole);
    const std::chrono::duration<double> time = std::chrono::steady_clock::now() - begin;
    for (int i = 0; i < kills / 2; ++i) {
      reset();
      if (i % 2 == 1) replaceFiles(folder, {});
      old = begun[i % 2];
      const double moment = time.count() * (i % kMoments + 1) / kMoments;
      SCOPED_TRACE(name + " " + std::to_string(moment));
      std::vector<Step> done;
      const Outcome end = record(change, done, moment);
      ASSERT_TRUE(end.status == 0 || end.status == 128 + SIGKILL) << end.status << end.err;
      killed += end.status != 0;
      within += end.status != 0 && !done.empty() && done.size() < whole.size();
      checkValues(change);
      EXPECT_TRUE((end.status != 0 && !reports(end)) || values() == wanted);
      checkLaterRun(change);
      ASSERT_FALSE(HasFailure());
    }
  }
  EXPECT_GT(within, 0);
  RecordProperty("killed", killed);
  RecordProperty("killed_within_the_change", within);
}

// One in two of them is killed.
TEST_P(LocalStore, LosesNoChangeOfManyWriters) {
  learn(commands().at("import"));
  for (int round = 0; round < kills / 20; ++round) {
    reset();
    std::vector<Outcome> ends(engine.ids.size());
    std::vector<std::thread> writers;
    for (std::size_t i = 0; i < ends.size(); ++i) {
      const double moment = i % 2 == 0 ? 60 : 0.001 * (static_cast<int>(i) + 1 + round % 50);
      writers.emplace_back([&, i, moment] {
        ends[i] = killedAfter(moment, program({{engine.ids[i], engine.value}})).run();
      });
    }
    for (std::thread& each : writers) each.join();
    const Texts found = values();
    for (std::size_t i = 0; i < ends.size(); ++i) {
      const std::string& id = engine.ids[i];
      const bool told = reports(ends[i]);
      EXPECT_TRUE(told || i % 2 == 1) << ends[i].err;
      EXPECT_TRUE(found.at(id) == wanted.at(id) || (!told && found.at(id) == old.at(id)))
          << id << ends[i].err;
    }
    ASSERT_FALSE(HasFailure());
  }
}

INSTANTIATE_TEST_SUITE_P(, LocalStore, testing::Values(kEngineKinds.front()));

}  // namespace
