#include <algorithm>
#include <cctype>
#include <gtest/gtest.h>
#include <set>
#include <span>
#include <string>
#include <vector>

#include "tuning/registry/Catalogue.h"
#include "tuning/registry/ValueRules.h"

namespace tn::registry {
namespace {

const auto kCatalogue = Catalogue::compiledIn();

std::vector<CatalogueSetting> allSettings() {
  std::vector<CatalogueSetting> all;
  for (const CatalogueCategory& category : kCatalogue->categories()) {
    all.insert(all.end(), category.settings.begin(), category.settings.end());
  }
  return all;
}

std::string lower(std::string_view text) {
  std::string result(text);
  std::transform(text.begin(), text.end(), result.begin(), [](int c) { return std::tolower(c); });
  return result;
}

// Messages, JSON and settings files carry it as it is: nothing to escape, no blanks to be lost.
bool isPlain(std::string_view text, std::size_t longest) {
  const std::string padded = " " + std::string(text) + " ";
  return text.size() <= longest && padded.find("  ") == padded.npos &&
         text.find_first_of("\"\\%") == text.npos &&
         std::all_of(text.begin(), text.end(), [](char c) { return c >= ' ' && c <= '~'; });
}

void checkValues(const CatalogueSetting& setting) {
  const std::span<const std::string_view> words = setting.words;
  EXPECT_EQ(std::set(words.begin(), words.end()).size(), words.size());
  for (std::string_view word : words) EXPECT_TRUE(isPlain(word, 60)) << word;
  EXPECT_EQ(words.empty(), setting.type == TN_TYPE_INTEGER || setting.type == TN_TYPE_STRING);
  if (setting.type == TN_TYPE_BOOLEAN) {
    ASSERT_EQ(words.size(), 2U);
    // Every boolean setting takes these, so none may use them the other way round.
    EXPECT_TRUE(words[0] != "false" && words[0] != "0" && words[1] != "true" && words[1] != "1");
  } else if (setting.type == TN_TYPE_STRING) {
    EXPECT_EQ(setting.minimum, setting.id == TN_EMPTY_VALUE_SETTING ? 0 : 1);
    EXPECT_TRUE(setting.id == TN_EMPTY_VALUE_SETTING || isPlain(setting.defaultValue, 200));
    EXPECT_LT(setting.maximum, TN_TEXT_SIZE);
  } else {
    EXPECT_EQ(formatItems(parseItems(setting.defaultValue).value()), setting.defaultValue);
  }
  EXPECT_EQ(refusal(setting, setting.defaultValue), TN_SUCCESS) << setting.defaultValue;
}

TEST(Catalogue, EverySettingIsSound) {
  std::set<int32_t> restartIds;
  for (const CatalogueSetting& setting : allSettings()) {
    SCOPED_TRACE(setting.id);
    checkValues(setting);
    EXPECT_TRUE(isPlain(setting.name, 60) && isPlain(setting.description, 1500));
    // Names stand on lines of their own in a settings file, where tags end with a colon.
    EXPECT_EQ(setting.name.find(':'), setting.name.npos);
    const bool restart = setting.description.ends_with(". Takes effect after a restart.");
    if (restart) restartIds.insert(setting.id);
  }
  EXPECT_TRUE(std::ranges::equal(restartIds, TN_RESTART_SETTINGS));
}

TEST(Catalogue, LookupsAgreeWithTheListingAndNothingIsThereTwice) {
  std::set<std::string> names;
  EXPECT_LE(std::ssize(kCatalogue->categories()), TN_CATEGORY_CAPACITY);
  for (const CatalogueCategory& category : kCatalogue->categories()) {
    SCOPED_TRACE(category.name);
    EXPECT_EQ(kCatalogue->category(category.id), &category);
    EXPECT_TRUE(isPlain(category.name, 60));
    EXPECT_LE(std::ssize(category.settings), TN_SETTING_CAPACITY);
    bool available = false;
    for (const CatalogueSetting& setting : category.settings) {
      available |= setting.available;
      EXPECT_TRUE(setting.id >= 1 && setting.id <= 301) << setting.id;
      EXPECT_EQ(kCatalogue->setting(setting.id), &setting) << setting.id;
      EXPECT_TRUE(names.insert(lower(setting.name)).second) << setting.name;
    }
    EXPECT_TRUE(available);
  }
}

}  // namespace
}  // namespace tn::registry
