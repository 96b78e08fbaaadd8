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
    const Outcome written = run({"-O", home / "new//folder/export", "-F"});
    EXPECT_EQ(0, written.status);
    EXPECT_EQ("", written.err);
    return readFile(home / "new/folder/export");
  }

  Outcome import(const std::string& content, std::vector<std::string> arguments = {}) const {
    writeFile(home / "import", content);
    arguments.insert(arguments.begin(), {"-I", home / "import"});
    return run(arguments);
  }

  // A settings file that changes every setting, to a value that is hard to carry where it can be.
  std::string awkwardSettings() const {
    writeFile(home / "all.json", "replaced without a question");
    const Outcome written = run({"-O", home / "all.json", "-JSON"});
    EXPECT_EQ("", written.out + written.err);
    std::string content;
    const json all = json::parse(readFile(home / "all.json"));
    for (const json& category : all["category_list"]) {
      for (const json& setting : category["settings_list"]) {
        content += kIdTag + " " + setting["id"].dump() + "\n" + kValueTag + " " +
                   awkwardValue(setting) + "\n";
      }
    }
    return content;
  }

  TempFolder home;

 private:
  static std::string awkwardValue(const json& setting) {
    const std::string value = setting["value"];
    const json& options = setting["options"];
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
        for (const json& option : options) all += option["index"].dump() + " ";
        all.pop_back();
        return all == value ? "0" : all;
      }
    }
  }
};

std::string replaced(std::string text, const std::string& from, const std::string& to) {
  for (std::size_t at = 0; (at = text.find(from, at)) != text.npos; at += to.size()) {
    text.replace(at, from.size(), to);
  }
  return text;
}

TEST_F(SettingsFile, OfAnUntouchedEngineChangesNothing) {
  const std::string content = exported();
  const std::string rule(39, '=');
  EXPECT_NE(content.find("\n" + rule + "\nCATEGORY 7: LOCKING\tCHANGED SETTINGS: 0\n" + rule +
                         "\nNumber of settings: 8\n"
                         "===============\nLOCK WAIT LIMIT\n===============\n"
                         "\tSetting ID: 25\n\tCurrent Value: 20\n\tRange: 0 to 3600\n"
                         "\tDefault Value: 20\n\tDescription (server setting): Seconds"),
            content.npos);
  EXPECT_TRUE(
      content.ends_with("\n\tSettings exported to " + (home / "new//folder/export") + ".\n"));
  const Outcome run = import(content);
  EXPECT_EQ(0, run.status);
  EXPECT_EQ("", run.err);
  EXPECT_TRUE(
      run.out.ends_with("\n\nImport of " + (home / "import") +
                        " finished. Settings that were not applied are reported on standard "
                        "error.\nChanges that require a restart take effect when the engine is "
                        "restarted.\n"))
      << run.out;
  EXPECT_FALSE(std::filesystem::exists(home / "state"));
}

TEST_F(SettingsFile, CarriesEveryValue) {
  const std::string defaults = exported();
  ASSERT_EQ("", import(awkwardSettings()).err);
  const std::string changed = exported();
  EXPECT_EQ(changed.npos, changed.find("CHANGED SETTINGS: 0\n")) << "a category was not changed";
  EXPECT_NE(changed.npos, changed.find("3600\n\tRange: 0 to 3600\n\tDefault Value: 20\n"));
  const std::string forms[] = {changed, replaced(changed, "\n", "\r\n"),
                               // Indented by a person, and in other case.
                               replaced(replaced(changed, "\t" + kIdTag, " \t  SETTING id:"),
                                        "\t" + kValueTag, "current VALUE:\t ")};
  for (const std::string& form : forms) {
    ASSERT_EQ("", import(defaults).err);
    ASSERT_EQ(defaults, exported());
    ASSERT_EQ("", import(form).err);
    ASSERT_EQ(changed, exported());
  }
}

TEST_F(SettingsFile, StaysWhenTheStoreCannotBeRead) {
  writeFile(home / "bad.db", "no store");
  writeFile(home / "out", "good");
  const Outcome failed = run({"-O", home / "out", "-F", "-S", "file:" + (home / "bad.db")});
  EXPECT_EQ(1, failed.status);
  EXPECT_TRUE(failed.err.starts_with("7307: ")) << failed.err;
  EXPECT_EQ("good", readFile(home / "out"));
}

