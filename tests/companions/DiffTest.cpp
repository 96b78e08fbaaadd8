// Comparing servers and settings files: the program on real stores, and what it refuses to read.
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "diff/Side.h"
#include "support/Process.h"
#include "support/TempFolder.h"

namespace {

class Diff : public testing::Test {
 protected:
  Diff() {
    set("a", "25", "7");
    set("a", "48", "4096");
    set("a", "74", "two  blanks");
    set("b", "15", "1");
  }

  static std::string store(const std::string& name) { return "file:" + name + ".db"; }
  Outcome knobRun(std::vector<std::string> arguments) const {
    return process(std::move(arguments), "").run();
  }
  void set(const std::string& name, const std::string& id, const std::string& value) const {
    EXPECT_EQ(0, knobRun({"-S", store(name), id, value}).status);
  }
  std::string exported(const std::string& name, std::vector<std::string> options = {}) const {
    std::string path = name + ".export";
    options.insert(options.end(), {"-S", store(name), "-F", "-O", path});
    EXPECT_EQ(0, knobRun(std::move(options)).status);
    return path;
  }
  std::string file(const std::string& content) const {
    writeFile(home / "written", content);
    return "written";
  }
  Process process(std::vector<std::string> arguments, const char* companion = "-diff") const {
    Process process = knob(home.path(), std::move(arguments));
    process.arguments[0] += companion;
    process.folder = home.path();
    return process;
  }
  Outcome diff(std::vector<std::string> arguments) const {
    return process(std::move(arguments)).run();
  }

