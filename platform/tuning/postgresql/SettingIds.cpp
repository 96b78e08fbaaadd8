#include "tuning/postgresql/SettingIds.h"

#include <algorithm>
#include <limits>
#include <set>

#include "tuning/postgresql/KnownSettings.h"

namespace tn::postgresql {
namespace {

// FNV-1a, 32 bits. Never to be changed: it would give settings other ids.
constexpr uint32_t kHashStart = 2166136261U;
constexpr uint32_t kHashFactor = 16777619U;

uint32_t hashOf(std::string_view name, uint32_t attempt) {
  uint32_t hash = kHashStart;
  const auto mix = [&hash](unsigned char byte) { hash = (hash ^ byte) * kHashFactor; };
  for (const char c : name) {
    mix(static_cast<unsigned char>(c >= 'A' && c <= 'Z' ? c + ('a' - 'A') : c));
  }
  for (; attempt > 0; --attempt) mix('#');
  return hash;
}

}  // namespace

int32_t SettingIds::made(std::string_view name, uint32_t attempt) {
  constexpr uint32_t kRoom =
      static_cast<uint32_t>(std::numeric_limits<int32_t>::max() - kFirstMade) + 1U;
  return kFirstMade + static_cast<int32_t>(hashOf(name, attempt) % kRoom);
}

std::vector<int32_t> SettingIds::of(const std::vector<std::string_view>& names) {
  std::vector<int32_t> ids(names.size(), 0);
  std::vector<std::size_t> unknown;
  for (std::size_t i = 0; i < names.size(); ++i) {
    if (const KnownSetting* known = KnownSettings::find(names[i])) {
      ids[i] = known->id;
    } else {
      unknown.push_back(i);
    }
  }
  std::sort(unknown.begin(), unknown.end(),
            [&names](std::size_t a, std::size_t b) { return names[a] < names[b]; });
  std::set<int32_t> taken;
  for (const std::size_t i : unknown) {
    uint32_t attempt = 0;
    do {
      ids[i] = made(names[i], attempt++);
    } while (!taken.insert(ids[i]).second);
  }
  return ids;
}

}  // namespace tn::postgresql