TEST_F(SettingsFile, IsNotReplacedWithoutAYes) {
  const struct {
    std::string answer;
    bool replaced;
    bool warned = false;
  } cases[] = {{"n\n", false},
               {" y\n", false},
               {"", false, true},
               {"\n\nY\n", true},
               {std::string(24, '\n') + "y", true},
               {std::string(25, '\n') + "y", true, true},
               {std::string(26, '\n') + "y", false, true}};
  for (const auto& test : cases) {
    writeFile(home / "file", "mine");
    Process process = knob(home.path(), {"-O", home / "file"});
    process.input = test.answer;
    const Outcome outcome = process.run();
    EXPECT_EQ(0, outcome.status);
    EXPECT_EQ(test.replaced, readFile(home / "file") != "mine");
    EXPECT_EQ(!test.replaced,
              outcome.out.ends_with("Export canceled. The file was not changed.\n"));
    EXPECT_EQ(
        test.warned,
        outcome.out.find("\nNo answer after 25 lines. The next line is the last attempt.\n") !=
            std::string::npos);
  }
  Process endless = knob(home.path(), {});
  endless.arguments = {"/bin/sh", "-c",
                       "ulimit -v " KNOB_MEMORY_LIMIT "; '" + endless.arguments[0] + "' -O '" +
                           home / "file" + "' </dev/zero"};
  EXPECT_EQ(0, endless.run().status);
  EXPECT_EQ("mine", readFile(home / "file"));
}

TEST_F(SettingsFile, ArrivesWholeInASlowPipe) {
  const std::string content = exported();
  Process slow = knob(home.path(), {});
  slow.arguments = {"/bin/sh", "-c",
                    "'" + slow.arguments[0] + "' -O /dev/stdout -F | (sleep 0.3; cat)"};
  const std::string received = slow.run().out;
  EXPECT_EQ(content.substr(0, content.rfind('\t')),
            received.substr(received.find("=="), content.rfind('\t')));
}

TEST_F(SettingsFile, ThatCannotBeWrittenOrReadIsAFailure) {
  std::filesystem::create_directory(home / "locked");
  std::filesystem::permissions(home / "locked", std::filesystem::perms{0555});
  writeFile(home / "secret", "");
  std::filesystem::permissions(home / "secret", std::filesystem::perms{0});
  const std::string denied = "permission denied (status 0x80070005).\n";
  const struct {
    std::vector<std::string> arguments;
    int status;
    std::string said;
    uid_t user = 0;
    long limit = -1;
  } cases[] = {
      {{"-O", "/dev/full", "-F"}, 28, "0x8007011C"},
      {{"-O", "/dev/full", "-F", "-JSON"}, 28, "0x8007011C"},
      {{"-O", "new/folder/short"}, 27, "0x8007011B", 0, 5000},
      {{"-O", home.path(), "-F"}, 21, "0x80070115"},
      // A bare name is told with its folder.
      {{"-O", "bare"}, 1, "Cannot create file " + (home / "locked/bare: ") + denied, kNobody},
      {{"-O", home / "locked/folder/new"}, 1, denied, kNobody},
      {{"-I", home / "missing"},
       1,
       "Cannot read file " + (home / "missing: ") +
           "no such file or directory (status 0x80070002).\n"},
      {{"-I", home / "secret"}, 1, "/secret: " + denied, kNobody},
      {{"-I", home.path()}, 21, "0x80070115"},
  };
  for (const auto& test : cases) {
    Process process = knob(home.path(), test.arguments);
    process.folder = test.user == 0 ? home.path() : home / "locked";
    process.user = test.user;
    process.fileLimit = test.limit;
    const Outcome outcome = process.run();
    SCOPED_TRACE(testing::PrintToString(test.arguments));
    EXPECT_EQ(test.status, outcome.status);
    EXPECT_NE(outcome.err.find(test.said), std::string::npos) << outcome.err;
    EXPECT_EQ(std::string::npos, outcome.out.find("applied"));
  }
}

