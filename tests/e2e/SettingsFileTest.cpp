// Exporting all settings of the local engine and importing them again, with the program as a
// process.
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "support/Process.h"
#include "support/TempFolder.h"

namespace {

using nlohmann::json;

const std::string kIdTag = "Setting ID:";
const std::string kValueTag = "Current Value:";

class SettingsFile : public testing::Test {
 protected:
  Outcome run(std::vector<std::string> arguments) const {
    return knob(home.path(), arguments).run();
  }

  std::string exported() const {
    const Outcome written = run({"-O", home / "export", "-F"});
    EXPECT_EQ(0, written.status);
    EXPECT_EQ("", written.err);
    return readFile(home / "export");
  }

  Outcome import(std::string const& content, std::vector<std::string> arguments = {}) const {
    writeFile(home / "import", content);
    arguments.insert(arguments.begin(), {"-I", home / "import"});
    return run(arguments);
  }

  // A settings file that changes every setting, to a value that is hard to carry where it can be.
  std::string awkwardSettings() const {
    run({"-O", home / "all.json", "-JSON"});
    std::string content;
    const json all = json::parse(readFile(home / "all.json"));
    for (json const& category : all["category_list"]) {
      for (json const& setting : category["settings_list"]) {
        content += kIdTag + " " + setting["id"].dump() + "\n" + kValueTag + " " +
                   awkwardValue(setting) + "\n";
      }
    }
    return content;
  }

  TempFolder home;

