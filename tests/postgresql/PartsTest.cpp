// The parts of the PostgreSQL engine that need no server.
#include <algorithm>
#include <fstream>
#include <gtest/gtest.h>
#include <map>
#include <optional>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "tuning/TuningError.h"
#include "tuning/postgresql/AlterSystem.h"
#include "tuning/postgresql/Choices.h"
#include "tuning/postgresql/CommandLine.h"
#include "tuning/postgresql/KnownSettings.h"
#include "tuning/postgresql/NameList.h"
#include "tuning/postgresql/NewValue.h"
#include "tuning/postgresql/SettingGroups.h"
#include "tuning/postgresql/SettingIds.h"
#include "tuning/postgresql/SettingText.h"
#include "tuning/postgresql/SqlState.h"
#include "tuning/postgresql/ValueText.h"

namespace {

using namespace tn::postgresql;
using Names = NameList::Names;

TEST(NameList, ReadsWhatPeopleAndServersWrite) {
  struct Case {
    std::string text;
    std::optional<Names> ofPerson, ofServer;  // as identifiers
    std::string shown;                        // of the person's
  };
  const Case cases[] = {
      {"", Names{}, Names{}, ""},
      {"  ", Names{}, Names{}, ""},
      {"a,b", Names{"a", "b"}, Names{"a", "b"}, "a, b"},
      {" A , \"B\" ", Names{"A", "B"}, Names{"a", "B"}, "A, B"},
      {"\"$user\", public", Names{"$user", "public"}, Names{"$user", "public"}, "$user, public"},
      {R"("a,b", "c""d", " e ")", Names{"a,b", "c\"d", " e "}, Names{"a,b", "c\"d", " e "},
       R"("a,b", "c""d", " e ")"},
      {"a b, /run/x y", Names{"a b", "/run/x y"}, Names{"a b", "/run/x y"}, "a b, /run/x y"},
      {"\"\"", Names{""}, Names{""}, "\"\""},
      {"a,,b", std::nullopt, Names{"a", "", "b"}, ""},
      {"a,", std::nullopt, Names{"a", ""}, ""},
      {"\"a", std::nullopt, std::nullopt, ""},
      {"\"a\"b", std::nullopt, std::nullopt, ""},
  };
  for (const Case& c : cases) {
    const auto names = NameList::ofPerson(c.text, NameList::Kind::identifiers);
    EXPECT_EQ(c.ofPerson, names) << c.text;
    EXPECT_EQ(c.ofServer, NameList::ofServer(c.text, NameList::Kind::identifiers)) << c.text;
    if (!names) continue;
    EXPECT_EQ(c.shown, NameList::shown(*names));
    EXPECT_EQ(names, NameList::ofPerson(c.shown, NameList::Kind::identifiers));
  }
  EXPECT_EQ(std::nullopt, NameList::ofPerson("\"\"", NameList::Kind::names));
}

// What servers of versions 10 and 18 made of these texts.
TEST(ValueText, ReadsNumbersAsTheServerDoes) {
  using Value = std::optional<int32_t>;
  struct Case {
    std::string text, unit;
    Value refused, rounded;  // where a fraction is
  };
  const Case cases[] = {
      {"7MB", "kB", 7168, 7168},
      {"  7 MB ", "kB", 7168, 7168},
      {"7MB", "ms", {}, {}},
      {"7MB", "", {}, {}},
      {"128MB", "8kB", 16384, 16384},
      {"804kB", "8kB", 100, 100},
      {"901120B", "8kB", 110, 110},
      {"900000B", "8kB", 109, 110},
      {"1.06MB", "8kB", {}, 136},
      {"1.1GB", "kB", {}, 1153024},
      {"1.1GB", "8kB", {}, 144128},
      {"1.1TB", "MB", {}, 1153024},
      {"1800kB", "MB", 1, 2},
      {"2560kB", "MB", 2, 2},
      {"3584kB", "MB", 3, 4},
      {"1TB", "kB", 1073741824, 1073741824},
      {"1h", "s", 3600, 3600},
      {"1500ms", "s", 1, 2},
      {"2500ms", "s", 2, 2},
      {"1.001h", "s", {}, 3600},
      {"120s", "min", 2, 2},
      {"90s", "min", 1, 2},
      {"59s", "min", 0, 1},
      {"1.01d", "min", {}, 1440},
      {"2.7d", "ms", {}, 234000000},
      {"24.7d", "ms", {}, 2134800000},
      {"25d", "ms", {}, {}},
      {"0.001h", "ms", {}, 0},
      {"2.5", "ms", {}, 2},
      {".5GB", "kB", {}, 524288},
      {"-.5", "ms", {}, {}},
      {"-0.6", "ms", {}, -1},
      {"-0", "ms", 0, 0},
      {"+700", "kB", 700, 700},
      {"010", "", 8, 8},
      {"-010", "", -8, -8},
      {"010.5", "", {}, 10},
      {"0x1e5", "kB", 485, 485},
      {"-0x1", "", -1, -1},
      {"0x40.8p1", "kB", {}, 129},
      {"1e5", "kB", {}, 100000},
      {"1E3kB", "kB", {}, 1000},
      {"3000000000", "ms", {}, {}},
      {"3000000000B", "kB", {}, 2929688},
  };
  for (const Case& c : cases) {
    EXPECT_EQ(c.refused, ValueText::integer(c.text, c.unit, ValueText::Fractions::refused))
        << c.text;
    EXPECT_EQ(c.rounded, ValueText::integer(c.text, c.unit, ValueText::Fractions::rounded))
        << c.text;
  }
  for (std::string const text :
       {"12MB34", "1 GB x", "2TB", "+-700", "--7", "0-5", "08", "0x", "1e", "1_000", "infinity",
        "99999999999999999999B", "-0-1000000000000000000000", "-9223372036854775808", "", "-", "x",
        "7mb"}) {
    EXPECT_EQ(Value(), ValueText::integer(text, "kB", ValueText::Fractions::rounded)) << text;
  }
  const struct {
    std::string text, unit, shown;  // empty: not a value
  } reals[] = {{"100us", "ms", "0.1"},
               {"0.0015ms", "ms", "0.002"},
               {"0.0123456s", "ms", "12"},
               {"0x1.8p1", "ms", "3"},
               {"1.23456789", "ms", "1.23457"},
               {"-0", "", "-0"},
               {"012", "ms", "12"},
               {"123456789", "", "1.23457e+08"},
               {"1ms", "", ""},
               {"1e400", "", ""},
               {"infinity", "", ""},
               {"+1", "", "1"},
               {"1e-7", "", "1e-07"},
               {"+-1", "", ""}};
  for (const auto& c : reals) {
    const auto value = ValueText::real(c.text, c.unit);
    EXPECT_EQ(c.shown, value ? ValueText::ofReal(*value) : "") << c.text;
  }
}

TEST(ValueText, ReadsWords) {
  for (std::string const text : {"on", "TRUE", "yes", "y", "1", "t"}) {
    EXPECT_EQ(true, ValueText::boolean(text)) << text;
  }
  for (std::string const text : {"of", "False", "n", "0"}) {
    EXPECT_EQ(false, ValueText::boolean(text)) << text;
  }
  for (std::string const text : {"o", "", "truex", "2"}) {
    EXPECT_EQ(std::nullopt, ValueText::boolean(text)) << text;
  }
  const std::vector<Choice> choices{{"off"}, {"on"}, {"error"}};
  EXPECT_EQ(2U, ValueText::choice("ERROR", choices));
  EXPECT_EQ(1U, ValueText::choice("yes", choices));
  EXPECT_EQ(std::nullopt, ValueText::choice("yes", {{"error"}}));
}

TEST(SettingIds, StayWhatTheyAre) {
  const std::vector<std::string_view> names{"port", "auto_explain.log_format", "work_mem",
                                            "shared_preload_libraries", "Auto_Explain.Log_Format"};
  const auto ids = SettingIds::of(names);
  EXPECT_EQ(123, ids[0]);
  EXPECT_EQ(1224, ids[2]);
  EXPECT_EQ(74, ids[3]);
  EXPECT_EQ(110945204, SettingIds::made(names[1], 0));
  // The same name in other letters wants the same id; one of the two gives way.
  EXPECT_NE(ids[1], ids[4]);
  auto reversed = names;
  std::reverse(reversed.begin(), reversed.end());
  auto again = SettingIds::of(reversed);
  std::reverse(again.begin(), again.end());
  EXPECT_EQ(ids, again);
}

TEST(KnownSettings, HaveDifferentIdsBelowTheMadeOnes) {
  std::set<int32_t> ids;
  std::set<std::string_view> names;
  for (const KnownSetting& known : KnownSettings::all()) {
    EXPECT_TRUE(ids.insert(known.id).second) << known.name;
    EXPECT_TRUE(names.insert(known.name).second) << known.name;
    EXPECT_LT(known.id, SettingIds::kFirstMade);
    EXPECT_EQ(known.id < 1000, KnownSettings::announcesRestart(known.id)) << known.name;
  }
  EXPECT_FALSE(KnownSettings::announcesRestart(25));
}

// A setting as one or more versions list it.
struct Listed {
  std::string name, context, type;
  std::vector<std::string> choices;
};

std::vector<Listed> listedSettings() {
  std::vector<Listed> settings;
  std::ifstream file(KNOB_SOURCE_DIR "/tests/postgresql/data/settings.tsv");
  for (std::string line; std::getline(file, line);) {
    if (line.starts_with('#')) continue;
    std::istringstream fields(line);
    Listed& listed = settings.emplace_back();
    fields >> listed.name >> listed.context >> listed.type;
    std::string choices;
    std::getline(fields.ignore(), choices, '\t');
    std::istringstream each(choices);
    for (std::string choice; std::getline(each, choice, ',');) listed.choices.push_back(choice);
  }
  EXPECT_LT(400U, settings.size());
  return settings;
}

TEST(KnownSettings, TellOfRestartsAndListsOnEveryVersion) {
  // In some versions a change needs a restart and in others not: the description tells.
  const std::set<std::string> sometimes{"allow_system_table_mods", "autovacuum_max_workers",
                                        "primary_conninfo", "primary_slot_name", "restore_command"};
  std::set<std::string> told, lists;
  for (const Listed& listed : listedSettings()) {
    SCOPED_TRACE(listed.name);
    const KnownSetting* const known = KnownSettings::find(listed.name);
    ASSERT_TRUE(known) << "has no id";
    Setting setting;
    setting.id = known->id;
    setting.needsRestart = listed.context == "postmaster";
    const std::string text = SettingText::of(setting);
    if (KnownSettings::announcesRestart(known->id) != setting.needsRestart) {
      EXPECT_TRUE(sometimes.contains(listed.name));
      told.insert(listed.name);
      EXPECT_EQ(setting.needsRestart ? "A change takes effect when the server is restarted."
                                     : "This server takes a change without a restart.",
                text);
    } else {
      EXPECT_EQ("", text);
    }
    if (listed.type == "names") lists.insert(listed.name);
  }
  EXPECT_EQ(sometimes, told);
  EXPECT_EQ(8U, lists.size());
  for (const KnownSetting& known : KnownSettings::all()) {
    EXPECT_EQ(lists.contains(std::string(known.name)),
              NameList::kindOf(known.name) != NameList::Kind::none)
        << known.name;
  }
}

TEST(Choices, HaveTheSameNumberOnEveryServer) {
  std::map<std::string, std::map<std::string, std::size_t>> numbers;
  for (const Listed& listed : listedSettings()) {
    if (listed.type != "enum") continue;
    SCOPED_TRACE(listed.name);
    EXPECT_FALSE(KnownSettings::find(listed.name)->choices.empty()) << "no order is known";
    const auto choices = Choices::of(listed.name, listed.choices);
    for (const std::string& text : listed.choices) {
      const auto item = ValueText::choice(text, choices);
      ASSERT_TRUE(item) << text;
      EXPECT_TRUE(choices[*item].available) << text;
      EXPECT_EQ(*item, numbers[listed.name].emplace(text, *item).first->second) << text;
    }
  }
  EXPECT_LT(40U, numbers.size());
}

TEST(Choices, OfOtherServersKeepTheirNumberAndAreNoneHere) {
  const struct {
    std::string setting;
    std::vector<std::string> listed, shown;
  } cases[] = {
      {"wal_compression",
       {"pglz", "zstd", "on", "off", "new"},
       {"off", "on", "pglz", "lz4 (not on this server)", "zstd", "new"}},
      {"file_extend_method",
       {"write_zeros"},
       {"posix_fallocate (not on this server)", "write_zeros"}},
      {"some.extension", {"b", "a"}, {"b", "a"}},
      {"some.extension", {}, {}},
  };
  for (const auto& c : cases) {
    std::vector<std::string> shown;
    for (const Choice& choice : Choices::of(c.setting, c.listed)) {
      shown.push_back(Choices::shown(choice));
    }
    EXPECT_EQ(c.shown, shown) << c.setting;
  }
}

TEST(SettingGroups, LoseNoSettingAndKeepToTheCapacities) {
  const struct {
    int extension;
    std::size_t categories;  // 0: refused
    std::string last;
  } cases[] = {{50, 3, "Customized Options"},
               {51, 4, "Customized Options (2)"},
               {1395, 30, "Customized Options (28)"},
               {1451, 30, "All Settings (30)"},
               {1498, 0, ""}};
  for (const auto& c : cases) {
    std::vector<std::string> names{"deadlock_timeout", "new_lock_setting", "no_such_group"};
    for (int i = 0; i < c.extension; ++i) names.push_back("module.s" + std::to_string(i));
    std::vector<SettingGroups::Member> members;
    members.reserve(names.size());
    for (const std::string& name : names) {
      members.push_back({name, "Sperren / Teil", static_cast<int32_t>(members.size())});
    }
    members[2].serverCategory = "Neues";
    if (c.categories == 0) {
      EXPECT_THROW(SettingGroups::of(members), tn::TuningError);
      continue;
    }
    const auto groups = SettingGroups::of(members);
    ASSERT_EQ(c.categories, groups.size());
    const bool byGroup = groups.back().name == "Neues";
    EXPECT_EQ(c.last, byGroup ? groups[groups.size() - 2].name : groups.back().name);
    if (byGroup) {
      EXPECT_EQ((std::vector<int32_t>{0, 1}), groups[0].settingIds);
    }
    std::set<int32_t> seen;
    std::set<int32_t> ids;
    for (const auto& group : groups) {
      EXPECT_LE(group.settingIds.size(), 50U);
      EXPECT_TRUE(ids.insert(group.id).second);
      seen.insert(group.settingIds.begin(), group.settingIds.end());
    }
    EXPECT_EQ(members.size(), seen.size());
  }
}

TEST(SettingText, IsOneLine) {
  Setting setting;
  setting.id = 25;
  setting.shortText = "A \\ and\nB.";
  setting.unit = "8kB";
  EXPECT_EQ("A (backslash) and B. Unit: 8kB.", SettingText::of(setting));
}

TEST(AlterSystem, QuotesNamesPartByPartAndKnowsWhichAFileCanHold) {
  EXPECT_EQ("ALTER SYSTEM SET \"a\".\"b\"\"c\" = 'x', 'y'",
            AlterSystem::set("a.b\"c", {"'x'", "'y'"}));
  EXPECT_EQ("ALTER SYSTEM RESET \"DateStyle\"", AlterSystem::reset("DateStyle"));
  for (const char* const name : {"work_mem", "pg_many.select", "_a.b$1", "\xC3\xA4.x"}) {
    EXPECT_TRUE(AlterSystem::canName(name)) << name;
  }
  for (const char* const name : {"", "a.", ".b", "a.b.c", "a.1", "a b", "a.b\"; drop", "a-b"}) {
    EXPECT_FALSE(AlterSystem::canName(name)) << name;
  }
}

TEST(SqlState, IsFoundInErrorsOfEveryLanguage) {
  const std::pair<std::string, std::string> cases[] = {
      {"", ""},
      {"could not connect: Connection refused\n\tIs the server running?\n", ""},
      {"Verbindung zu »x« fehlgeschlagen: FATAL:  28P01\n", "28P01"},
      {"a: FATAL:  57P03\nb: Connection refused\n", "57P03"},
      {"a: FATAL:  57P03\nb: FATAL:  3D000\n", "3D000"},
      {"server said: what\nx:  ab\n", ""},
  };
  for (const auto& [text, code] : cases) EXPECT_EQ(code, SqlState::lastIn(text)) << text;
}

TEST(SqlState, MeansWhatTheStatementWasFor) {
  const struct {
    std::string code;
    TnStatus connecting, question, value, alterSystem;
  } cases[] = {
      {"22P05", TN_SERVER_ERROR, TN_SERVER_ERROR, TN_VALUE_REFUSED, TN_VALUE_REFUSED},
      {"42501", TN_NOT_PERMITTED, TN_NOT_PERMITTED, TN_NOT_PERMITTED, TN_NOT_PERMITTED},
      {"53100", TN_SERVER_ERROR, TN_SERVER_ERROR, TN_SERVER_ERROR, TN_SERVER_CANNOT_WRITE},
      {"57014", TN_LOGIN_REFUSED, TN_SERVER_ERROR, TN_SERVER_ERROR, TN_SERVER_ERROR},
      {"F0000", TN_SERVER_ERROR, TN_SERVER_ERROR, TN_SERVER_ERROR, TN_CONFIGURATION_FILE_ERRORS},
      {"XX000", TN_SERVER_ERROR, TN_SERVER_ERROR, TN_SERVER_ERROR, TN_CONFIGURATION_LOCKED},
      {"", TN_SERVER_ERROR, TN_CONNECTION_LOST, TN_CONNECTION_LOST, TN_CONNECTION_LOST},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(c.connecting, SqlState::whenConnecting(c.code)) << c.code;
    EXPECT_EQ(c.question, SqlState::ofQuestion(c.code)) << c.code;
    EXPECT_EQ(c.value, SqlState::ofValue(c.code)) << c.code;
    EXPECT_EQ(c.alterSystem, SqlState::ofAlterSystem(c.code)) << c.code;
  }
}

TEST(CommandLine, GivesSettings) {
  const CommandLine line(
      "/a b/postgres \"-D\" \"/x y\" \"-c\" \"work_mem=8MB\" \"--Log-Lock-Waits=on\" \"-cgeqo=a=b\""
      " \"-p\" \"5\" \"-S\" \"100\"\n");
  EXPECT_EQ("100", line.value("work_mem"));
  EXPECT_EQ("on", line.value("log_lock_waits"));
  EXPECT_EQ("a=b", line.value("geqo"));
  EXPECT_EQ(std::nullopt, line.value("port"));
  for (const char* const text : {"", "postgres", "postgres \"", "postgres \"\n", "postgres \"-c"}) {
    EXPECT_EQ(std::nullopt, CommandLine(text).value("geqo")) << text;
  }
}

TEST(NewValue, GivesAListInTheServersOwnWay) {
  const struct {
    bool oneText;
    std::string running, value;
    std::vector<std::string> parts;
    std::string text;
  } cases[] = {
      {false, "", "$user, Mixed,a_1", {"$user", "Mixed", "a_1"}, R"("$user", "Mixed", a_1)"},
      {false, "", "\"a,b\", x", {"a,b", "x"}, R"("a,b", x)"},
      {false, "", "", {}, ""},
      {true, "/a", "/a, /b", {"/a, /b"}, "/a, /b"},
      {true, "/a,/b", "/a, /b", {"/a,/b"}, "/a,/b"},
      {true, "/a", "\"/a,b\"", {"\"/a,b\""}, "\"/a,b\""},
      {true, "/a", "", {""}, ""},
  };
  for (const auto& c : cases) {
    Setting setting;
    setting.list = NameList::Kind::names;
    setting.listIsOneText = c.oneText;
    setting.running = c.running;
    setting.current = NameList::shown(*NameList::ofServer(c.running, setting.list));
    const NewValue value = NewValue::ofText(setting, c.value);
    EXPECT_EQ(c.parts, value.parts()) << c.value;
    EXPECT_EQ(c.text, value.text()) << c.value;
    EXPECT_EQ(c.parts.empty(), value.isEmptyList()) << c.value;
  }
}

}  // namespace