TEST_F(SettingsFile, DoesNotReplaceTheStoreThatItIsReadFrom) {
  ASSERT_EQ("", run({"25", "5", "-S", "file:" + (home / "store")}).err);
  const std::string store = readFile(home / "store");
  std::filesystem::create_symlink("store", home / "link");
  const Outcome outcome = run({"-O", home / "link", "-F", "-S", "file:" + (home / "store")});
  EXPECT_EQ(1, outcome.status);
  EXPECT_NE(outcome.err.find("/link: knob has this file open"), std::string::npos);
  EXPECT_EQ(store, readFile(home / "store"));
}

TEST_F(SettingsFile, ThatIsNoneIsTakenForWhatItHolds) {
  const auto setting = [](const std::string& id, const std::string& value) {
    return kIdTag + id + "\n" + kValueTag + value + "\n";
  };
  // What is said of a value that the engine refuses.
  const auto refused = [this](const std::string& id, const std::string& value) {
    const std::string reason = run({id, value}).err;
    return reason.substr(0, reason.find('\n')) + " (Setting " + id + ")\n";
  };
  const std::string good = setting("25", "5");
  const std::string noValue = "Setting 25 was not changed: the file has no value for it.\n";
  const std::string ended = "Import of " + (home / "import") +
                            " stopped here; earlier settings were applied. Use -E to continue past "
                            "missing values.\n\n";
  const std::string empty = setting("25", " \t");
  const std::string wrong = setting("9999", "1") + setting("26", "x") + setting("25", "3601");
  const std::string wrongSaid =
      refused("9999", "1") +
      "Setting 26 was not changed: its value in the file is not a number or is out of range.\n" +
      refused("25", "3601");
  const std::string blanks = std::string(70000, ' ') + "\t ";
  const std::string tooLong = refused("74", std::string(1024, 'x'));
  const struct {
    std::string content;
    std::string err;
    bool applied;  // whether 25 has the value 5 then
    std::vector<std::string> arguments{};
  } cases[] = {
      {"", "", false},
      {std::string("\0\x80\xFF\n\0\0\n", 7) + good, "", true},
      {setting("abc", "1") + good,
       "Setting skipped: its ID is not a number or is out of range: abc\n", true},
      {kIdTag + " 25\n" + kIdTag + " 28\n" + kValueTag + " 5\n", "", true},
      {kIdTag + " 25", noValue, false},
      {"\tSetting\t ID: 25\nCurrent\t Value: 5", "", true},
      {empty + good, noValue + ended, false},
      {empty + good, noValue, true, {"-E"}},
      {setting("74", "") + good, "", true},
      {setting("74", std::string("a\0b", 3)) + good, refused("74", "a\nb"), true},
      {wrong + good, wrongSaid, true},
      {wrong + good, wrongSaid, true, {"-E"}},
      {"\xEF\xBB\xBF" + good, "", true},
      {good + "\xEF\xBB\xBF" + setting("25", "6"), "", true},
      {std::string(5000000, 'x') + "\n" + good, "", true},
      {setting("25" + blanks + "x", "6") + good,
       "Setting skipped: its ID is not a number or is out of range: 25 x\n", true},
      {kIdTag + " 25" + blanks + "\n" + blanks + kValueTag + blanks + "5" + blanks, "", true},
      {setting("74", "a" + blanks + "b" + blanks) + good, "", true},
      {setting("203", replaced(std::string(200000, 'x'), "x", " 0")) + good,
       replaced(tooLong, "74", "203"), true},
      {setting("25", " 5" + replaced(std::string(100001, 'x'), "x", " x")), "", true},
      {setting("74", std::string(5000000, 'x')) + good, tooLong, true},
  };
  for (const auto& test : cases) {
    ASSERT_EQ(0, run({"25", "20"}).status);
    const Outcome outcome = import(test.content, test.arguments);
    SCOPED_TRACE(test.content.substr(0, 80));
    EXPECT_EQ(0, outcome.status);
    EXPECT_EQ(test.err, outcome.err);
    EXPECT_NE(outcome.out.find(" finished. Settings"), std::string::npos);
    EXPECT_EQ(test.applied,
              exported().find("\tSetting ID: 25\n\tCurrent Value: 5\n") != std::string::npos);
  }
}

}  // namespace
