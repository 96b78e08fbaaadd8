// The description of a setting as an administrator reads it: one line that can stand in a settings
// file and, with its double quotes escaped, in JSON.
#ifndef KNOB_POSTGRESQL_SETTING_TEXT_H
#define KNOB_POSTGRESQL_SETTING_TEXT_H

#include <string>
#include <string_view>

#include "tuning/postgresql/Setting.h"

namespace tn::postgresql {

class SettingText {
 public:
  // The server's own words, in its language, then what only this program can tell: the unit that
  // the numbers are in, the range of a number with a fraction, and what a change would need.
  static std::string of(const Setting& setting);
  // The same, but where the value comes from and whether a change waits is told by the sentences of
  // `origin`, which may be none.
  static std::string of(const Setting& setting, std::string_view origin);
};

}  // namespace tn::postgresql

#endif
