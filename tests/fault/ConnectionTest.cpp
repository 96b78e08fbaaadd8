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
    std::set<long> chosen = {0, last - 1};
    if (count > 2) chosen.insert({1, 8, last - 6});
    for (long i = 1; i < count; ++i) chosen.insert(last * i / count);
    return chosen;
  }

  std::optional<Harness> harness{};
};

TEST_P(ConnectionTo, MayBeCutOrSlowAnywhere) {
  const char* const asked = std::getenv("KNOB_FAULT_RUNS");
  const long count = asked != nullptr ? std::atol(asked) : 2 * (harness->engine().calls - 1);
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

// At once, since each of them waits. What the import changes, the set changes too.
TEST_P(ConnectionTo, IsNotWaitedForWithoutEnd) {
  const std::vector<Command> commands = harness->commands();
  struct Place {
    const Command& command;
    Proxy::Direction direction;
    long after;
  };
  std::vector<Place> places;
  for (const Command& command : commands) {
    harness->learn(command);
    for (const auto direction : {Proxy::toServer, Proxy::toClient}) {
      for (const long after : positions(command, direction, harness->engine().calls)) {
        places.push_back({command, direction, after});
      }
    }
    harness->reset();
  }
  std::vector<std::thread> stalled;
  for (const Place& place : places) {
    stalled.emplace_back([&place, this] {
      const Proxy proxy(harness->engine().port, Proxy::Trouble::stall, place.direction,
                        place.after);
      const auto begin = Clock::now();
      const Outcome run = through(proxy, place.command).run();
      const std::string name = place.command.name + " " + std::to_string(place.direction) + " " +
                               std::to_string(place.after);
      EXPECT_GT(128, run.status) << name;
      const bool inJson = run.out.find("\"error\": ") != run.out.npos;
      EXPECT_TRUE(run.status == 0 || inJson || !run.err.empty()) << name;
      EXPECT_GT(kLongestRun, Clock::now() - begin) << name;
    });
  }
  for (std::thread& each : stalled) each.join();
  ASSERT_EQ("import", commands.back().name);
  harness->checkValues(commands.back(), "");
  harness->reset();
  harness->checkLaterRun(commands.back());
}

INSTANTIATE_TEST_SUITE_P(, ConnectionTo, testing::ValuesIn(engineKinds()),
                         [](const auto& row) { return row.param.name; });

}  // namespace
