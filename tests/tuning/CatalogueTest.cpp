#include <algorithm>
#include <gtest/gtest.h>
#include <set>
#include <string>

#include "tuning/Characters.h"
#include "tuning/registry/Catalogue.h"
#include "tuning/registry/ValueRules.h"

namespace tn::registry {
namespace {

// Messages, JSON and settings files carry it as it is: nothing to escape, no blanks to be lost.
bool isPlain(std::string_view text, std::size_t longest = 60) {
  const std::string padded = " " + std::string(text) + " ";
  return text.size() <= longest && padded.find("  ") == padded.npos &&
         text.find_first_of("\"\\%") == text.npos &&
         std::ranges::all_of(text, [](char c) { return c >= ' ' && c <= '~'; });
}

void checkValues(const CatalogueSetting& setting) {
  const auto words = setting.words;
  EXPECT_EQ(std::set(words.begin(), words.end()).size(), words.size());
  for (std::string_view word : words) EXPECT_TRUE(isPlain(word)) << word;
  EXPECT_EQ(words.empty(), setting.type == TN_TYPE_INTEGER || setting.type == TN_TYPE_STRING);
  if (setting.type == TN_TYPE_BOOLEAN) {
    ASSERT_EQ(words.size(), 2U);
    // Every boolean setting takes these, so none may use them the other way round.
    EXPECT_TRUE(words[0] != "false" && words[0] != "0" && words[1] != "true" && words[1] != "1");
  } else if (setting.type == TN_TYPE_STRING) {
    EXPECT_EQ(setting.minimum, setting.id == TN_EMPTY_VALUE_SETTING ? 0 : 1);
    EXPECT_TRUE(setting.minimum == 0 || isPlain(setting.defaultValue, 200));
    EXPECT_LT(setting.maximum, TN_TEXT_SIZE);
  } else {
    EXPECT_EQ(formatItems(parseItems(setting.defaultValue).value()), setting.defaultValue);
  }
  EXPECT_EQ(refusal(setting, setting.defaultValue), TN_SUCCESS) << setting.defaultValue;
}

TEST(Catalogue, IsSoundInEveryPartAndHoldsNothingTwice) {
  const auto catalogue = Catalogue::compiledIn();
  std::set<int32_t> restartIds;
  std::set<std::string> names;
  EXPECT_LE(std::ssize(catalogue->categories()), TN_CATEGORY_CAPACITY);
  for (const CatalogueCategory& category : catalogue->categories()) {
    SCOPED_TRACE(category.name);
    EXPECT_EQ(catalogue->category(category.id), &category);
    EXPECT_TRUE(isPlain(category.name));
    EXPECT_LE(std::ssize(category.settings), TN_SETTING_CAPACITY);
    EXPECT_TRUE(std::ranges::any_of(category.settings, &CatalogueSetting::available));
    for (const CatalogueSetting& setting : category.settings) {
      SCOPED_TRACE(setting.id);
      checkValues(setting);
      EXPECT_TRUE(setting.id >= 1 && setting.id <= 301);
      EXPECT_EQ(catalogue->setting(setting.id), &setting);
      // Names stand on lines of their own in a settings file, where tags end with a colon.
      EXPECT_TRUE(isPlain(setting.name) && setting.name.find(':') == setting.name.npos);
      EXPECT_TRUE(isPlain(setting.description, 1500));
      std::string name(setting.name);
      std::ranges::transform(name, name.begin(), lower);
      EXPECT_TRUE(names.insert(name).second) << name;
      const bool restart = setting.description.ends_with(". Takes effect after a restart.");
      if (restart) restartIds.insert(setting.id);
    }
  }
  EXPECT_TRUE(std::ranges::equal(restartIds, TN_RESTART_SETTINGS));
}

}  // namespace
}  // namespace tn::registry
