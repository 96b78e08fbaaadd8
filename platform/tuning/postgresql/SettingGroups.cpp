#include "tuning/postgresql/SettingGroups.h"

#include <algorithm>
#include <map>

#include "service/TuningInterface.h"
#include "tuning/TuningError.h"
#include "tuning/postgresql/KnownSettings.h"

namespace tn::postgresql {
namespace {

constexpr int32_t kFirstForeignId = 31;  // of categories that the table does not have
constexpr int32_t kPartDistance = 1000;  // between the ids of a category and of its second part
constexpr int32_t kEverythingId = 30;
constexpr std::string_view kEverythingName = "All Settings";

using Translation = std::map<std::string_view, Category>;

std::string_view groupIn(std::string_view serverCategory) {
  return serverCategory.substr(0, serverCategory.find(" / "));
}

Translation translationFrom(const std::vector<SettingGroups::Member>& members) {
  Translation translation;
  for (const auto& member : members) {
    const KnownSetting* const known = KnownSettings::find(member.name);
    if (known) translation.emplace(groupIn(member.serverCategory), known->category);
  }
  return translation;
}

// Sorts by the table's order first, then by the server's text.
struct Key {
  int32_t id;
  std::string_view text;
  auto operator<=>(const Key&) const = default;
};

Key tableKey(Category category) {
  return {static_cast<int32_t>(category), KnownSettings::categoryName(category)};
}

Key keyOf(const SettingGroups::Member& member, const Translation& translation) {
  if (const KnownSetting* known = KnownSettings::find(member.name)) {
    return tableKey(known->category);
  }
  if (member.name.find('.') != std::string_view::npos) {
    return tableKey(Category::customizedOptions);
  }
  const std::string_view group = groupIn(member.serverCategory);
  const auto known = translation.find(group);
  return known == translation.end() ? Key{kFirstForeignId, group} : tableKey(known->second);
}

void appendParts(std::vector<SettingCategory>& list, int32_t id, std::string_view name,
                 const std::vector<int32_t>& settingIds) {
  constexpr std::size_t kPart = TN_SETTING_CAPACITY;
  for (std::size_t begin = 0; begin < settingIds.size(); begin += kPart) {
    const std::size_t part = begin / kPart;
    SettingCategory category;
    category.id = id + static_cast<int32_t>(part) * kPartDistance;
    category.name = name;
    if (part > 0) category.name += " (" + std::to_string(part + 1) + ")";
    const auto first = settingIds.begin() + static_cast<std::ptrdiff_t>(begin);
    const auto count = std::min(kPart, settingIds.size() - begin);
    category.settingIds.assign(first, first + static_cast<std::ptrdiff_t>(count));
    list.push_back(std::move(category));
  }
}

std::vector<SettingCategory> everythingInOne(const std::vector<SettingGroups::Member>& members) {
  std::vector<int32_t> ids(members.size());
  std::transform(members.begin(), members.end(), ids.begin(),
                 [](const auto& member) { return member.id; });
  std::vector<SettingCategory> list;
  appendParts(list, kEverythingId, kEverythingName, ids);
  return list;
}

}  // namespace

std::vector<SettingCategory> SettingGroups::of(const std::vector<Member>& members) {
  const Translation translation = translationFrom(members);
  std::map<Key, std::vector<int32_t>> groups;
  for (const Member& member : members) groups[keyOf(member, translation)].push_back(member.id);

  std::vector<SettingCategory> list;
  int32_t foreignId = kFirstForeignId;
  for (const auto& [key, ids] : groups) {
    appendParts(list, key.id == kFirstForeignId ? foreignId++ : key.id, key.text, ids);
  }
  if (list.size() > TN_CATEGORY_CAPACITY) list = everythingInOne(members);
  if (list.size() > TN_CATEGORY_CAPACITY) throw TuningError(TN_TOO_MANY_SETTINGS);
  return list;
}

}  // namespace tn::postgresql
