// The settings that a PostgreSQL server is known to have, of versions 10 to 18, with the ids and
// categories that this program gives them and the order of their choices. Ids and the numbers of
// choices stay what they are for good, so that a settings file and an administrator's notes hold on
// every server: new settings get new ids, new choices come last.
//
// The program announces a restart for a fixed set of ids. The settings that take effect only when
// the server is restarted (context postmaster) have their ids from that set, all others have ids
// outside it: 1001 and above, a hundred for each category. The set is used up. Where a setting's
// context changed, that of the newer versions counts.
#ifndef KNOB_POSTGRESQL_KNOWN_SETTINGS_H
#define KNOB_POSTGRESQL_KNOWN_SETTINGS_H

#include <cstdint>
#include <span>
#include <string_view>

namespace tn::postgresql {

// In display order; the values are the categories' ids.
enum class Category : int32_t {
  fileLocations = 1,
  connections,
  resourceUsage,
  writeAheadLog,
  replication,
  queryTuning,
  reporting,
  statistics,
  autovacuum,
  clientDefaults,
  lockManagement,
  compatibility,
  errorHandling,
  presetOptions,
  developerOptions,
  customizedOptions,
};

struct KnownSetting {
  std::string_view name;
  int32_t id;
  Category category;
  // The choices of every version and build, with commas between them; empty for other types.
  std::string_view choices = {};
};

class KnownSettings {
 public:
  // Null for a name that is not known. Names are compared as the server writes them.
  static const KnownSetting* find(std::string_view name);
  static std::span<const KnownSetting> all();
  // True for the ids for which the program announces a restart.
  static bool announcesRestart(int32_t id);
  static std::string_view categoryName(Category category);
};

}  // namespace tn::postgresql

#endif
