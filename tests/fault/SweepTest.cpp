// Every command with calls of the system that fail, on every engine: the n-th call of a kind, for n
// spread over all calls. With KNOB_FAULT_RUNS=N up to N calls of each kind.
#include <gtest/gtest.h>

#include "fault/Harness.h"

namespace {

struct Fault {
  std::string kind;
  std::string effect;
  std::string rest{};     // "+": all calls after it as well
  bool harmless = false;  // the program goes on as if nothing had happened
};

const Fault kFaults[] = {
#ifndef KNOB_SANITIZE
    {"malloc", "ENOMEM"},
    {"malloc", "ENOMEM", "+"},
#endif
    {"write", "ENOSPC"},
    {"write", "ENOSPC", "+"},
    {"write", "EIO"},
    {"write", "EDQUOT", "+"},
    {"write", "EINTR", "", true},
    {"write", "short", "+", true},
    {"read", "EIO"},
    {"read", "EIO", "+"},
    {"read", "EINTR", "", true},
    {"read", "short", "", true},
    {"open", "EMFILE"},
    {"open", "EACCES", "+"},
    {"open", "EINTR", "", true},
    {"close", "EIO"},
    {"close", "EIO", "+"},
    {"sync", "EIO"},
    {"sync", "EIO", "+"},
    {"ftruncate", "EIO"},
    {"unlink", "EIO"},
    {"unlink", "EACCES", "+"},
    {"connect", "ECONNRESET"},
    {"send", "ECONNRESET"},
    {"send", "ECONNRESET", "+"},
    {"send", "short", "", true},
    {"recv", "ECONNRESET"},
    {"recv", "ECONNRESET", "+"},
    {"recv", "EINTR", "", true},
    {"recv", "short", "+", true},
};

bool isNetwork(const Fault& fault) {
  return fault.kind == "connect" || fault.kind == "send" || fault.kind == "recv";
}

// The first and the last calls of a kind, and some of those between.
std::vector<long> spread(long count, long usual) {
  const char* const asked = std::getenv("KNOB_FAULT_RUNS");
  const long most = asked != nullptr ? std::atol(asked) : usual;
  const long ends = most / 4;
  const long step = std::max(1L, (count - 2 * ends) / (most - 2 * ends));
  std::vector<long> calls;
  for (long n = 1; n <= count; n += n < ends || n > count - ends ? 1 : step) calls.push_back(n);
  return calls;
}

class Sweep : public testing::TestWithParam<EngineKind> {
 protected:
  void SetUp() override {
    const std::string obstacle = GetParam().obstacle();
    if (!obstacle.empty()) GTEST_SKIP() << obstacle;
  }
};

TEST_P(Sweep, KeepsEveryPromiseWhateverCallFails) {
  Harness harness(GetParam());
  const bool onNetwork = harness.engine().port != 0;
  int runs = 0;
  for (const Command& command : harness.commands()) {
    harness.learn(command);
    ASSERT_FALSE(HasFailure());
    std::map<std::string, long> counts;
    for (const Fault& fault : kFaults) {
      if (isNetwork(fault) != onNetwork) continue;
      if (!counts.contains(fault.kind)) counts[fault.kind] = harness.count(command, fault.kind);
      for (const long n : spread(counts[fault.kind], harness.engine().calls)) {
        const std::string plan = fault.kind + ":" + fault.effect + ":" + std::to_string(n);
        SCOPED_TRACE(command.name + " " + plan + fault.rest);
        harness.reset();
        const Outcome run = harness.faulted(command, plan + fault.rest).run();
        ++runs;
        // What cannot be written cannot tell of it either.
        const bool mute = fault.kind == "write" && !fault.harmless && fault.rest == "+";
        harness.check(command, run, mute ? Harness::Reports::mayBeLost : Harness::Reports::arrive);
        EXPECT_TRUE(!fault.harmless || (run.status == 0 && run.err.empty())) << run.err;
        harness.checkLaterRun(command);
        if (HasFailure()) return;
      }
    }
  }
  RecordProperty("runs", runs);
}

INSTANTIATE_TEST_SUITE_P(, Sweep, testing::ValuesIn(engineKinds()),
                         [](const auto& row) { return row.param.name; });

}  // namespace
