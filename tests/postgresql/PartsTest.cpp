// The parts of the PostgreSQL engine that need no server.
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

constexpr auto kNone = std::nullopt;

TEST(NameList, ReadsWhatPeopleAndServersWrite) {
  const struct {
    std::string text;
    std::optional<Names> ofPerson, ofServer;  // as identifiers
    std::string shown, stored;                // of the person's
  } cases[] = {
      {"  ", Names{}, Names{}, "", ""},
      {R"( A x,"B"	, "a,b", "c""d", " e", "f ", a_1)",
       Names{"A x", "B", "a,b", "c\"d", " e", "f ", "a_1"},
       Names{"a x", "B", "a,b", "c\"d", " e", "f ", "a_1"},
       R"(A x, B, "a,b", "c""d", " e", "f ", a_1)",
       R"("A x", "B", "a,b", "c""d", " e", "f ", a_1)"},
      {"\"\"", Names{""}, Names{""}, "\"\"", "\"\""},
      {"a,,", kNone, Names{"a", "", ""}, "", ""},
      {"\"a\"b", kNone, kNone, "", ""},
  };
  for (const auto& c : cases) {
    const auto names = NameList::ofPerson(c.text, NameList::Kind::identifiers);
    EXPECT_EQ(c.ofPerson, names) << c.text;
    EXPECT_EQ(c.ofServer, NameList::ofServer(c.text, NameList::Kind::identifiers)) << c.text;
    EXPECT_EQ(c.shown, NameList::shown(names.value_or(Names{})));
    EXPECT_EQ(c.stored, NameList::stored(names.value_or(Names{})));
  }
}

// What servers of versions 10 and 18 made of these texts.
TEST(ValueText, ReadsNumbersAsTheServerDoes) {
  using enum ValueText::Fractions;
  const struct {
    std::string text, unit;
    std::optional<int32_t> whole, near;  // with fractions refused and rounded
  } integers[] = {{" 700 MB ", "kB", 716800, 716800}, {"7MB", "ms", kNone, kNone},
                  {"900000B", "8kB", 109, 110},       {"1.1GB", "8kB", kNone, 144128},
                  {"13824kB", "MB", 13, 14},          {"2TB", "kB", kNone, kNone},
                  {"70900ms", "s", 70, 71},           {"2.7d", "ms", kNone, 234000000},
                  {"712.5", "ms", kNone, 712},        {".5GB", "kB", kNone, 524288},
                  {"-0700", "kB", -448, -448},        {"-0x1e", "kB", -30, -30},
                  {"0x40.8p1", "kB", kNone, 129},     {"1E3kB", "kB", kNone, 1000}};
  for (const auto& c : integers) {
    EXPECT_EQ(c.whole, ValueText::integer(c.text, c.unit, refused)) << c.text;
    EXPECT_EQ(c.near, ValueText::integer(c.text, c.unit, rounded)) << c.text;
  }
  for (std::string const text :
       {"7 MB x", "+-700", "08", "0x", "1e", "99999999999999999999B", "", "7mb"}) {
    EXPECT_EQ(kNone, ValueText::integer(text, "kB", rounded)) << text;
  }
  const struct {
    std::string text, unit, shown;
  } reals[] = {{"100us", "ms", "0.1"}, {"0.0015ms", "ms", "0.002"},     {"0.0123456s", "ms", "12"},
               {"0x1.8p1", "ms", "3"}, {"1.23456789", "ms", "1.23457"}, {"0120", "ms", "120"}};
  for (const auto& c : reals) {
    EXPECT_EQ(c.shown, ValueText::ofReal(ValueText::real(c.text, c.unit).value())) << c.text;
  }
  for (std::string const text : {"1kB", "1e400", "infinity", "+-1"}) {
    EXPECT_EQ(kNone, ValueText::real(text, "ms")) << text;
  }
}

TEST(ValueText, ReadsWords) {
  const std::pair<std::string, std::optional<bool>> words[] = {
      {"TRUE", true}, {"y", true}, {"1", true},     {"of", false},
      {"o", kNone},   {"", kNone}, {"truex", kNone}};
  for (const auto& [text, value] : words) EXPECT_EQ(value, ValueText::boolean(text)) << text;
  EXPECT_EQ(2U, ValueText::choice("ERROR", {{"off"}, {"on"}, {"error"}}));
  EXPECT_EQ(1U, ValueText::choice("yes", {{"off"}, {"on"}, {"error"}}));
  EXPECT_EQ(kNone, ValueText::choice("yes", {{"error"}}));
}

TEST(SettingIds, StayWhatTheyAre) {
  // The same name in other letters wants the same id; one of the two gives way.
  const std::string_view name = "auto_explain.log_format", same = "Auto_Explain.Log_Format";
  const int32_t id = 110945204, other = 992866709;
  EXPECT_EQ((std::vector{123, other, 1224, id}), SettingIds::of({"port", name, "work_mem", same}));
  EXPECT_EQ((std::vector{id, other, 74}), SettingIds::of({same, name, "shared_preload_libraries"}));
}

