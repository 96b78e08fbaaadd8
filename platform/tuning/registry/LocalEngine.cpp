#include "tuning/registry/LocalEngine.h"

#include <numeric>
#include <utility>

#include "tuning/TuningError.h"
#include "tuning/registry/ValueRules.h"

namespace tn::registry {
namespace {

bool isSelection(TnValueType type) {
  return type == TN_TYPE_SINGLE_SELECTION || type == TN_TYPE_MULTIPLE_SELECTION;
}

}  // namespace

LocalEngine::LocalEngine(std::shared_ptr<const Catalogue> catalogue, std::unique_ptr<Store> store)
    : catalogue_(std::move(catalogue)), store_(std::move(store)) {}

const CatalogueCategory& LocalEngine::knownCategory(int32_t categoryId) const {
  const CatalogueCategory* category = catalogue_->category(categoryId);
  if (category == nullptr) throw TuningError(TN_UNKNOWN_CATEGORY);
  return *category;
}

const CatalogueSetting& LocalEngine::knownSetting(int32_t settingId) const {
  const CatalogueSetting* setting = catalogue_->setting(settingId);
  if (setting == nullptr) throw TuningError(TN_UNKNOWN_SETTING);
  return *setting;
}

const CatalogueSetting& LocalEngine::settingOfType(int32_t settingId, TnValueType type) const {
  const CatalogueSetting& setting = knownSetting(settingId);
  if (setting.type != type && !(isSelection(setting.type) && isSelection(type))) {
    throw TuningError(TN_WRONG_VALUE_TYPE);
  }
  return setting;
}

const CatalogueSetting& LocalEngine::usableSetting(int32_t settingId, TnValueType type) const {
  if (!knownSetting(settingId).available) throw TuningError(TN_SETTING_UNAVAILABLE);
  return settingOfType(settingId, type);
}

void LocalEngine::connect() { values_ = store_->readAll(); }

std::vector<int32_t> LocalEngine::categories() {
  std::vector<int32_t> ids;
  for (const CatalogueCategory& category : catalogue_->categories()) ids.push_back(category.id);
  return ids;
}

CategoryInfo LocalEngine::category(int32_t categoryId) {
  const CatalogueCategory& category = knownCategory(categoryId);
  CategoryInfo info{std::string(category.name), 0};
  for (const CatalogueSetting& setting : category.settings) {
    const auto kept = values().find(setting.id);
    if (kept != values().end() && kept->second != setting.defaultValue) ++info.changed;
  }
  return info;
}

std::vector<int32_t> LocalEngine::settings(int32_t categoryId) {
  std::vector<int32_t> ids;
  for (const CatalogueSetting& setting : knownCategory(categoryId).settings) {
    ids.push_back(setting.id);
  }
  return ids;
}

SettingInfo LocalEngine::setting(int32_t settingId) {
  const CatalogueSetting& setting = knownSetting(settingId);
  return {setting.type, std::string(setting.name), setting.side == Side::server};
}

bool LocalEngine::isAvailable(int32_t settingId) {
  const CatalogueSetting* setting = catalogue_->setting(settingId);
  return setting != nullptr && setting->available;
}

std::string LocalEngine::description(int32_t settingId) {
  return std::string(knownSetting(settingId).description);
}

bool LocalEngine::booleanValue(int32_t settingId, Selector selector) {
  return value(usableSetting(settingId, TN_TYPE_BOOLEAN), selector) == "1";
}

int32_t LocalEngine::integerValue(int32_t settingId, Selector selector) {
  return parseInteger(value(usableSetting(settingId, TN_TYPE_INTEGER), selector)).value();
}

std::string LocalEngine::stringValue(int32_t settingId, Selector selector) {
  return std::string(value(usableSetting(settingId, TN_TYPE_STRING), selector));
}

std::vector<int32_t> LocalEngine::selectionValue(int32_t settingId, Selector selector) {
  const CatalogueSetting& setting = usableSetting(settingId, TN_TYPE_MULTIPLE_SELECTION);
  return parseItems(value(setting, selector)).value();
}

BooleanWords LocalEngine::booleanWords(int32_t settingId) {
  const auto words = settingOfType(settingId, TN_TYPE_BOOLEAN).words;
  return {std::string(words[0]), std::string(words[1])};
}

Limits LocalEngine::limits(int32_t settingId) {
  const CatalogueSetting& setting = settingOfType(settingId, TN_TYPE_INTEGER);
  return {setting.maximum, setting.minimum};
}

std::vector<int32_t> LocalEngine::selectionItems(int32_t settingId) {
  std::vector<int32_t> items(settingOfType(settingId, TN_TYPE_MULTIPLE_SELECTION).words.size());
  std::iota(items.begin(), items.end(), 0);
  return items;
}

std::string LocalEngine::selectionText(int32_t settingId, int32_t item) {
  const auto words = settingOfType(settingId, TN_TYPE_MULTIPLE_SELECTION).words;
  if (item < 0 || static_cast<size_t>(item) >= words.size()) throw TuningError(TN_UNKNOWN_ITEM);
  return std::string(words[static_cast<size_t>(item)]);
}

void LocalEngine::setBoolean(int32_t settingId, bool value) {
  keep(usableSetting(settingId, TN_TYPE_BOOLEAN), value ? "1" : "0");
}

void LocalEngine::setInteger(int32_t settingId, int64_t value) {
  keep(usableSetting(settingId, TN_TYPE_INTEGER), std::to_string(value));
}

void LocalEngine::setString(int32_t settingId, const std::string& value) {
  keep(usableSetting(settingId, TN_TYPE_STRING), value);
}

void LocalEngine::setSelection(int32_t settingId, const std::vector<int32_t>& items) {
  keep(usableSetting(settingId, TN_TYPE_MULTIPLE_SELECTION), formatItems(items));
}

const LocalEngine::Values& LocalEngine::values() {
  if (!values_) values_ = store_->readAll();
  return *values_;
}

std::string_view LocalEngine::value(const CatalogueSetting& setting, Selector selector) {
  if (selector == Selector::defaultValue) return setting.defaultValue;
  const auto kept = values().find(setting.id);
  if (kept == values().end()) return setting.defaultValue;
  if (refusal(setting, kept->second) != TN_SUCCESS) throw TuningError(TN_VALUE_OUTSIDE_CATALOGUE);
  return kept->second;
}

void LocalEngine::keep(const CatalogueSetting& setting, const std::string& canonical) {
  const TnStatus refused = refusal(setting, canonical);
  if (refused != TN_SUCCESS) throw TuningError(refused);

  values_ = store_->readAll();
  const auto kept = values_->find(setting.id);
  if (canonical == (kept == values_->end() ? setting.defaultValue : kept->second)) return;
  values_.reset();
  store_->write(setting.id, canonical);
}

}  // namespace tn::registry