  TempFolder home;
};

TEST_F(Diff, TellsTheSameOfServersAndFilesInEitherForm) {
  const std::string table =
      "\n\nID  Setting                   A            B\n"
      "48  PAGE CACHE SIZE           4096         512\n"
      "15  CACHE REPLACEMENT POLICY  2            1\n"
      "25  LOCK WAIT LIMIT           7            20\n"
      "74  LISTENER ADDRESSES        two  blanks  \"\"\n";
  const std::string text = exported("a"), other = "b.json";
  EXPECT_EQ(0, knobRun({"-S", store("b"), "-O", other, "-JSON"}).status);
  for (const std::string& a : {store("a"), text}) {
    for (const std::string& b : {store("b"), other}) {
      const Outcome run = diff({a, b});
      EXPECT_EQ(1, run.status) << run.err;
      EXPECT_EQ("A: " + a + "\nB: " + b + table, run.out);
    }
  }
  writeFile(home / "marked", "\xEF\xBB\xBF" + readFile(home / text) + "\n# a comment\n");
  for (const auto& same : {std::vector{store("a"), text}, std::vector{other, store("b")},
                           std::vector<std::string>{"marked", text}}) {
    const Outcome run = diff(same);
    EXPECT_EQ(0, run.status) << run.err;
    EXPECT_EQ("", run.out);
  }
  const std::string odd = file(
      "Setting ID: 74\nCurrent Value: a\x1b\xc2\x9b"
      "b\xc3\x9b\n");
  EXPECT_NE(diff({odd, store("a")}).out.find("  a??b\xc3\x9b  "), std::string::npos);
}

TEST_F(Diff, ComparesWhatIsAskedFor) {
  const std::string shortFile =
      file("Setting ID: 25\nCurrent value:  7\r\nSETTING ID: 48\n\tCurrent Value: 9\n");
  writeFile(home / "ignored", "  page CACHE size # not this\n\n15\n");
  const struct {
    std::vector<std::string> arguments;
    std::vector<int> ids;
  } cases[] = {
      {{shortFile, store("a")}, {48}},
      {{store("a"), shortFile}, {48}},
      {{store("a"), store("b"), "--ignore", "ignored"}, {25, 74}},
      {{"--changed", store("a")}, {48, 25, 74}},
      {{"--changed", exported("b", {"-JSON"})}, {15}},
  };
  for (const auto& test : cases) {
    std::vector<std::string> arguments = test.arguments;
    arguments.emplace_back("-JSON");
    std::vector<int> ids;
    const auto told = nlohmann::json::parse(diff(arguments).out);
    for (const auto& difference : told["differences"]) {
      ids.push_back(difference["id"]);
    }
    EXPECT_EQ(test.ids, ids) << test.arguments[0];
  }
  const auto all = nlohmann::json::parse(diff({shortFile, store("a"), "--all", "-JSON"}).out);
  EXPECT_GT(all["differences"].size(), 100U);
  EXPECT_TRUE(all["differences"][1]["a"].is_null()) << all["differences"][1];
}

TEST_F(Diff, WritesASettingsFileThatTakesTheDifferencesAway) {
  const Outcome run = diff({"--settings", store("a"), store("b")});
  EXPECT_EQ(1, run.status);
  EXPECT_TRUE(run.err.starts_with("knob-diff: setting 74 (LISTENER ADDRESSES) is left out"))
      << run.err;
  EXPECT_EQ("", knobRun({"-S", store("b"), "-I", file(run.out)}).err);
  set("b", "74", "two  blanks");
  EXPECT_EQ(0, diff({store("a"), store("b")}).status);
}

TEST_F(Diff, RefusesWhatCannotBeReadBeyondDoubt) {
  const std::string text = readFile(home / exported("a"));
  std::string json = readFile(home / exported("a", {"-JSON"}));
  const std::size_t value = json.find("\"value\": \"") + 10;
  const std::string entry = "Setting ID: 25\nCurrent Value: 7\n";
  const struct {
    std::string content;
    std::string reason;
  } cases[] = {
      {text.substr(0, text.size() - 2), "the export ended early"},
      {text.substr(0, text.size() / 2), "the export ended early"},
      {std::string(text).replace(text.find("Value: 7\n"), 9, "Value: 7\nx\n"),
       "holds a line break"},
      {std::string(text).replace(text.find("Value: 7\n"), 9, "Value: 7\n\tx\n"),
       "holds a line break"},
      {entry + "ERROR! - 7306: damaged\n" + entry, "settings are missing"},
      {"Setting ID: 25\nSetting ID: 26\nCurrent Value: 7\n", "no value before the next id"},
      {"Setting ID: x5\nCurrent Value: 7\n", "an id is not a number"},
      {entry + "Setting ID: 26\n", "the last setting has no value"},
      {"nothing of the kind\n", "it holds no settings"},
      {"", "it is empty"},
      {json.substr(0, json.size() - 3), "not valid JSON"},
      {std::string(json).insert(value, "a\"b"), "not valid JSON"},
      {std::string(json).insert(value, "a\", \"b\": \""), "has members that no setting has"},
      {std::string(json).insert(value, "\xff"), "not valid JSON"},
      {"{\"category_list\": 5}", "not an export"},
      {"{}", "not an export"},
  };
  for (const auto& test : cases) {
    const Outcome run = diff({file(test.content), store("a")});
    EXPECT_EQ(2, run.status) << test.reason;
    EXPECT_EQ("", run.out);
    EXPECT_NE(run.err.find(test.reason), std::string::npos) << run.err;
    EXPECT_EQ(run.err.find('\n') + 1, run.err.size()) << "more than one line: " << run.err;
  }
}

TEST_F(Diff, ReportsTroubleWithTheSideThatHasIt) {
  writeFile(home / "damaged.db", "no store");
  const struct {
    std::vector<std::string> arguments;
    std::string reason;
  } cases[] = {
      {{store("a"), store("damaged")}, store("damaged") + ": 7307"},
      {{"absent", store("a")}, "absent: No such file"},
      {{".", store("a")}, ".: Is a directory"},
      {{store("a")}, "two servers or settings files are needed"},
      {{"--changed", store("a"), store("b")}, "--changed takes one"},
      {{store("a"), store("b"), "--most"}, "unknown option: --most"},
      {{store("a"), store("b"), "--ignore"}, "the option --ignore needs a value"},
      {{store("a"), store("b"), "--ignore", "absent"}, "absent: No such file"},
      {{"nowhere://x", store("b")}, "nowhere://x: 7104"},
      {{"", store("b")}, "a server or a file is named by an empty text"},
  };
  for (const auto& test : cases) {
    const Outcome run = diff(test.arguments);
    EXPECT_EQ(2, run.status) << test.reason;
    EXPECT_NE(run.err.find("knob-diff: " + test.reason), std::string::npos) << run.err;
  }
  Process full = process({store("a"), store("b")});
  full.outTo = "/dev/full";
  EXPECT_EQ(2, full.run().status);
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
      {"post_gres://u:p@h", "post_gres://u@h", "", ""},
      {"postgresql://u@h:5432,i:5433/d", "postgresql://u@h:5432,i:5433/d", "", ""},
      {"postgresql://h/d?a=b&password=", "postgresql://h/d?a=b", "PGPASSWORD", ""},
      {"etcds://u:p@[::1]:2379/x", "etcds://u@[::1]:2379/x", "ETCDCTL_PASSWORD", "p"},
      {"file:/a:b@c", "file:/a:b@c", "", ""},
      {"LocalHost", "LocalHost", "", ""},
      {"./localhost", "", "", ""},
      {"./file:x", "", "", ""},
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
