// Showing, setting and searching settings of the local engine, with the program as a process on
// real store files.
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <unistd.h>

#include "support/Process.h"
#include "support/TempFolder.h"

namespace {

using nlohmann::json;

std::string valueOf(std::string const& home, std::vector<std::string> arguments) {
  arguments.push_back("-JSON");
  return json::parse(knob(home, std::move(arguments)).run().out)["value"];
}

TEST(Settings, ShowsOneAsText) {
  TempFolder home;
  const Outcome run = knob(home.path(), {"25"}).run();
  EXPECT_EQ(0, run.status);
  EXPECT_EQ("", run.err);
  const std::string body = run.out.substr(run.out.find("\n\n") + 2);
  EXPECT_TRUE(
      body.starts_with("===============\nLOCK WAIT LIMIT\n===============\n"
                       "\tSetting ID: 25\n\tCurrent Value: 20\n\tRange: 0 to 3600\n"
                       "\tDefault Value: 20\n\tDescription (server setting): Seconds"))
      << body;
  EXPECT_FALSE(std::filesystem::exists(home / "state")) << "reading created something";
}

TEST(Settings, AreValidJsonWithoutException) {
  TempFolder home;
  const json found = json::parse(knob(home.path(), {"-H", "e", "-JSON"}).run().out);
  EXPECT_GT(found["search_output"].size(), 100U);
  int shown = 0;
  int selected = 0;
  for (int id = 1; id <= 301; ++id) {
    const Outcome run = knob(home.path(), {std::to_string(id), "-JSON"}).run();
    const json setting = json::parse(run.out);
    if (run.status != 0) {
      EXPECT_NE(setting["error"].get<std::string>().find("no setting"), std::string::npos);
      continue;
    }
    ++shown;
    EXPECT_EQ(id, setting["id"]);
    EXPECT_EQ(setting["default_values"], setting["value"]);
    const int type = setting["type"];
    EXPECT_EQ(type == 1, setting["range"].size() == 1);
    EXPECT_EQ(type == 1 || type == 2, setting["options"].empty());
    // Every setting takes its own value back: a word, or numbers.
    std::vector<std::string> words{std::to_string(id)};
    std::istringstream values(setting["value"].get<std::string>());
    if (type == 2) words.push_back(values.str());
    for (std::string word; type != 2 && values >> word;) words.push_back(word);
    if (words.back().starts_with("-")) continue;  // taken for an option
    EXPECT_EQ(0, knob(home.path(), words).run().status) << id;
    ++selected;
  }
  EXPECT_GT(shown, 150);
  EXPECT_GT(selected, 150);
  EXPECT_FALSE(std::filesystem::exists(home / "state")) << "a value that was current was written";
}

TEST(Settings, TakeAndRefuseValues) {
  TempFolder home;
  const std::string invalid = "The arguments do not make up a command.";
  const struct {
    std::string id, value;
    std::string failure;  // the beginning of what is said; empty: the value is taken
  } cases[] = {
      {"25", "0", ""},
      {"25", "3600", ""},
      {"25", "3601", "7202: "},
      {"25", "2147483648", "7202: "},
      {"25", "9223372036854775807", "7202: "},
      {"25", "9223372036854775808", invalid},
      {"25", "", invalid},
      {"25", "007", ""},
      {"25", "1 2", invalid},
      {"9999", "1", "There is no setting"},
      {"4294967321", "11", ""},  // the low 32 bits are 25
      {"74", "", ""},
      {"74", "a b", ""},
      {"74", std::string("\xF0\x9F\x94\xA7 \xC3\xA9\t\x80\xFF"), ""},
      {"74", "a\nb", "7207: "},
      {"74", std::string(1024, 'x'), "7201: "},
  };
  for (auto const& test : cases) {
    SCOPED_TRACE(test.id + "=" + test.value.substr(0, 20));
    const std::string before = knob(home.path(), {test.id}).run().out;
    const Outcome run = knob(home.path(), {test.id, test.value}).run();
    const std::string after = knob(home.path(), {test.id}).run().out;
    EXPECT_EQ(test.failure.empty() ? 0 : 1, run.status);
    if (test.failure.empty()) {
      EXPECT_EQ("", run.err);
      const std::string shown = test.value == "007" ? "7" : test.value;
      EXPECT_NE(after.find("\tCurrent Value: " + shown + "\n"), std::string::npos) << after;
    } else {
      EXPECT_TRUE(run.err.starts_with(test.failure)) << run.err;
      EXPECT_EQ(before, after);
    }
  }
}

TEST(Settings, TellOfARestartWhereOneIsNeeded) {
  TempFolder home;
  const std::string restart =
      " Changes that need a restart take effect when the engine is started again.";
  EXPECT_TRUE(knob(home.path(), {"26", "2000"})
                  .run()
                  .out.ends_with("\n\nSetting 26 was updated." + restart + "\n"));
  EXPECT_EQ("Setting 26 was updated." + restart,
            json::parse(knob(home.path(), {"26", "3000", "-JSON"}).run().out)["status"]);
  EXPECT_EQ("Setting 25 was updated.",
            json::parse(knob(home.path(), {"25", "3", "-JSON"}).run().out)["status"]);
}

TEST(Settings, AreFoundByAPartOfTheirNames) {
  TempFolder home;
  const Outcome text = knob(home.path(), {"-H", "lock WAIT l"}).run();
  EXPECT_TRUE(
      text.out.ends_with("\n\nSettings whose names contain \"lock WAIT l\":\n\n"
                         "ID\tSetting\n---------------------\n25\tLock Wait Limit\n"))
      << text.out;
  const json one = json::parse(knob(home.path(), {"-H", "lock WAIT l", "-JSON"}).run().out);
  EXPECT_EQ(json::parse(R"([{"ID": 25, "Setting": "Lock Wait Limit"}])"), one["search_output"]);
  EXPECT_EQ("No matches found for \"zzz\" setting",
            json::parse(knob(home.path(), {"-H", "zzz", "-JSON"}).run().out)["search_output"]);
}

TEST(Settings, LieWhereTheServerNameSays) {
  TempFolder home;
  char host[256] = {};
  ASSERT_EQ(0, gethostname(host, sizeof host - 1));
  ASSERT_EQ(0, knob(home.path(), {"25", "5"}).run().status);
  EXPECT_EQ("5", valueOf(home.path(), {"25", "-S", host}));
  EXPECT_EQ("5", valueOf(home.path(), {"25", "-S", "localhost"}));
  EXPECT_EQ("5", valueOf(home.path(), {"25", "-S", "file:" + (home / "state/knob/settings.db")}));
  EXPECT_EQ("20", valueOf(home.path(), {"25", "-S", "file:" + (home / "other.db")}));

  Process withoutState = knob(home.path(), {"25", "6"});
  withoutState.environment.erase("XDG_STATE_HOME");
  EXPECT_EQ(0, withoutState.run().status);
  EXPECT_TRUE(std::filesystem::exists(home / ".local/state/knob/settings.db"));

  Process relative = knob(home.path(), {"25", "7", "-S", "file:own.db"});
  relative.folder = home.path();
  EXPECT_EQ(0, relative.run().status);
  EXPECT_EQ("7", valueOf(home.path(), {"25", "-S", "file:" + (home / "own.db")}));
}

// A store that cannot be used is said so in one line, and is left as it is.
TEST(Settings, AreNotReadFromWhatIsNoStore) {
  TempFolder home;
  writeFile(home / "text", "a text of some length, which is no store at all\n");
  ASSERT_EQ(0, knob(home.path(), {"25", "5", "-S", "file:" + (home / "damaged")}).run().status);
  std::string bytes = readFile(home / "damaged");
  bytes.replace(4096, 200, std::string(200, '\xA5'));
  writeFile(home / "damaged", bytes);
  const struct {
    char const* path;
    char const* failure;
  } cases[] = {{"", "7302: "}, {"text", "7307: "}, {"damaged", "7306: "}};
  for (auto const& test : cases) {
    const std::string path = home / test.path;
    const bool isFile = *test.path != '\0';
    const std::string before = isFile ? readFile(path) : "";
    for (std::vector<std::string> const& command : {std::vector<std::string>{"25"}, {"25", "6"}}) {
      std::vector<std::string> arguments = command;
      arguments.insert(arguments.end(), {"-S", "file:" + path});
      const Outcome run = knob(home.path(), arguments).run();
      EXPECT_EQ(1, run.status) << path;
      EXPECT_TRUE(run.err.starts_with(test.failure)) << run.err;
      EXPECT_EQ(1, std::count(run.err.begin(), run.err.end(), '\n'));
    }
    EXPECT_EQ(before, isFile ? readFile(path) : "");
  }
}

}  // namespace
