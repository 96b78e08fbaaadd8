// Every command on every engine with calls of the system that fail, and through a connection that
// is cut, stalls or becomes slow after so many bytes in one direction. KNOB_FAULT_RUNS=N: with up
// to N such calls of each kind and places of a connection.
#include <thread>

#include "fault/Harness.h"
#include "support/Proxy.h"

namespace {

// KIND:EFFECT. After an interrupted or a short call the program goes on as if nothing had happened.
const std::vector<std::string> kFileFaults = {
#ifndef KNOB_SANITIZE
    "malloc:ENOMEM",
#endif
    "write:ENOSPC",  "write:EIO",  "write:EDQUOT", "write:EINTR",   "write:short",
    "read:EIO",      "read:EINTR", "read:short",   "open:EMFILE",   "open:EACCES",
    "open:EINTR",    "close:EIO",  "sync:EIO",     "ftruncate:EIO", "unlink:EIO"};
const std::vector<std::string> kNetworkFaults = {"connect:ECONNRESET", "send:ECONNRESET",
                                                 "send:short",         "recv:ECONNRESET",
                                                 "recv:EINTR",         "recv:short"};

// Of the numbers up to `count`: the first, the last, and some of those between.
std::vector<long> spread(long count, long usual) {
  const char* const asked = std::getenv("KNOB_FAULT_RUNS");
  const long most = asked != nullptr ? std::atol(asked) : usual;
  const long ends = std::max(1L, most / 4);
  const long step = std::max(1L, count / std::max(1L, most - 2 * ends + 1));
  std::vector<long> chosen;
  for (long n = 1; n <= count; ++n) {
    if (n <= ends || n > count - ends || n % step == 0) chosen.push_back(n);
  }
  return chosen;
}

class OnEngine : public Harness {
 protected:
  // How often the unharmed command makes calls of the kind.
  long count(const Command& command, const std::string& kind) const {
    const TempFolder folder;
    const Texts variables = {{"FAULT", kind + ":EIO:0"}, {"FAULT_TRACE", folder / "trace"}};
    EXPECT_EQ(0, faulted(command, variables).run().status);
    reset();
    const std::string traced = readFile(folder / "trace"), last = "calls - ";
    return std::stol(traced.substr(traced.rfind(last) + last.size()));
  }

  // Of the bytes that the command sends and gets.
  std::vector<std::pair<Proxy::Direction, long>> places(const Command& command) const {
    if (engine.port == 0) return {};
    const Proxy whole(engine.port);
    EXPECT_EQ(0, program(command, whole.port()).run().status);
    std::vector<std::pair<Proxy::Direction, long>> chosen;
    for (const auto direction : {Proxy::toServer, Proxy::toClient}) {
      const long last = whole.passed(direction);
      chosen.emplace_back(direction, last - 6);  // before PostgreSQL's last message
      for (const long n : spread(last, 3 * (engine.calls - 1))) {
        chosen.emplace_back(direction, n - 1);
      }
    }
    return chosen;
  }
};

TEST_P(OnEngine, EveryPromiseIsKeptWhateverFails) {
  int runs = 0;
  for (const auto& [name, command] : commands()) {
    learn(command);
    for (const std::string& fault : engine.port == 0 ? kFileFaults : kNetworkFaults) {
      const std::string kind = fault.substr(0, fault.find(':'));
      const bool interrupts = fault.ends_with("EINTR"), shortens = fault.ends_with("short");
      for (const long n : spread(count(command, kind), engine.calls)) {
        for (const std::string rest : {"", "+"}) {
          if (rest == "+" && (interrupts || kind == "connect")) continue;  // without end, or long
          const std::string plan = fault + ":" + std::to_string(n) + rest;
          SCOPED_TRACE(name + " " + plan);
          // What cannot be written cannot tell of it either.
          const bool mute = kind == "write" && rest == "+" && !shortens;
          const Outcome end = check(command, faulted(command, {{"FAULT", plan}}), mute);
          EXPECT_TRUE((!interrupts && !shortens) || (end.status == 0 && end.err.empty()))
              << end.err;
          ++runs;
          if (HasFailure()) return;
        }
      }
    }
    for (const auto& [direction, after] : places(command)) {
      for (const auto trouble : {Proxy::Trouble::cut, Proxy::Trouble::slow}) {
        if (trouble == Proxy::Trouble::slow && after != 0) continue;
        SCOPED_TRACE(name + " " + std::to_string(direction) + " " + std::to_string(after));
        const Proxy proxy(engine.port, trouble, direction, after);
        check(command, program(command, proxy.port()));
        ++runs;
        ASSERT_FALSE(HasFailure());
      }
    }
  }
  RecordProperty("runs", runs);
}

// At once, since each of them waits. What the import changes, the set changes too.
TEST_P(OnEngine, AConnectionThatStallsIsNotWaitedForWithoutEnd) {
  const std::map<std::string, Command> all = commands();
  std::vector<std::function<void()>> runs;
  for (const auto& [name, command] : all) {
    learn(command);
    for (const auto& place : places(command)) {
      runs.emplace_back([&name = name, &command = command, place, this] {
        const auto& [direction, after] = place;
        const Proxy proxy(engine.port, Proxy::Trouble::stall, direction, after);
        const Outcome end = run(program(command, proxy.port()));
        const bool inJson = end.out.find("\"error\": ") != end.out.npos;
        EXPECT_TRUE(end.status == 0 || inJson || !end.err.empty())
            << name << " " << direction << " " << after << ": " << end.status;
      });
    }
  }
  if (runs.empty()) GTEST_SKIP() << "no server";
  learn(all.at("import"));
  std::vector<std::thread> stalled(runs.begin(), runs.end());
  for (std::thread& each : stalled) each.join();
  checkValues(all.at("import"));
  reset();
  checkLaterRun(all.at("import"));
}

INSTANTIATE_TEST_SUITE_P(, OnEngine, testing::ValuesIn(kEngineKinds),
                         [](const auto& row) { return row.param.name; });

}  // namespace
