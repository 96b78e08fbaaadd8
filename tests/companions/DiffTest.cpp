// Comparing servers and settings files: the program on real stores, and what it refuses to read.
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "diff/Side.h"
#include "support/Process.h"
#include "support/TempFolder.h"

namespace {

using nlohmann::json;
using Words = std::vector<std::string>;

// Two stores and their names.
const std::string kA = "file:a.db", kB = "file:b.db";

class Diff : public testing::Test {
 protected:
  Diff() {
    for (const Words& words : {Words{"25", "7", "-S", kA},
                               {"48", "4096", "-S", kA},
                               {"74", "two  blanks", "-S", kA},
                               {"15", "1", "-S", kB},
                               {"-O", "a.txt", "-S", kA},
                               {"-O", "a.json", "-S", kA, "-JSON"},
                               {"-O", "b.json", "-S", kB, "-JSON"}}) {
      EXPECT_EQ(0, run("", words).status);
    }
  }

  Outcome run(const char* companion, const Words& words, const std::string& out = "") const {
    Process process = knob(home.path(), words);
    process.arguments[0] += companion;
    process.folder = home.path();
    process.outTo = out;
    return process.run();
  }
  Outcome diff(const Words& words) const { return run("-diff", words); }

  TempFolder home;
};

TEST_F(Diff, TellsTheSameOfServersAndFilesInEitherForm) {
  const std::string table =
      "\n\nID  Setting                   A            B\n"
      "48  PAGE CACHE SIZE           4096         512\n"
      "15  CACHE REPLACEMENT POLICY  2            1\n"
      "25  LOCK WAIT LIMIT           7            20\n"
      "74  LISTENER ADDRESSES        two  blanks  \"\"\n";
  for (const std::string& a : Words{kA, "a.txt"}) {
    for (const std::string& b : Words{kB, "b.json"}) {
      const Outcome outcome = diff({a, b});
      EXPECT_EQ(1, outcome.status) << outcome.err;
      EXPECT_EQ("A: " + a + "\nB: " + b + table, outcome.out);
    }
  }
  writeFile(home / "marked", "\xEF\xBB\xBF" + readFile(home / "a.txt") + "\n# a comment\n");
  for (const Words& same : {Words{kA, "a.txt"}, {"b.json", kB}, {"marked", "a.json"}}) {
    const Outcome outcome = diff(same);
    EXPECT_EQ(0, outcome.status) << outcome.err;
    EXPECT_EQ("", outcome.out);
  }
  writeFile(home / "odd", "Setting ID: 74\nCurrent Value: a\x1b\u009b\u00db\n");
  EXPECT_NE(diff({"odd", kA}).out.find("  a??\u00db  "), std::string::npos);
}

TEST_F(Diff, ComparesWhatIsAskedFor) {
  writeFile(home / "short",
            "Setting ID: 25\nCurrent value:  7\r\nSETTING ID: 48\n\tCurrent Value: 9\n");
  writeFile(home / "ignored", "  page CACHE size # not this\n\n15\n");
  const std::pair<Words, std::vector<int>> cases[] = {
      {{"short", kA}, {48}},
      {{kA, kB, "--ignore", "ignored"}, {25, 74}},
      {{"--changed", kA}, {48, 25, 74}},
      {{"--changed", "b.json"}, {15}},
  };
  const auto told = [&](Words words) {
    words.emplace_back("-JSON");
    return json::parse(diff(words).out)["differences"];
  };
  for (const auto& [words, wanted] : cases) {
    std::vector<int> ids;
    for (const json& difference : told(words)) ids.push_back(difference["id"]);
    EXPECT_EQ(wanted, ids) << words[0];
  }
  const json all = told({"short", kA, "--all"});
  EXPECT_GT(all.size(), 100U);
  EXPECT_TRUE(all[1]["a"].is_null()) << all[1];
}

TEST_F(Diff, WritesASettingsFileThatTakesTheDifferencesAway) {
  const Outcome outcome = diff({"--settings", kA, kB});
  EXPECT_EQ(1, outcome.status);
  EXPECT_TRUE(outcome.err.starts_with("knob-diff: setting 74 (LISTENER ADDRESSES) is left out"))
      << outcome.err;
  writeFile(home / "written", outcome.out);
  EXPECT_EQ("", run("", {"-S", kB, "-I", "written"}).err);
  EXPECT_EQ(0, run("", {"-S", kB, "74", "two  blanks"}).status);
  EXPECT_EQ(0, diff({kA, kB}).status);
}

TEST_F(Diff, RefusesWhatCannotBeReadBeyondDoubt) {
  const std::string text = readFile(home / "a.txt"), inJson = readFile(home / "a.json");
  const auto withValue = [](std::string whole, const std::string& before, const std::string& by) {
    return whole.insert(whole.find(before) + before.size(), by);
  };
  const std::string value = "\"value\": \"", entry = "Setting ID: 25\nCurrent Value: 7\n";
  const std::pair<std::string, std::string> contents[] = {
      {text.substr(0, text.size() - 2), "the export ended early"},
      {withValue(text, "Value: 7\n", "\tx\n"), "holds a line break"},
      {entry + "ERROR! - 7306: damaged\n" + entry, "settings are missing"},
      {"Setting ID: 25\nSetting ID: 26\nCurrent Value: 7\n", "no value before the next id"},
      {"Setting ID: x5\nCurrent Value: 7\n", "an id is not a number"},
      {entry + "Setting ID: 26\n", "the last setting has no value"},
      {"nothing of the kind\n", "it holds no settings"},
      {withValue(inJson, value, "a\"b"), "not valid JSON"},
      {withValue(inJson, value, "a\", \"b\": \""), "has members that no setting has"},
      {"{}", "not an export"},
  };
  std::vector<std::pair<Words, std::string>> cases = {
      {{kA, "file:damaged"}, "file:damaged: 7307"},
      {{"absent", kA}, "absent: No such file"},
      {{kA}, "two servers or settings files are needed"},
      {{kA, kB, "--ignore", "absent"}, "absent: No such file"},
      {{"nowhere://x", kB}, "nowhere://x: 7104"},
  };
  writeFile(home / "damaged", "no store");
  for (const auto& [content, reason] : contents) {
    const std::string name = "content" + std::to_string(cases.size());
    writeFile(home / name, content);
    cases.push_back({{name, kA}, reason});
  }
  for (const auto& [words, reason] : cases) {
    const Outcome outcome = diff(words);
    EXPECT_EQ(2, outcome.status) << reason;
    EXPECT_EQ("", outcome.out);
    EXPECT_TRUE(outcome.err.starts_with("knob-diff: "));
    EXPECT_NE(outcome.err.find(reason), std::string::npos) << outcome.err;
    EXPECT_EQ(outcome.err.find('\n') + 1, outcome.err.size()) << outcome.err;
  }
  EXPECT_EQ(2, run("-diff", {kA, kB}, "/dev/full").status);
}

TEST(DiffSide, HandsPasswordsOnThroughTheEnvironmentAlone) {
  const struct {
    std::string name, server, variable, value;
    std::string shown{};  // if it is not the server
  } cases[] = {
      {"postgresql://u:p%40w@h/d", "postgresql://u@h/d", "PGPASSWORD", "p@w"},
      {"postgres://h/d?password=x&sslmode=off", "postgres://h/d?sslmode=off", "PGPASSWORD", "x"},
      {"postgres://h/d?password=x&a=b&pass%77ord=y", "postgres://h/d?a=b", "PGPASSWORD", "y"},
      {"postgres://u:p?w@h/d", "postgres://u@h/d", "PGPASSWORD", "p?w"},
      {"postgres://h/d?sslpassword=x&a=b", "postgres://h/d?sslpassword=x&a=b", "", "",
       "postgres://h/d?a=b"},
      {"postgres://u:p/w@h/d", "postgres://u:p/w@h/d", "", "", "postgres://u@h/d"},
      {"POSTGRES://u:p@h/d?PASSWORD=x", "POSTGRES://u@h/d", "", ""},
      {"etcds://u:p@[::1]:2379/x", "etcds://u@[::1]:2379/x", "ETCDCTL_PASSWORD", "p"},
      {"file:/a:b@c", "file:/a:b@c", "", ""},
      {"LocalHost", "LocalHost", "", ""},
      {"./localhost", "", "", ""},
  };
  for (const auto& test : cases) {
    const diff::Side side(test.name);
    EXPECT_EQ(test.server, side.server) << test.name;
    const std::string& unchanged = side.isServer() ? test.server : test.name;
    EXPECT_EQ(test.shown.empty() ? unchanged : test.shown, side.shown);
    const std::map<std::string, std::string> expected = {{test.variable, test.value}};
    EXPECT_EQ(test.variable.empty() ? decltype(expected){} : expected, side.environment);
  }
}

}  // namespace
