// Every command with memory running out: it ends by itself, says so, closes the connection once,
// and leaves each setting with its old or its new value.
#include <algorithm>
#include <gtest/gtest.h>
#include <map>
#include <regex>
#include <sstream>

#include "support/Process.h"
#include "support/TempFolder.h"

namespace {

namespace fs = std::filesystem;
using Values = std::vector<std::string>;

class Memory : public testing::Test {
 protected:
  Process program(std::vector<std::string> const& arguments) const {
    return knob(home.path(), arguments);
  }

  // The values of all settings as a later run finds them.
  Values values() const {
    EXPECT_EQ("", program({"-O", home / "values", "-F"}).run().err);
    Values found;
    std::istringstream lines(readFile(home / "values"));
    for (std::string line; std::getline(lines, line);) {
      if (line.starts_with("\tCurrent Value:")) found.push_back(line);
    }
    return found;
  }

  // The same, found out once for each content that the store ever had.
  Values const& valuesOfStore() {
    std::string state = readFile(store);
    for (auto const& file : fs::directory_iterator(folder)) state += file.path();
    const auto [known, isNew] = valuesOf.try_emplace(state);
    if (isNew) known->second = values();
    return known->second;
  }

  void resetStore() const {
    for (auto const& file : fs::directory_iterator(folder)) {
      if (file.path() != store) fs::remove(file);
    }
    writeFile(store, before);
  }

  Outcome runWith(std::string const& fault, std::vector<std::string> const& arguments) const {
    Process process = program(arguments);
    process.environment["LD_PRELOAD"] = KNOB_FAULT_PRELOAD;
    process.environment["FAULT"] = fault;
    process.environment["FAULT_COUNT"] = home / "count";
    process.environment["TN_RECORD"] = home / "record";
    fs::remove(home / "record");
    return process.run();
  }

  void check(Outcome const& run, Values const& old, Values const& wanted) {
    static const std::regex kClosedOnce(
        "(TnStart (TnConnectServer (refused |(Tn[GIS]\\w+ )*TnDisconnect ))?"
        "TnStop )?");
    const bool told = run.err != "" || run.out.find("\"error\": ") != std::string::npos;
    EXPECT_TRUE(run.status == 0 || ((run.status == 1 || run.status == 14) && told))
        << run.status << run.out << run.err;
    std::string calls = readFile(home / "record");
    std::replace(calls.begin(), calls.end(), '\n', ' ');
    if (run.err.find("Out of memory") == std::string::npos) {
      EXPECT_TRUE(std::regex_match(calls, kClosedOnce)) << calls;
    }
    Values const& found = valuesOfStore();
    ASSERT_EQ(found.size(), old.size());
    for (std::size_t i = 0; i < found.size(); ++i) {
      EXPECT_TRUE(found[i] == old[i] || found[i] == wanted[i]) << found[i];
    }
    EXPECT_TRUE(run.out.find(" was updated.") == std::string::npos || found == wanted);
  }

  // One allocation of the command failing alone, every stride-th of them in turn, and a third as
  // often all from one on.
  void sweep(std::vector<std::string> const& arguments, long stride) {
    const Values old = valuesOfStore();
    const Outcome unharmed = runWith("malloc:0", arguments);
    EXPECT_EQ(0, unharmed.status);
    const long count = std::stol(readFile(home / "count"));
    const Values wanted = valuesOfStore();
    for (auto const& [rest, step] : {std::pair{"", stride}, std::pair{"+", 3 * stride}}) {
      for (long n = 1; n <= count; n += step) {
        resetStore();
        const std::string fault = "malloc:" + std::to_string(n) + rest;
        SCOPED_TRACE(testing::PrintToString(arguments) + fault);
        check(runWith(fault, arguments), old, wanted);
      }
    }
  }

  void SetUp() override {
    ASSERT_EQ("", program({"25", "7"}).run().err);
    before = readFile(store);
  }

  const TempFolder home;
  const std::string folder = home / "state/knob";
  const std::string store = folder + "/settings.db";
  std::string before;
  std::map<std::string, Values> valuesOf;
};

TEST_F(Memory, RunsOutInAShow) { sweep({"25"}, 2); }
TEST_F(Memory, RunsOutInASet) { sweep({"25", "9"}, 5); }
TEST_F(Memory, RunsOutInASearch) { sweep({"-H", "e", "-JSON"}, 31); }
TEST_F(Memory, RunsOutInAnExport) {
  sweep({"-O", home / "export", "-F"}, 307);
  sweep({"-O", home / "export", "-JSON"}, 401);
}

TEST_F(Memory, RunsOutInAnImport) {
  std::string changes;
  for (const int id :
       {6, 7, 8, 9, 10, 13, 16, 28, 29, 30, 31, 32, 48, 49, 57, 64, 66, 179, 201, 204}) {
    changes += "Setting ID: " + std::to_string(id) + "\nCurrent Value: 64\n";
  }
  writeFile(home / "import", changes);
  sweep({"-I", home / "import"}, 61);
}

}  // namespace
