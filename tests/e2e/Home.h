// The program in a home of its own.
#ifndef KNOB_TESTS_E2E_HOME_H
#define KNOB_TESTS_E2E_HOME_H

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "support/Process.h"
#include "support/TempFolder.h"

using nlohmann::json;
using Words = std::vector<std::string>;

class Home : public testing::Test {
 protected:
  Outcome run(const Words& arguments) const { return knob(home.path(), arguments).run(); }
  json inJson(const Words& arguments) const {
    Process process = knob(home.path(), arguments);
    process.arguments.emplace_back("-JSON");
    return json::parse(process.run().out);
  }
  // With support/TnDouble.cpp in front of the library; its records are the file of the home.
  Outcome recorded(const Words& arguments, const std::string& answer = "none=") const {
    std::filesystem::remove(home / "calls");
    Process process = knob(home.path(), arguments);
    process.environment.insert({{"LD_PRELOAD", KNOB_DOUBLE_PRELOAD},
                                {"TN_ANSWER", answer},
                                {"TN_RECORD", home / "calls"},
                                {"TN_RECORD_ARGUMENTS", home / "arguments"}});
    return process.run();
  }

  TempFolder home;
};

#endif
