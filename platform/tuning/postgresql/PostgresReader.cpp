#include "tuning/postgresql/PostgresReader.h"

#include <algorithm>
#include <numeric>

#include "tuning/TuningError.h"
#include "tuning/postgresql/AlterSystem.h"
#include "tuning/postgresql/KnownSettings.h"
#include "tuning/postgresql/SettingText.h"
#include "tuning/postgresql/ValueText.h"

namespace tn::postgresql {

PostgresReader::PostgresReader(const char* server, const char* user, const char* password)
    : connection_(server, user, password), snapshot_(connection_) {}

std::vector<int32_t> PostgresReader::categories() {
  std::vector<int32_t> ids;
  for (const SettingCategory& category : snapshot_.categories()) ids.push_back(category.id);
  return ids;
}

CategoryInfo PostgresReader::category(int32_t categoryId) {
  beforeReading();
  const SettingCategory& category = knownCategory(categoryId);
  const auto changed =
      std::count_if(category.settingIds.begin(), category.settingIds.end(), [this](int32_t id) {
        const Setting& setting = known(id);
        return setting.current != setting.fallback;
      });
  return {category.name, static_cast<int32_t>(changed)};
}

std::vector<int32_t> PostgresReader::settings(int32_t categoryId) {
  return knownCategory(categoryId).settingIds;
}

SettingInfo PostgresReader::setting(int32_t settingId) {
  const Setting& setting = known(settingId);
  return {setting.type, std::string(setting.name), setting.server};
}

bool PostgresReader::isAvailable(int32_t settingId) { return snapshot_.contains(settingId); }

std::string PostgresReader::description(int32_t settingId) {
  beforeReading();
  return SettingText::of(known(settingId));
}

bool PostgresReader::booleanValue(int32_t settingId, Selector selector) {
  return value(settingId, TN_TYPE_BOOLEAN, selector) == Setting::kOn;
}

int32_t PostgresReader::integerValue(int32_t settingId, Selector selector) {
  return ValueText::integer(value(settingId, TN_TYPE_INTEGER, selector), {}).value_or(0);
}

std::string PostgresReader::stringValue(int32_t settingId, Selector selector) {
  return value(settingId, TN_TYPE_STRING, selector);
}

std::vector<int32_t> PostgresReader::selectionValue(int32_t settingId, Selector selector) {
  const std::string& text = value(settingId, TN_TYPE_SINGLE_SELECTION, selector);
  const auto& items = known(settingId).items;
  const auto found = std::find_if(items.begin(), items.end(),
                                  [&text](const Choice& item) { return item.text == text; });
  return {static_cast<int32_t>(found - items.begin())};
}

BooleanWords PostgresReader::booleanWords(int32_t settingId) {
  known(settingId, TN_TYPE_BOOLEAN);
  return {Setting::kOn, Setting::kOff};
}

Limits PostgresReader::limits(int32_t settingId) {
  const Setting& setting = known(settingId, TN_TYPE_INTEGER);
  return {setting.highest, setting.lowest};
}

std::vector<int32_t> PostgresReader::selectionItems(int32_t settingId) {
  std::vector<int32_t> positions(known(settingId, TN_TYPE_SINGLE_SELECTION).items.size());
  std::iota(positions.begin(), positions.end(), 0);
  return positions;
}

std::string PostgresReader::selectionText(int32_t settingId, int32_t item) {
  const auto& items = known(settingId, TN_TYPE_SINGLE_SELECTION).items;
  if (item < 0 || static_cast<std::size_t>(item) >= items.size()) {
    throw TuningError(TN_UNKNOWN_ITEM);
  }
  return Choices::shown(items[static_cast<std::size_t>(item)]);
}

void PostgresReader::setBoolean(int32_t settingId, bool value) {
  store(known(settingId, TN_TYPE_BOOLEAN), NewValue::ofBoolean(value));
}

void PostgresReader::setInteger(int32_t settingId, int64_t value) {
  Setting& setting = known(settingId, TN_TYPE_INTEGER);
  store(setting, NewValue::ofInteger(setting, value));
}

void PostgresReader::setString(int32_t settingId, const std::string& value) {
  Setting& setting = known(settingId, TN_TYPE_STRING);
  store(setting, NewValue::ofText(setting, value));
}

void PostgresReader::setSelection(int32_t settingId, const std::vector<int32_t>& items) {
  Setting& setting = known(settingId, TN_TYPE_SINGLE_SELECTION);
  store(setting, NewValue::ofChoice(setting, items));
}

const SettingCategory& PostgresReader::knownCategory(int32_t categoryId) {
  const SettingCategory* const category = snapshot_.category(categoryId);
  if (!category) throw TuningError(TN_UNKNOWN_CATEGORY);
  return *category;
}

const Setting& PostgresReader::known(int32_t settingId) {
  const Setting* const setting = snapshot_.setting(settingId);
  if (!setting) throw TuningError(TN_UNKNOWN_SETTING);
  return *setting;
}

Setting& PostgresReader::known(int32_t settingId, TnValueType type) {
  Setting* const setting = snapshot_.setting(settingId);
  if (!setting) throw TuningError(TN_UNKNOWN_SETTING);
  if (setting->type != type) throw TuningError(TN_WRONG_VALUE_TYPE);
  return *setting;
}

const std::string& PostgresReader::value(int32_t settingId, TnValueType type, Selector selector) {
  if (selector == Selector::currentValue) beforeReading();
  const Setting& setting = known(settingId, type);
  return selector == Selector::defaultValue ? setting.fallback : setting.current;
}

// Where the server keeps its own files is not for carrying to another server.
bool PostgresReader::isReadOnly(const Setting& setting) {
  const KnownSetting* const known = KnownSettings::find(setting.name);
  return setting.preset || !AlterSystem::canName(setting.name) ||
         (known && known->category == Category::fileLocations);
}

void PostgresReader::readAgain() { snapshot_ = Snapshot(connection_); }

}  // namespace tn::postgresql
