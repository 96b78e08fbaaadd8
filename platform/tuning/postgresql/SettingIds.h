// Which id each of a server's settings has: that of the table of known settings, or one made from
// the name for settings of extensions and of versions that the table does not know yet.
#ifndef KNOB_POSTGRESQL_SETTING_IDS_H
#define KNOB_POSTGRESQL_SETTING_IDS_H

#include <cstdint>
#include <string_view>
#include <vector>

namespace tn::postgresql {

class SettingIds {
 public:
  // Ids made from names begin here and reach to the largest 32-bit number.
  static constexpr int32_t kFirstMade = 100000;

  // The ids of the settings with these names, in the same order, all different. The order of the
  // names makes no difference to the ids: should two names want the same one, the name that comes
  // first in byte order gets it on every server that has both.
  static std::vector<int32_t> of(const std::vector<std::string_view>& names);

  // The id that the name alone leads to; letters count alike in both cases. Each further attempt
  // gives another one.
  static int32_t made(std::string_view name, uint32_t attempt);
};

}  // namespace tn::postgresql

#endif
