// Showing, setting and searching settings of the local engine, with the program as a process.
#include "e2e/Home.h"

namespace {

// The lines of a setting, made from what it holds: of its JSON object, and of its text.
std::string jsonOf(const json& s, const std::string& tabs) {
  const auto list = [&](const char* key, const char* first, const char* blank, const char* second) {
    std::string lines;
    for (const json& item : s[key]) {
      lines += (lines.empty() ? "\n" : ",\n") + tabs + "\t{\"" + first +
               "\": " + item[first].dump() + "," + blank + "\"" + second +
               "\": " + item[second].dump() + "}";
    }
    return tabs + "\"" + key + "\": [" + (lines.empty() ? " " : lines + "\n" + tabs) + "],\n";
  };
  const auto member = [&](const std::string& key, const char* end = ",\n") {
    return tabs + "\"" + key + "\": " + s[key].dump() + end;
  };
  return member("name") + member("id") + member("value") + member("type") +
         list("range", "min_range", " ", "max_range") + list("options", "index", "", "value") +
         member("default_values") + member("description") + member("clientserver", "\n");
}

std::string textOf(const json& s) {
  const auto text = [](const json& value) {
    return value.is_string() ? value.get<std::string>() : value.dump();
  };
  std::string name = s["name"], options;
  std::transform(name.begin(), name.end(), name.begin(), ::toupper);
  const std::string rule = std::string(name.size(), '=') + "\n";
  if (s["type"] == 1) {
    const json& limits = s["range"][0];
    options = "\tRange: " + text(limits["min_range"]) + " to " + text(limits["max_range"]) + "\n";
  } else if (s["type"] == 0) {
    options = "\tOptions: " + text(s["options"][0]["value"]) + "\t" +
              text(s["options"][1]["value"]) + "\n";
  } else if (s["type"] != 2) {
    options = "\tOptions:\n";
    for (const json& option : s["options"]) {
      options += "\t\t" + text(option["index"]) + "\t" + text(option["value"]) + "\n";
    }
  }
  return rule + name + "\n" + rule + "\tSetting ID: " + text(s["id"]) +
         "\n\tCurrent Value: " + text(s["value"]) + "\n" + options +
         "\tDefault Value: " + text(s["default_values"]) + "\n\tDescription (" +
         (s["clientserver"] == "Server" ? "server" : "client") +
         " setting): " + text(s["description"]) + "\n";
}

using Settings = Home;

TEST_F(Settings, AreShownExactlyInEveryLayout) {
  EXPECT_EQ(0, run({"74", "C:\\a"}).status + run({"78", "1", "3"}).status);
  const std::string search = run({"-H", "e", "-JSON"}).out;
  const std::string header = search.substr(0, search.find("\t\"search"));
  writeFile(home / "j", "replaced without a question");
  EXPECT_EQ("", run({"-O", home / "j", "-JSON"}).out);
  EXPECT_EQ(0, run({"-O", home / "t"}).status);
  const std::string text = readFile(home / "t");
  const json categories = json::parse(readFile(home / "j"))["category_list"];
  std::string exported = header + "\t\"category_list\": [\n";
  std::map<std::string, json> all;
  for (const json& category : categories) {
    exported += "\t{\n\t\t\"id\":" + category["id"].dump() +
                ",\n\t\t\"name\": " + category["name"].dump() + ",\n\t\t\"settings_list\": [\n";
    for (const json& setting : category["settings_list"]) {
      const bool last = setting == category["settings_list"].back();
      exported += "\t\t{\n" + jsonOf(setting, "\t\t\t") + (last ? "\t\t}\n" : "\t\t},\n");
      const std::string id = setting["id"].dump(), screen = run({id, "-JSON"}).out;
      const json shown = all[id] = json::parse(screen);
      EXPECT_EQ(header + jsonOf(shown, "\t") + "}\n", screen);
      EXPECT_EQ(textOf(shown), textOf(setting));
      EXPECT_NE(text.npos, text.find("\n" + textOf(shown))) << textOf(shown);
    }
    exported += category == categories.back() ? "\t\t]\n\t}\n" : "\t\t]\n\t},\n";
  }
  EXPECT_EQ(exported + "\t]\n}\n", readFile(home / "j"));
  EXPECT_EQ("Client", all["20"]["clientserver"]);
  EXPECT_LT(1023U, all["36"]["description"].get<std::string>().size());
  EXPECT_LT(150U, all.size());
  EXPECT_EQ("C:\\a", all["74"]["value"]);
  EXPECT_EQ("1 3", all["78"]["value"]);
  EXPECT_EQ("0 1 2 3 4 5 6", all["78"]["default_values"]);
  EXPECT_EQ(3600, all["25"]["range"][0]["max_range"]) << "quoted in an export only";
  EXPECT_NE(exported.npos, exported.find("\"max_range\": \"3600\"}"));
  EXPECT_EQ("available memory", all["134"]["range"][0]["max_range"]);
  EXPECT_EQ("available disk space", all["30"]["range"][0]["max_range"]);
  EXPECT_EQ("available memory and disk space", all["31"]["range"][0]["max_range"]);
  EXPECT_TRUE(run({"25"}).out.ends_with("\n\n" + textOf(all["25"])));
}

TEST_F(Settings, TakeAndRefuseValues) {
  const std::string invalid = "Invalid command: wrong combination of arguments, or an ID or value ";
  const std::string restart =
      " Changes that require a restart take effect when the engine is restarted.";
  const std::string bytes = "\xF0\x9F\x94\xA7 \xC3\xA9\t\x80\xFF";
  const struct {
    std::string id;
    Words values;
    std::string failure;  // the beginning of what is said; empty: the value is taken
    std::string value{};  // then
    std::string more{};   // of the confirmation
  } cases[] = {
      {"25", {" 7", "8"}, "", "7"},
      {"25", {"4294967301"}, "7202: "},
      {"9999", {"1"}, "Unknown setting ID"},
      {"105", {"enabled"}, "Unknown setting ID"},
      {"4294967321", {"11"}, "", "11"},  // the low 32 bits are 25
      {"42", {"OFF", "x"}, "", "off"},
      {"42", {"True"}, "", "on"},
      {"42", {"0"}, "", "off"},
      {"42", {"1"}, "", "on"},
      {"42", {"no"}, "Invalid boolean value: "},
      {"74", {"a", "b"}, "", "a", restart},
      {"74", {""}, "", "", restart},
      {"74", {bytes}, "", bytes, restart},
      {"74", {std::string(1024, 'x')}, "7201: "},
      {"83", {"0", " 2"}, "", "0 2"},
      {"83", {"0", "x"}, invalid},
      {"83", {"99"}, "7203: "},
      {"23", {"0"}, "", "0"},
  };
  for (const auto& test : cases) {
    Words words = test.values;
    words.insert(words.begin(), test.id);
    SCOPED_TRACE(testing::PrintToString(words).substr(0, 40));
    const std::string before = run({test.id}).out;
    const Outcome set = run(words);
    const std::string after = run({test.id}).out;
    EXPECT_EQ(test.failure.empty() ? 0 : 1, set.status);
    EXPECT_TRUE(set.err.starts_with(test.failure)) << set.err;
    if (!test.failure.empty()) {
      EXPECT_EQ(before, after);
      continue;
    }
    EXPECT_NE(after.find("\tCurrent Value: " + test.value + "\n"), after.npos) << after;
    const std::string confirmed =
        "Setting " + (test.id.size() > 4 ? "25" : test.id) + " was updated." + test.more;
    EXPECT_TRUE(set.out.ends_with("\n\n" + confirmed + "\n")) << set.out;
    words.emplace_back("-JSON");
    EXPECT_TRUE(run(words).out.ends_with(",\n\t\"status\": \"" + confirmed + "\"\n}\n"));
  }
}

// Another library may stand behind the interface.
TEST_F(Settings, DistrustWhatTheInterfaceGives) {
  const std::string file = home / "x";
  const std::string failed = "|Export of a category failed. Last setting reached: ";
  const struct {
    std::string answer;
    Words arguments;
    std::string part;  // of what is said
  } cases[] = {
      {"TnGetCategoryList=2000", {"-O", file}, "|7003:"},
      {"TnGetCategoryList=-1", {"-H", "e"}, "No setting name contains \"e\".\n"},
      {"TnGetSettingList=2000", {"-H", "e"}, "|7003:"},
      {"TnGetSettingList=-1", {"-H", "e"}, "No setting name contains"},
      {"TnGetSettingInfo 1 124=7012", {"-H", "e"}, "|7012:"},
      {"TnGetSelectionValue=2000", {"83"}, "|7003:"},
      {"TnGetSelectionValue=-1", {"83"}, "Current Value: \n"},
      {"TnGetSettingHelp=\"a\" C:\\b", {"25", "-JSON"}, ": \"\\\"a\\\" C:\\b\",\n"},
      // An export ends with the first failure, or goes on with the next category.
      {"TnGetSettingHelp 300=7012", {"-O", file, "-F"}, "|7012: "},
      {"TnGetSettingHelp 300=7012", {"-O", file, "-JSON"}, "\t\"error\": \"7012: "},
      {"TnGetSettingList 1 1=7012", {"-O", file, "-F", "-E"}, failed + "-1. 7012: "},
      {"TnGetSettingHelp 300=7012", {"-O", file, "-F", "-E"}, failed + "300. 7012: "},
  };
  for (const auto& [answer, arguments, part] : cases) {
    const Outcome run = recorded(arguments, answer);
    EXPECT_NE(("|" + run.err + run.out).find(part), std::string::npos) << answer << run.err;
  }
  const std::string content = readFile(file);
  EXPECT_LT(content.find("\nERROR! - 7012: "), content.find("ID: 124"));
}

TEST_F(Settings, AreFoundByAPartOfTheirNames) {
  const auto found = [&](const char* keyword) { return inJson({"-H", keyword})["search_output"]; };
  EXPECT_TRUE(run({"-H", "lock WAIT l"})
                  .out.ends_with("\n\nSettings whose names contain \"lock WAIT l\":\n\n"
                                 "ID\tSetting\n---------------------\n25\tLock Wait Limit\n"));
  EXPECT_EQ(json::parse(R"([{"ID": 25, "Setting": "Lock Wait Limit"}])"), found("lock WAIT l"));
  EXPECT_EQ("No matches found for \"Single Sign-On\" setting", found("Single Sign-On"));
  EXPECT_GT(found("e").size(), 100U);
  EXPECT_FALSE(std::filesystem::exists(home / "state")) << "reading created something";
}

TEST_F(Settings, LieInTheUsersStateFolder) {
  using Row = std::array<std::string, 3>;
  for (const auto& [userHome, state, folder] :
       {Row{home / "a", "", home / "a/.local/state/knob"},
        Row{home / "b", "state", home / "b/.local/state/knob"},
        Row{"", home / "c", home / "c/knob"}}) {
    Process process = knob("", {"25", "5"});
    process.environment = {{"HOME", userHome}, {"XDG_STATE_HOME", state}};
    EXPECT_EQ("", process.run().err);
    EXPECT_TRUE(std::filesystem::is_regular_file(folder + "/settings.db")) << folder;
    EXPECT_EQ(std::filesystem::perms{0700}, std::filesystem::status(folder).permissions());
  }
}

}  // namespace
