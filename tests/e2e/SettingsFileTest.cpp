// Exporting all settings of the local engine and importing them again, with the program as a
// process.
#include <sys/stat.h>
#include <thread>

#include "e2e/Home.h"

namespace {

std::string replaced(std::string text, const std::string& from, const std::string& to) {
  for (std::size_t at = 0; (at = text.find(from, at)) != text.npos; at += to.size()) {
    text.replace(at, from.size(), to);
  }
  return text;
}

std::string entry(const std::string& id, const std::string& value) {
  return "Setting ID:" + id + "\nCurrent Value:" + value + "\n";
}

// Another value, one that is hard to carry where it can be.
std::string awkwardValue(const json& setting) {
  const std::string value = setting["value"];
  const json& options = setting["options"];
  const int type = setting["type"];
  if (type == 0) return options[options[0]["value"] == value ? 1 : 0]["value"];
  if (type == 1) {
    const json& limits = setting["range"][0];
    if (limits["max_range"].is_string()) return "2147483647";
    return limits[limits["max_range"].dump() != value ? "max_range" : "min_range"].dump();
  }
  // A setting with a short default may take short values only.
  if (type == 2) {
    return value.size() < 12 ? "\\\"\xC3\xA9" : "\\n \xC3\xA9\xF0\x9F\x94\xA7\xFF \"%s\" ID:";
  }
  const std::string items = type == 3 ? "1" : "0 1";
  return value == items ? "0" : items;
}

class SettingsFile : public Home {
 protected:
  std::string exported() const {
    const Outcome written = run({"-O", home / "new//folder/export", "-F"});
    EXPECT_EQ("", written.err);
    return readFile(home / "new/folder/export");
  }

