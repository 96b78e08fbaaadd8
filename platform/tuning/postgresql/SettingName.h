// How two names of settings are compared. The server takes a name in any letter case, in its files,
// on its command line and in statements.
#ifndef KNOB_POSTGRESQL_SETTING_NAME_H
#define KNOB_POSTGRESQL_SETTING_NAME_H

#include <string_view>

#include "tuning/Characters.h"

namespace tn::postgresql {

inline bool isSameSetting(std::string_view a, std::string_view b) {
  return isSameIgnoringCase(a, b);
}

}  // namespace tn::postgresql

#endif
