#include "tuning/registry/Catalogue.h"

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

constexpr int32_t kLargestSettingId = 301;

using SettingIndex = std::array<const CatalogueSetting*, kLargestSettingId + 1>;

constexpr SettingIndex makeSettingIndex() {
  SettingIndex index{};
  for (const CatalogueCategory& category : kCategories) {
    for (const CatalogueSetting& setting : category.settings) {
      index.at(static_cast<std::size_t>(setting.id)) = &setting;
    }
  }
  return index;
}

// Built by the compiler, which also refuses an id outside the index.
constexpr SettingIndex kSettingsById = makeSettingIndex();

}  // namespace

std::span<const CatalogueCategory> Catalogue::categories() { return kCategories; }

const CatalogueCategory* Catalogue::category(int32_t categoryId) {
  for (const CatalogueCategory& category : kCategories) {
    if (category.id == categoryId) return &category;
  }
  return nullptr;
}

const CatalogueSetting* Catalogue::setting(int32_t settingId) {
  const auto position = static_cast<std::size_t>(settingId);  // of a negative id: past the end
  return position < kSettingsById.size() ? kSettingsById[position] : nullptr;
}

}  // namespace tn::registry
