// Groups a server's settings into categories that keep to the capacities of the tuning interface.
//
// A setting that is known by name has its category from the table, under the table's name; the
// server tells categories in its own language. For another setting the server's category counts:
// it is the one that the known settings with the same category text are in. Settings of extensions
// have a dot in their name and stand together. What is left keeps the server's text.
#ifndef KNOB_POSTGRESQL_SETTING_GROUPS_H
#define KNOB_POSTGRESQL_SETTING_GROUPS_H

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace tn::postgresql {

struct SettingCategory {
  int32_t id = 0;
  std::string name;
  std::vector<int32_t> settingIds;
};

class SettingGroups {
 public:
  struct Member {
    std::string_view name;
    std::string_view serverCategory;  // "Group" or "Group / Part"
    int32_t id;
  };

  // In display order, the members of each category in the order given. A category with more than 50
  // settings goes on in "Name (2)", "Name (3)" ...; should there be more than 30 then, everything
  // is dealt out anew over "All Settings", "All Settings (2)" ... Throws TN_TOO_MANY_SETTINGS when
  // that is not enough.
  static std::vector<SettingCategory> of(const std::vector<Member>& members);
};

}  // namespace tn::postgresql

#endif
