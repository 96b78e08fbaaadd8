// The parts of the PostgreSQL engine that need no server.
#include <algorithm>
#include <gtest/gtest.h>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "tuning/TuningError.h"
#include "tuning/postgresql/AlterSystem.h"
#include "tuning/postgresql/CommandLine.h"
#include "tuning/postgresql/KnownSettings.h"
#include "tuning/postgresql/NameList.h"
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
    std::optional<Names> ofPerson;
    std::optional<Names> ofServer;  // as identifiers
    std::string shown;              // of the person's
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
      {"\"\"", std::nullopt, Names{""}, ""},
      {"a,,b", std::nullopt, Names{"a", "", "b"}, ""},
      {"a,", std::nullopt, Names{"a", ""}, ""},
      {"\"a", std::nullopt, std::nullopt, ""},
      {"\"a\"b", std::nullopt, std::nullopt, ""},
  };
  for (Case const& c : cases) {
    const auto names = NameList::ofPerson(c.text);
    EXPECT_EQ(c.ofPerson, names) << c.text;
    EXPECT_EQ(c.ofServer, NameList::ofServer(c.text, NameList::Kind::identifiers)) << c.text;
    if (!names) continue;
    EXPECT_EQ(c.shown, NameList::shown(*names));
    EXPECT_EQ(names, NameList::ofPerson(c.shown));
  }
}

TEST(ValueText, ReadsConfigurationFiles) {
  struct Case {
    std::string text;
    std::string unit;
    std::optional<int32_t> value;
  };
  const Case cases[] = {
      {"7MB", "kB", 7168},
      {"7 MB", "kB", 7168},
      {"1h", "s", 3600},
      {"1d", "min", 1440},
      {"128MB", "8kB", 16384},
      {"16", "8kB", 16},
      {"0640", "", 416},
      {"0x10", "", 16},
      {"-1", "ms", -1},
      {"1.5GB", "MB", 1536},
      {"1e3", "", 1000},
      {"2500us", "ms", 2},
      {"7", "", 7},
      {"7MB", "ms", {}},
      {"7mb", "kB", {}},
      {"3000000000", "", {}},
      {"", "", {}},
      {"x", "", {}},
      {"0.5", "", 0},
      {"7MB", "", {}},
      {"  12  ", "s", 12},
  };
  for (Case const& c : cases) EXPECT_EQ(c.value, ValueText::integer(c.text, c.unit)) << c.text;
  for (std::string const text : {"on", "TRUE", "yes", "y", "1", "t"}) {
    EXPECT_EQ(true, ValueText::boolean(text)) << text;
  }
  for (std::string const text : {"of", "False", "n", "0"}) {
    EXPECT_EQ(false, ValueText::boolean(text)) << text;
  }
  for (std::string const text : {"o", "", "truex", "2"}) {
    EXPECT_EQ(std::nullopt, ValueText::boolean(text)) << text;
  }
  const std::vector<std::string> choices{"off", "on", "error"};
  EXPECT_EQ(2U, ValueText::choice("ERROR", choices));
  EXPECT_EQ(1U, ValueText::choice("yes", choices));
  EXPECT_EQ(std::nullopt, ValueText::choice("yes", {"error"}));
  EXPECT_EQ("0.1", ValueText::ofReal(*ValueText::real("100us", "ms")));
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
  for (KnownSetting const& known : KnownSettings::all()) {
    EXPECT_TRUE(ids.insert(known.id).second) << known.name;
    EXPECT_TRUE(names.insert(known.name).second) << known.name;
    EXPECT_LT(known.id, SettingIds::kFirstMade);
    EXPECT_EQ(known.id < 1000, KnownSettings::announcesRestart(known.id)) << known.name;
  }
  EXPECT_FALSE(KnownSettings::announcesRestart(25));
}

TEST(SettingGroups, LoseNoSettingAndKeepToTheCapacities) {
  struct Case {
    int extension;
    std::size_t categories;  // 0: refused
    std::string last;
  };
  const Case cases[] = {
      {50, 3, "Customized Options"},
      {51, 4, "Customized Options (2)"},
      {1395, 30, "Customized Options (28)"},
      {1451, 30, "All Settings (30)"},
      {1498, 0, ""},
  };
  for (Case const& c : cases) {
    std::vector<std::string> names{"deadlock_timeout", "new_lock_setting", "no_such_group"};
    for (int i = 0; i < c.extension; ++i) names.push_back("module.s" + std::to_string(i));
    std::vector<SettingGroups::Member> members;
    for (std::string const& name : names) {
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
    for (auto const& group : groups) {
      EXPECT_LE(group.settingIds.size(), 50U);
      EXPECT_TRUE(ids.insert(group.id).second);
      seen.insert(group.settingIds.begin(), group.settingIds.end());
    }
    EXPECT_EQ(members.size(), seen.size());
  }
}

TEST(SettingText, IsOneLineThatTellsWhatAChangeNeeds) {
  Setting setting;
  setting.id = 103;
  setting.shortText = "A \\ and\nB.";
  setting.unit = "8kB";
  setting.needsRestart = true;
  EXPECT_EQ("A (backslash) and B. Unit: 8kB.", SettingText::of(setting));
  setting.id = 200000;
  EXPECT_NE(std::string::npos, SettingText::of(setting).find("restarted"));
  setting.id = 103;
  setting.needsRestart = false;
  EXPECT_NE(std::string::npos, SettingText::of(setting).find("without a restart"));
}

TEST(AlterSystem, QuotesNamesPartByPart) {
  EXPECT_EQ("ALTER SYSTEM SET \"a\".\"b\"\"c\" = 'x', 'y'",
            AlterSystem::set("a.b\"c", {"'x'", "'y'"}));
  EXPECT_EQ("ALTER SYSTEM RESET \"DateStyle\"", AlterSystem::reset("DateStyle"));
}

TEST(AlterSystem, KnowsWhichNamesAFileCanHold) {
  for (char const* const name : {"work_mem", "pg_many.select", "_a.b$1", "\xC3\xA4.x"}) {
    EXPECT_TRUE(AlterSystem::canName(name)) << name;
  }
  for (char const* const name : {"", "a.", ".b", "a.b.c", "a.1", "a b", "a.b\"; drop", "a-b"}) {
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
  for (auto const& [text, code] : cases) EXPECT_EQ(code, SqlState::lastIn(text)) << text;
}

TEST(CommandLine, GivesSettings) {
  const CommandLine line(
      "/a b/postgres \"-D\" \"/x y\" \"-c\" \"work_mem=8MB\" \"--Log-Lock-Waits=on\" \"-cgeqo=a=b\""
      " \"-p\" \"5\" \"-S\" \"100\"\n");
  EXPECT_EQ("100", line.value("work_mem"));
  EXPECT_EQ("on", line.value("log_lock_waits"));
  EXPECT_EQ("a=b", line.value("geqo"));
  EXPECT_EQ(std::nullopt, line.value("port"));
  EXPECT_EQ(std::nullopt, CommandLine("postgres").value("geqo"));
}

}  // namespace