 private:
  static std::string awkwardValue(json const& setting) {
    const std::string value = setting["value"];
    json const& options = setting["options"];
    switch (setting["type"].get<int>()) {
      case 0:
        return options[options[0]["value"] == value ? 1 : 0]["value"];
      case 1: {
        const std::string most = setting["range"][0]["max_range"];
        const std::string least = setting["range"][0]["min_range"].dump();
        return most.find(' ') != most.npos ? "2147483647" : most != value ? most : least;
      }
      case 2:
        // A setting with a short default may take short values only.
        return value.size() < 12 ? "\\\"\xC3\xA9" : "\\n \xC3\xA9\xF0\x9F\x94\xA7\xFF \"%s\" ID:";
      case 3:
        return value == "0" ? "1" : "0";
      default: {
        std::string all;
        for (json const& option : options) all += option["index"].dump() + " ";
        all.pop_back();
        return all == value ? "0" : all;
      }
    }
  }
};

std::string replaced(std::string text, std::string const& from, std::string const& to) {
  for (std::size_t at = text.find(from); at != text.npos; at = text.find(from, at + to.size())) {
    text.replace(at, from.size(), to);
  }
  return text;
}

std::size_t occurrences(std::string const& text, std::string const& part) {
  std::size_t count = 0;
  for (std::size_t at = text.find(part); at != text.npos; at = text.find(part, at + 1)) ++count;
  return count;
}

TEST_F(SettingsFile, OfAnUntouchedEngineChangesNothing) {
  const std::string content = exported();
  EXPECT_TRUE(content.starts_with("==")) << content.substr(0, 200);
  EXPECT_TRUE(
      content.ends_with("\n\tThe settings were written to the file " + (home / "export") + ".\n"));
  const Outcome run = import(content);
  EXPECT_EQ(0, run.status);
  EXPECT_EQ("", run.err);
  EXPECT_TRUE(run.out.ends_with("\n\nThe settings of the file " + (home / "import") +
                                " were applied, except where a message says otherwise.\nChanges "
                                "that need a restart take effect when the "
                                "engine is started again.\n"))
      << run.out;
  EXPECT_FALSE(std::filesystem::exists(home / "state"));
}

TEST_F(SettingsFile, CarriesEveryValue) {
  const std::string defaults = exported();
  ASSERT_EQ("", import(awkwardSettings()).err);
  const std::string changed = exported();
  for (std::string const& line : {kIdTag, kValueTag}) {
    EXPECT_EQ(occurrences(defaults, line), occurrences(changed, line));
  }
  EXPECT_EQ(0U, occurrences(changed, "CHANGED SETTINGS: 0\n")) << "a category was not changed";

  const struct {
    char const* what;
    std::string content;
  } forms[] = {
      {"as it is", changed},
      {"with CRLF", replaced(changed, "\n", "\r\n")},
      {"indented and in other case", replaced(replaced(changed, "\t" + kIdTag, " \t  SETTING id:"),
                                              "\t" + kValueTag, "current VALUE:\t ")},
  };
  for (auto const& form : forms) {
    SCOPED_TRACE(form.what);
    ASSERT_EQ("", import(defaults).err);
    ASSERT_EQ(defaults, exported());
    ASSERT_EQ("", import(form.content).err);
    ASSERT_EQ(changed, exported());
  }
}

TEST_F(SettingsFile, IsWrittenAsJson) {
  // Without a question, although the file exists.
  writeFile(home / "all.json", "old");
  const Outcome written = run({"-O", home / "all.json", "-JSON"});
  EXPECT_EQ(0, written.status);
  EXPECT_EQ("", written.out + written.err);
  const std::string content = readFile(home / "all.json");
  EXPECT_TRUE(content.starts_with("\n{\n\t\"title\": \"Configuration Utility\",\n"));
  const json all = json::parse(content);
  const json lockWaitLimit = json::parse(run({"25", "-JSON"}).out);
  int found = 0;
  for (json const& category : all["category_list"]) {
    EXPECT_FALSE(category["settings_list"].empty());
    for (json const& setting : category["settings_list"]) {
      if (setting["id"] != 25) continue;
      ++found;
      EXPECT_EQ(lockWaitLimit["description"], setting["description"]);
      EXPECT_EQ("3600", setting["range"][0]["max_range"]);
    }
  }
  EXPECT_EQ(1, found);
}

TEST_F(SettingsFile, IsNotReplacedWithoutAYes) {
  const struct {
    char const* answer;
    bool replaced;
  } cases[] = {{"n\n", false}, {"yes\n", false}, {"", false}, {"\n\nY\n", true}};
  for (auto const& test : cases) {
    writeFile(home / "file", "mine");
    Process process = knob(home.path(), {"-O", home / "file"});
    process.input = test.answer;
    const Outcome outcome = process.run();
    EXPECT_EQ(0, outcome.status);
    EXPECT_EQ(test.replaced, readFile(home / "file") != "mine");
    EXPECT_EQ(!test.replaced, outcome.out.ends_with("The file was not written.\n"));
    EXPECT_EQ(*test.answer == '\0',
              outcome.out.find("\nThere was no answer in 25 lines; the next line decides.\n") !=
                  std::string::npos);
  }
}

TEST_F(SettingsFile, ArrivesWholeInASlowPipe) {
  const std::string content = exported();
  Process slow = knob(home.path(), {});
  slow.arguments = {"/bin/sh", "-c",
                    "'" + slow.arguments[0] + "' -O /dev/stdout -F | (sleep 1; cat)"};
  const std::string received = slow.run().out;
  const std::size_t body = received.find("==");
  ASSERT_NE(body, received.npos);
  EXPECT_EQ(content.substr(0, content.rfind('\t')),
            received.substr(body, received.rfind('\t') - body));
}

TEST_F(SettingsFile, ThatCannotBeWrittenIsAFailure) {
  writeFile(home / "file", "");
  std::filesystem::create_directory(home / "locked");
  const struct {
    std::string target;
    int status;
    std::string said;
    uid_t user = 0;
    long limit = -1;
  } cases[] = {
      {"/dev/full", 28, "0x8007011C"},
      {home / "short", 27, "0x8007011B", 0, 5000},
      {home.path(), 21, "0x80070115"},
      {home / "file/below", 17, "0x80070111"},
      {home / "locked/file", 1,
       "/locked/file cannot be created: access is denied (status 0x80070005).", kNobody},
      {home / "locked/folder/file", 1, "access is denied", kNobody},
  };
  for (auto const& test : cases) {
    for (bool const inJson : {false, true}) {
      Process process = knob(home.path(), {"-O", test.target, "-F"});
      if (inJson) process.arguments.push_back("-JSON");
      process.user = test.user;
      process.fileLimit = test.limit;
      const Outcome outcome = process.run();
      SCOPED_TRACE(test.target);
      EXPECT_EQ(test.status, outcome.status);
      const std::string said = inJson && test.status == 1 ? outcome.out : outcome.err;
      EXPECT_NE(said.find(test.said), said.npos) << said;
    }
  }
}

TEST_F(SettingsFile, ThatIsNoneIsTakenForWhatItHolds) {
  const std::string good = kIdTag + " 25\n" + kValueTag + " 5\n";
  const std::string noValue =
      "Setting 25 was not changed, because the file holds no value for it.\n";
  const std::string ended =
      "Reading the file " + (home / "import") +
      " ended there. The settings before were applied; with -E the import goes "
      "on.\n\n";
  const std::string empty = kIdTag + "25\n" + kValueTag + " \t\n";
  const std::string wrong = kIdTag + " 9999\n" + kValueTag + " 1\n" + kIdTag + " 26\n" + kValueTag +
                            " x\n" + kIdTag + " 25\n" + kValueTag + " 3601\n";
  const std::string wrongSaid =
      "There is no setting with this id, or it is not available on this engine. Search for its "
      "name "
      "with -H to find its id. (Setting 9999 was not changed.)\n"
      "Setting 26 was not changed, because its value in the file is not a number.\n"
      "7202: The value is outside the range of the setting. Show the setting by its id to see the "
      "range. (Setting 25 was not changed.)\n";
  const struct {
    std::string content;
    std::string err;
    bool applied;  // whether 25 has the value 5 then
    std::vector<std::string> arguments{};
  } cases[] = {
      {"", "", false},
      {std::string("\0\x80\xFF\n\0\0\n", 7) + good, "", true},
      {"no end of line", "", false},
      {kIdTag + " abc\n" + kValueTag + " 1\n" + good,
       "A setting was skipped, because its id is not a number: abc\n", true},
      {kIdTag + " 25\n" + kIdTag + " 28\n" + kValueTag + " 5\n", "", true},
      {kIdTag + " 25", noValue, false},
      {empty + good, noValue + ended, false},
      {empty + good, noValue, true, {"-E"}},
      {kIdTag + "74\n" + kValueTag + "\n" + good, "", true},
      {std::string("Setting ID: 74\nCurrent Value: a\0b\n", 34) + good,
       "7207: The value holds a line end or another control character, which a settings file could "
       "not "
       "carry. Only the tab is allowed. (Setting 74 was not changed.)\n",
       true},
      {wrong + good, wrongSaid, true},
      {wrong + good, wrongSaid, true, {"-E"}},
      {std::string(5000000, 'x') + "\n" + good, "", true},
      {kIdTag + "74\n" + kValueTag + std::string(5000000, 'x') + "\n" + good,
       "7201: The value is longer than the setting allows, or than 1,023 bytes. (Setting 74 was "
       "not "
       "changed.)\n",
       true},
  };
  for (auto const& test : cases) {
    ASSERT_EQ(0, run({"25", "20"}).status);
    const Outcome outcome = import(test.content, test.arguments);
    SCOPED_TRACE(test.content.substr(0, 80));
    EXPECT_EQ(0, outcome.status);
    EXPECT_EQ(test.err, outcome.err);
    EXPECT_NE(outcome.out.find(" were applied, except"), std::string::npos);
    EXPECT_EQ(test.applied,
              exported().find("\tSetting ID: 25\n\tCurrent Value: 5\n") != std::string::npos);
  }
}

TEST_F(SettingsFile, ThatCannotBeReadIsAFailure) {
  writeFile(home / "locked", "");
  std::filesystem::permissions(home / "locked", std::filesystem::perms{0});
  const struct {
    std::string source;
    int status;
    std::string said;
  } cases[] = {
      {home / "missing", 1,
       "/missing cannot be read: the file or a folder on its path does not exist (status "
       "0x80070002).\n"},
      {home / "locked", 1, "/locked cannot be read: access is denied (status 0x80070005).\n"},
      {home.path(), 21, "0x80070115"},
  };
  for (auto const& test : cases) {
    Process process = knob(home.path(), {"-I", test.source});
    process.user = kNobody;
    const Outcome outcome = process.run();
    EXPECT_EQ(test.status, outcome.status);
    EXPECT_NE(outcome.err.find(test.said), std::string::npos) << outcome.err;
    EXPECT_EQ(std::string::npos, outcome.out.find("applied"));
  }
}

TEST_F(SettingsFile, WhoseImportIsKilledIsAppliedUpToThere) {
  constexpr std::size_t kApplied = 40;
  const std::string defaults = exported();
  const std::string content = awkwardSettings();
  writeFile(home / "import", content);
  Process killed = knob(home.path(), {"-I", home / "import"});
  killed.environment["LD_PRELOAD"] = KNOB_RECORDER_PRELOAD;
  killed.environment["TN_KILL_BEFORE_SET"] = std::to_string(kApplied + 1);
  EXPECT_EQ(128 + 9, killed.run().status);

  const std::string partly = exported();
  std::size_t changed = 0;
  for (std::size_t at = 0; (at = partly.find("CHANGED SETTINGS: ", at)) != partly.npos; ++at) {
    changed += std::stoul(partly.substr(at + 18));
  }
  EXPECT_EQ(kApplied, changed);
  ASSERT_EQ("", import(content).err);
  const std::string whole = exported();
  ASSERT_EQ("", import(defaults).err);
  ASSERT_EQ("", import(content).err);
  EXPECT_EQ(whole, exported());
}

}  // namespace
