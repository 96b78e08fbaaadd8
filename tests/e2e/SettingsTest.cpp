// Showing, setting and searching settings of the local engine, with the program as a process.
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "support/Process.h"
#include "support/TempFolder.h"

namespace {

using nlohmann::json;

TEST(Settings, AreValidJsonWithoutException) {
  TempFolder home;
  std::map<std::string, int> shown;  // on each side
  for (int id = 1; id <= 301; ++id) {
    const Outcome run = knob(home.path(), {std::to_string(id), "-JSON"}).run();
    const json setting = json::parse(run.out);
    if (run.status != 0) {
      EXPECT_NE(setting["error"].get<std::string>().find("Unknown setting ID"), std::string::npos);
      continue;
    }
    ++shown[setting["clientserver"]];
    EXPECT_EQ(id, setting["id"]);
    EXPECT_EQ(setting["default_values"], setting["value"]);
    const int type = setting["type"];
    EXPECT_EQ(type == 1, setting["range"].size() == 1);
    EXPECT_EQ(type == 1 || type == 2, setting["options"].empty());
  }
  EXPECT_TRUE(shown["Server"] > 130 && shown["Client"] >= 5) << shown["Client"];
  EXPECT_FALSE(std::filesystem::exists(home / "state")) << "reading created something";
}

TEST(Settings, TakeAndRefuseValues) {
  TempFolder home;
  const std::string invalid =
      "Invalid command: wrong combination of arguments, or an ID or value that is not a number or "
      "is out of range.";
  const struct {
    std::string id, value;
    std::string failure;  // the beginning of what is said; empty: the value is taken
  } cases[] = {
      {"25", "9223372036854775808", invalid},
      {"25", "", invalid},
      {"9999", "1", "Unknown setting ID"},
      {"4294967321", "11", ""},  // the low 32 bits are 25
      {"74", "", ""},
      {"74", std::string("\xF0\x9F\x94\xA7 \xC3\xA9\t\x80\xFF"), ""},
      {"74", std::string(1024, 'x'), "7201: "},
  };
  for (const auto& test : cases) {
    SCOPED_TRACE(test.id + "=" + test.value.substr(0, 20));
    const std::string before = knob(home.path(), {test.id}).run().out;
    const Outcome run = knob(home.path(), {test.id, test.value}).run();
    const std::string after = knob(home.path(), {test.id}).run().out;
    EXPECT_EQ(test.failure.empty() ? 0 : 1, run.status);
    if (test.failure.empty()) {
      EXPECT_EQ("", run.err);
      EXPECT_NE(after.find("\tCurrent Value: " + test.value + "\n"), std::string::npos) << after;
    } else {
      EXPECT_TRUE(run.err.starts_with(test.failure)) << run.err;
      EXPECT_EQ(before, after);
    }
  }
}

TEST(Settings, AreFoundByAPartOfTheirNames) {
  TempFolder home;
  const auto found = [&](const char* keyword) {
    return json::parse(knob(home.path(), {"-H", keyword, "-JSON"}).run().out)["search_output"];
  };
  const Outcome text = knob(home.path(), {"-H", "lock WAIT l"}).run();
  EXPECT_TRUE(
      text.out.ends_with("\n\nSettings whose names contain \"lock WAIT l\":\n\n"
                         "ID\tSetting\n---------------------\n25\tLock Wait Limit\n"))
      << text.out;
  EXPECT_EQ(json::parse(R"([{"ID": 25, "Setting": "Lock Wait Limit"}])"), found("lock WAIT l"));
  EXPECT_EQ("No matches found for \"Single Sign-On\" setting", found("Single Sign-On"));
  EXPECT_GT(found("e").size(), 100U);
}

TEST(Settings, LieInTheUsersStateFolder) {
  TempFolder root;
  const struct {
    std::string home, state, folder;
  } cases[] = {{root / "a", "", root / "a/.local/state/knob"},
               {root / "b", "state", root / "b/.local/state/knob"},
               {"", root / "c", root / "c/knob"}};
  for (const auto& [home, state, folder] : cases) {
    Process process = knob("", {"25", "5"});
    process.environment = {{"HOME", home}, {"XDG_STATE_HOME", state}};
    EXPECT_EQ("", process.run().err);
    EXPECT_TRUE(std::filesystem::is_regular_file(folder + "/settings.db")) << folder;
    EXPECT_EQ(std::filesystem::perms{0700}, std::filesystem::status(folder).permissions());
  }
}

}  // namespace
