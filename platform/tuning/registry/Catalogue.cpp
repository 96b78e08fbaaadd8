#include "tuning/registry/Catalogue.h"

#include <algorithm>
#include <array>
#include <cstddef>

#include "tuning/registry/catalogue/BackgroundWork.h"
#include "tuning/registry/catalogue/Backup.h"
#include "tuning/registry/catalogue/Caches.h"
#include "tuning/registry/catalogue/ChangeLog.h"
#include "tuning/registry/catalogue/ClientSide.h"
#include "tuning/registry/catalogue/Files.h"
#include "tuning/registry/catalogue/General.h"
#include "tuning/registry/catalogue/Locking.h"
#include "tuning/registry/catalogue/Memory.h"
#include "tuning/registry/catalogue/Monitoring.h"
#include "tuning/registry/catalogue/Network.h"
#include "tuning/registry/catalogue/QueryPlanning.h"
#include "tuning/registry/catalogue/Replication.h"
#include "tuning/registry/catalogue/Security.h"
#include "tuning/registry/catalogue/TextAndLocale.h"
#include "tuning/registry/catalogue/Transactions.h"

namespace tn::registry {

namespace {

constexpr CatalogueCategory kCategories[] = {
    {1, "General", catalogue::kGeneral},
    {2, "Memory", catalogue::kMemory},
    {3, "Caches", catalogue::kCaches},
    {4, "Files", catalogue::kFiles},
    {5, "Change Log", catalogue::kChangeLog},
    {6, "Transactions", catalogue::kTransactions},
    {7, "Locking", catalogue::kLocking},
    {8, "Query Planning", catalogue::kQueryPlanning},
    {9, "Background Work", catalogue::kBackgroundWork},
    {10, "Security", catalogue::kSecurity},
    {11, "Network", catalogue::kNetwork},
    {12, "Client Side", catalogue::kClientSide},
    {13, "Replication", catalogue::kReplication},
    {14, "Backup", catalogue::kBackup},
    {15, "Monitoring", catalogue::kMonitoring},
    {16, "Text and Locale", catalogue::kTextAndLocale},
};

constexpr bool hasSmallerId(const CatalogueSetting* left, const CatalogueSetting* right) {
  return left->id < right->id;
}

constexpr std::size_t countSettings() {
  std::size_t count = 0;
  for (const CatalogueCategory& category : kCategories) count += category.settings.size();
  return count;
}

constexpr auto sortSettings() {
  std::array<const CatalogueSetting*, countSettings()> sorted{};
  std::size_t count = 0;
  for (const CatalogueCategory& category : kCategories) {
    for (const CatalogueSetting& setting : category.settings) sorted.at(count++) = &setting;
  }
  std::sort(sorted.begin(), sorted.end(), hasSmallerId);
  return sorted;
}

// Sorted by the compiler.
constexpr auto kSettingsById = sortSettings();
constexpr Catalogue kCompiledIn(kCategories, kSettingsById);

}  // namespace

// It shares nothing, so it costs no counter.
std::shared_ptr<const Catalogue> Catalogue::compiledIn() {
  return {std::shared_ptr<const Catalogue>(), &kCompiledIn};
}

const CatalogueCategory* Catalogue::category(int32_t categoryId) const {
  const auto found = std::ranges::find(categories_, categoryId, &CatalogueCategory::id);
  return found == categories_.end() ? nullptr : &*found;
}

const CatalogueSetting* Catalogue::setting(int32_t settingId) const {
  const auto found = std::ranges::lower_bound(settingsById_, settingId, {}, &CatalogueSetting::id);
  return found == settingsById_.end() || (*found)->id != settingId ? nullptr : *found;
}

}  // namespace tn::registry
