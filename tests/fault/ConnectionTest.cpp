// Every command on every engine with a server, through a connection that is cut, stalls or becomes
// slow after so many bytes in one direction.
#include <chrono>
#include <gtest/gtest.h>
#include <set>
#include <thread>

#include "fault/Harness.h"
#include "support/Proxy.h"

namespace {

using Clock = std::chrono::steady_clock;

// The longest documented wait, 40 s, and what a busy machine adds.
constexpr std::chrono::seconds kLongestRun(50);

class ConnectionTo : public testing::TestWithParam<EngineKind> {
 protected:
  void SetUp() override {
    const std::string obstacle = GetParam().obstacle();
    if (!obstacle.empty()) GTEST_SKIP() << obstacle;
    harness.emplace(GetParam());
    if (harness->engine().port == 0) GTEST_SKIP() << "no server";
  }

  Process through(const Proxy& proxy, const Command& command) const {
    Process process = harness->program(command);
    process.arguments.back() = harness->engine().serverAt(proxy.port());
    return process;
  }

  // Of the bytes that the command sends and gets.
  std::set<long> positions(const Command& command, Proxy::Direction direction, long count) const {
    const Proxy whole(harness->engine().port);
    EXPECT_EQ(0, through(whole, command).run().status);
    const long last = whole.passed(direction);
    std::set<long> chosen = {0, 1, 8, last - 6, last - 1};
    for (long i = 1; i < count; ++i) chosen.insert(last * i / count);
    return chosen;
  }

  std::optional<Harness> harness{};
};

TEST_P(ConnectionTo, MayBeCutOrSlowAnywhere) {
  const long count = std::getenv("KNOB_FAULT_RUNS") ? std::atol(std::getenv("KNOB_FAULT_RUNS")) : 6;
  for (const Command& command : harness->commands()) {
    harness->learn(command);
    for (const auto direction : {Proxy::toServer, Proxy::toClient}) {
      for (const long after : positions(command, direction, count)) {
        for (const auto trouble : {Proxy::Trouble::cut, Proxy::Trouble::slow}) {
          if (trouble == Proxy::Trouble::slow && after != 0) continue;
          SCOPED_TRACE(command.name + " " + std::to_string(direction) + " " +
                       std::to_string(after));
          harness->reset();
          const auto begin = Clock::now();
          {
            const Proxy proxy(harness->engine().port, trouble, direction, after);
            harness->check(command, through(proxy, command).run());
          }
          EXPECT_GT(kLongestRun, Clock::now() - begin);
          harness->checkLaterRun(command);
          ASSERT_FALSE(HasFailure());
        }
      }
    }
  }
}

// At once, since each of them waits.
TEST_P(ConnectionTo, IsNotWaitedForWithoutEnd) {
  for (const Command& command : harness->commands()) {
    if (command.name != "import") continue;
    harness->learn(command);
    std::set<std::pair<Proxy::Direction, long>> places;
    for (const auto direction : {Proxy::toServer, Proxy::toClient}) {
      for (const long after : positions(command, direction, 6)) places.emplace(direction, after);
    }
    harness->reset();
    std::vector<std::thread> stalled;
    for (const auto& place : places) {
      stalled.emplace_back([&] {
        const Proxy proxy(harness->engine().port, Proxy::Trouble::stall, place.first, place.second);
        const auto begin = Clock::now();
        const Outcome run = through(proxy, command).run();
        EXPECT_GT(128, run.status) << command.name << place.first << " " << place.second;
        EXPECT_TRUE(run.status == 0 || !run.err.empty()) << command.name << " " << place.second;
        EXPECT_GT(kLongestRun, Clock::now() - begin);
      });
    }
    for (std::thread& each : stalled) each.join();
    harness->checkValues(command, "");
    harness->checkLaterRun(command);
  }
}

INSTANTIATE_TEST_SUITE_P(, ConnectionTo, testing::ValuesIn(engineKinds()),
                         [](const auto& row) { return row.param.name; });

}  // namespace