TEST(KnownSettings, AgreeWithEveryVersion) {
  // In some versions a change needs a restart and in others not: the description tells.
  const std::set<std::string> sometimes{"allow_system_table_mods", "autovacuum_max_workers",
                                        "primary_conninfo", "primary_slot_name", "restore_command"};
  std::set<std::string> told;
  std::set<std::string_view> names, lists;
  std::map<std::string, std::size_t> numbers;  // of choices
  std::ifstream file(KNOB_SOURCE_DIR "/tests/postgresql/data/settings.tsv");
  for (std::string line; std::getline(file, line);) {
    if (line.starts_with('#')) continue;
    SCOPED_TRACE(line);
    std::istringstream fields(line);
    std::string name, context, type, listed;
    fields >> name >> context >> type;
    std::getline(fields.ignore(), listed, '\t');
    const KnownSetting* const known = KnownSettings::find(name);
    ASSERT_TRUE(known) << "has no id";
    Setting setting;
    setting.id = known->id;
    setting.needsRestart = context == "postmaster";
    const std::string text = SettingText::of(setting);
    if (!text.empty()) told.insert(name);
    EXPECT_EQ(setting.needsRestart,
              KnownSettings::announcesRestart(known->id)
                  ? text != "This server takes a change without a restart."
                  : text == "A change takes effect when the server is restarted.");
    if (type == "names") lists.insert(known->name);
    EXPECT_TRUE(type != "enum" || !known->choices.empty()) << "no order is known";
    const Names texts = NameList::ofServer(listed, NameList::Kind::names).value();
    const auto choices = Choices::of(name, texts);
    for (const std::string& choice : texts) {
      const auto item = ValueText::choice(choice, choices);
      ASSERT_TRUE(item && choices[*item].available) << choice;
      EXPECT_EQ(*item, numbers.emplace(name + choice, *item).first->second) << choice;
    }
  }
  EXPECT_EQ(sometimes, told);
  EXPECT_LT(100U, numbers.size());
  std::set<int32_t> ids;
  for (const KnownSetting& known : KnownSettings::all()) {
    EXPECT_TRUE(ids.insert(known.id).second && names.insert(known.name).second) << known.name;
    EXPECT_EQ(lists.contains(known.name), NameList::kindOf(known.name) != NameList::Kind::none);
    EXPECT_LT(known.id, SettingIds::kFirstMade);
    EXPECT_EQ(known.id < 1000, KnownSettings::announcesRestart(known.id)) << known.name;
  }
}

TEST(Choices, OfOtherServersKeepTheirNumberAndAreNoneHere) {
  const auto shown = [](const char* setting, const Names& listed) {
    Names texts;
    for (const Choice& one : Choices::of(setting, listed)) texts.push_back(Choices::shown(one));
    return texts;
  };
  EXPECT_EQ((Names{"off", "on", "pglz", "lz4 (not on this server)", "zstd", "new"}),
            shown("wal_compression", {"pglz", "zstd", "on", "off", "new"}));
  EXPECT_EQ((Names{"off (not on this server)", "on"}), shown("wal_compression", {"on"}));
}

TEST(SettingGroups, LoseNoSettingAndKeepToTheCapacities) {
  // With so many settings of an extension.
  const std::pair<int, std::string> lastCategoryButOne[] = {
      {51, "Customized Options (2)"}, {1401, "All Settings (28)"}, {1498, "refused"}};
  for (const auto& [ofExtension, name] : lastCategoryButOne) {
    Names names{"deadlock_timeout", "new_lock_setting", "no_such_group"};
    for (int i = 0; i < ofExtension; ++i) names.push_back("module.s" + std::to_string(i));
    std::vector<SettingGroups::Member> members;
    for (const std::string& each : names) {
      members.push_back({each, "Sperren / Teil", static_cast<int32_t>(members.size())});
    }
    members[2].serverCategory = "Neues";
    if (name == "refused") {
      EXPECT_THROW(SettingGroups::of(members), tn::TuningError);
      continue;
    }
    const auto groups = SettingGroups::of(members);
    EXPECT_GE(30U, groups.size());
    EXPECT_EQ(name, groups[groups.size() - 2].name);
    std::set<int32_t> seen, ids;
    for (const auto& group : groups) {
      EXPECT_LE(group.settingIds.size(), 50U);
      ids.insert(group.id);
      seen.insert(group.settingIds.begin(), group.settingIds.end());
    }
    EXPECT_EQ(groups.size(), ids.size());
    EXPECT_EQ(members.size(), seen.size());
  }
}

TEST(AlterSystem, QuotesNamesPartByPartAndKnowsWhichAFileCanHold) {
  EXPECT_EQ("ALTER SYSTEM SET \"a\".\"b\"\"c\" = 'x', 'y'",
            AlterSystem::set("a.b\"c", {"'x'", "'y'"}));
  EXPECT_TRUE(AlterSystem::canName("_a.b$1") && AlterSystem::canName("\xC3\xA4.x"));
  for (const char* const name : {"", "a.", ".b", "a.b.c", "a.1", "a b", "a.b\"; drop", "a-b"}) {
    EXPECT_FALSE(AlterSystem::canName(name)) << name;
  }
}

TEST(SqlState, IsFoundInErrorsOfEveryLanguage) {
  EXPECT_EQ("3D000", SqlState::lastIn("»x« fehlt: FATAL:  57P03\nb: FATAL:  3D000\nc: x\n"));
  EXPECT_EQ("", SqlState::lastIn("could not connect\n\tIs the server running?\nx:  ab\n"));
}

TEST(NewValue, LeavesAListThatIsOneTextAsItRuns) {
  Setting setting;
  setting.list = NameList::Kind::names;
  setting.listIsOneText = true;
  setting.running = "/a,/b";
  setting.current = "/a, /b";
  for (const auto& [given, stored] : {std::pair{"/a,  /b", "/a,/b"}, {"\"/a,c\"", "\"/a,c\""}}) {
    EXPECT_EQ(Names{stored}, NewValue::ofText(setting, given).parts());
  }
}

}  // namespace