  Outcome import(const std::string& content, Words arguments = {}) const {
    writeFile(home / "import", content);
    arguments.insert(arguments.begin(), {"-I", home / "import"});
    return run(arguments);
  }
};

TEST_F(SettingsFile, CarriesEveryValue) {
  const std::string defaults = exported(), rule = "\n" + std::string(39, '=') + "\n";
  EXPECT_NE(defaults.find(rule + "CATEGORY 7: LOCKING\tCHANGED SETTINGS: 0" + rule +
                          "Number of settings: 8\n===============\nLOCK WAIT LIMIT\n"),
            defaults.npos);
  EXPECT_TRUE(
      defaults.ends_with("\n\tSettings exported to " + (home / "new//folder/export") + ".\n"));
  EXPECT_TRUE(import(defaults).out.ends_with(
      "\n\nImport of " + (home / "import") +
      " finished. Settings that were not applied are reported on standard error.\n"
      "Changes that require a restart take effect when the engine is restarted.\n"));
  EXPECT_FALSE(std::filesystem::exists(home / "state")) << "nothing was to be changed";

  std::string content;
  for (int id = 1; id <= 301; ++id) {
    const json setting = inJson({std::to_string(id)});
    if (setting.contains("error")) continue;
    content += entry(" " + std::to_string(id), " " + awkwardValue(setting));
  }
  ASSERT_EQ("", import(content).err);
  const std::string changed = exported();
  EXPECT_EQ(changed.npos, changed.find("CHANGED SETTINGS: 0\n")) << "a category was not changed";
  EXPECT_NE(changed.npos, changed.find("3600\n\tRange: 0 to 3600\n\tDefault Value: 20\n"));
  const std::string forms[] = {changed, replaced(changed, "\n", "\r\n"),
                               // Indented by a person, and in other case.
                               replaced(replaced(changed, "\tSetting ID:", " \t  SETTING id:"),
                                        "\tCurrent Value:", "current VALUE:\t ")};
  for (const std::string& form : forms) {
    ASSERT_EQ("", import(defaults).err);
    ASSERT_EQ(defaults, exported());
    ASSERT_EQ("", import(form).err);
    ASSERT_EQ(changed, exported());
  }
}

TEST_F(SettingsFile, IsNotReplacedWithoutAYes) {
  const std::string warning = "No answer after 25 lines. The next line is the last attempt.\n";
  const std::string no = "Export canceled. The file was not changed.\n";
  // The answer and the end of what is said; nothing when the file is replaced.
  const std::pair<std::string, std::string> cases[] = {
      {"n\n", ")? " + no},
      {"", ")? \n" + warning + no},
      {"\n\nY\n", ")? "},
      {std::string(25, '\n') + "y", ")? \n" + warning},
      {std::string(26, '\n') + "y", ")? \n" + warning + no}};
  Process process = knob(home.path(), {"-O", home / "file"});
  for (const auto& [answer, said] : cases) {
    writeFile(home / "file", "mine");
    process.input = answer;
    const Outcome outcome = process.run();
    EXPECT_EQ(0, outcome.status);
    EXPECT_TRUE(outcome.out.ends_with("Overwrite it (y/n" + said)) << outcome.out;
    EXPECT_EQ(said.ends_with(no), readFile(home / "file") == "mine");
  }
}

// As the answer whether to overwrite a file, and as a settings file.
TEST_F(SettingsFile, MayHoldALineWithoutEnd) {
  writeFile(home / "file", "mine");
  writeFile(home / "zeros", "");
  std::filesystem::resize_file(home / "zeros", 300'000'000);
  Process process = knob(home.path(), {});
  process.folder = home.path();
  process.environment["K"] = process.arguments[0];
  process.arguments = {"/bin/sh", "-c",
                       "ulimit -v " KNOB_MEMORY_LIMIT "; $K -O file </dev/zero && $K -I zeros"};
  EXPECT_EQ(0, process.run().status);
  EXPECT_EQ("mine", readFile(home / "file"));
}

TEST_F(SettingsFile, MayBeANamedPipe) {
  mkfifo((home / "pipe").c_str(), 0600);
  std::thread writer([&] {
    std::this_thread::sleep_for(std::chrono::milliseconds(200));
    writeFile(home / "pipe", entry("25", "5") + entry("28", "9"));
  });
  EXPECT_EQ("", run({"-I", home / "pipe"}).err);
  const std::fstream reader(home / "pipe");  // for a writer that was not waited for
  writer.join();
  EXPECT_NE(std::string::npos, run({"28"}).out.find("Current Value: 9\n"));
}

TEST_F(SettingsFile, ThatCannotBeWrittenOrReadIsAFailure) {
  const std::string store = home / "store";
  ASSERT_EQ("", run({"25", "5", "-S", "file:" + store}).err);
  const std::string stored = readFile(store);
  std::filesystem::create_symlink("store", home / "link");
  std::filesystem::create_directory(home / "locked");
  std::filesystem::permissions(home / "locked", std::filesystem::perms{0555});
  for (const char* const name : {"bad", "out"}) writeFile(home / name, name);
  const struct {
    Words arguments;
    int status;
    std::string said;
    std::string out{};
    uid_t user = 0;
  } cases[] = {
      {{"25"}, 28, "0x8007011C", "/dev/full"},
      {{"25", "5"}, 9, "0x80070109", "-"},
      {{"-H", "e"}, 32, "0x80070120", "|"},
      {{"-O", "/dev/full", "-F"}, 28, "0x8007011C"},
      {{"-O", home / "locked/folder/new"}, 1, "0x80070005", "", kNobody},
      {{"-O", home / "link", "-F", "-S", "file:" + store}, 1, "/link: knob has this "},
      {{"-O", home / "out", "-F", "-S", "file:" + (home / "bad")}, 1, "7307: "},
      {{"-I", home / "missing"}, 1, "/missing: no such file or directory (status 0x80070002)"},
      {{"-I", home.path()}, 21, "0x80070115"},
  };
  for (const auto& test : cases) {
    Process process = knob(home.path(), test.arguments);
    process.outTo = test.out;
    process.user = test.user;
    const Outcome outcome = process.run();
    SCOPED_TRACE(testing::PrintToString(test.arguments));
    EXPECT_EQ(test.status, outcome.status);
    EXPECT_NE(outcome.err.find(test.said), std::string::npos) << outcome.err;
    EXPECT_TRUE(test.out.empty() || outcome.err.find('\n') + 1 == outcome.err.size());
    EXPECT_EQ(std::string::npos, outcome.out.find("applied"));
  }
  EXPECT_FALSE(std::filesystem::exists(home / "state")) << "a set that could not be told was made";
  EXPECT_EQ("out", readFile(home / "out"));
  EXPECT_EQ(stored, readFile(store));
}

TEST_F(SettingsFile, ThatIsNoneIsTakenForWhatItHolds) {
  // What is said of a value that the engine refuses.
  const auto refused = [this](const std::string& id, const std::string& value) {
    const std::string reason = run({id, value}).err;
    return reason.substr(0, reason.find('\n')) + " (Setting " + id + ")\n";
  };
  const std::string good = entry("25", "5");
  const std::string noValue = "Setting 25 was not changed: the file has no value for it.\n";
  const std::string ended = "Import of " + (home / "import") +
                            " stopped here; earlier settings were applied. Use -E to continue past "
                            "missing values.\n\n";
  const std::string empty = entry("25", " \t");
  const std::string wrong = entry("9999", "1") + entry("26", "x") + entry("25", "3601");
  const std::string wrongSaid =
      refused("9999", "1") +
      "Setting 26 was not changed: its value in the file is not a number or is out of range.\n" +
      refused("25", "3601");
  const std::string blanks = std::string(70000, ' ') + "\t ";
  const std::string tooLong = refused("74", std::string(1024, 'x'));
  const struct {
    std::string content, err;
    bool applied = true;  // whether 25 has the value 5 then
    Words arguments{};
  } cases[] = {
      {"", "", false},
      {std::string("\0\x80\xFF\n\0\0\n", 7) + good, ""},
      {entry("abc", "1") + good,
       "Setting skipped: its ID is not a number or is out of range: abc\n"},
      {"Setting ID: 25\nSetting ID: 28\nCurrent Value: 5\n", ""},
      {"Setting ID: 25", noValue, false},
      {empty + good, noValue + ended, false},
      {empty + good, noValue, true, {"-E"}},
      {entry("74", "") + good, ""},
      {entry("74", std::string("a\0b", 3)) + good, refused("74", "a\nb")},
      {wrong + good, wrongSaid},
      {"\xEF\xBB\xBF" + good, ""},
      {good + std::string(65536, 'x') + entry("25", "7"), ""},
      {"Setting ID: 25" + blanks + "\n" + blanks + "Current Value:" + blanks + "5" + blanks, ""},
      {entry("74", std::string(5000000, 'x')) + good, tooLong},
      {entry("203", replaced(std::string(200000, 'x'), "x", " 0")) + good,
       replaced(tooLong, "74", "203")},
      {entry("25", " 5" + replaced(std::string(100001, 'x'), "x", " x")), ""},
  };
  for (const auto& test : cases) {
    ASSERT_EQ(0, run({"25", "20"}).status);
    const Outcome outcome = import(test.content, test.arguments);
    SCOPED_TRACE(test.content.substr(0, 80));
    EXPECT_EQ(0, outcome.status);
    EXPECT_EQ(test.err, outcome.err);
    EXPECT_NE(outcome.out.find(" finished. Settings"), std::string::npos);
    EXPECT_EQ(test.applied, run({"25"}).out.find("\tCurrent Value: 5\n") != std::string::npos);
  }
}

}  // namespace
