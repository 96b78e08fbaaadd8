// Reads what `knob -O` writes, in either form, and the short files that people write for
// `knob -I`: lines with an id and lines with a value.
//
// What cannot be read beyond doubt is refused: an export that ended early, an ERROR! line in the
// place of settings, a JSON file that a double quote in a value has broken.
#ifndef KNOB_DIFF_SETTINGS_FILE_H
#define KNOB_DIFF_SETTINGS_FILE_H

#include <string_view>

#include "diff/Settings.h"
#include "diff/Tags.h"

namespace diff {

class SettingsFile {
 public:
  // Throws Trouble.
  static Settings parse(std::string_view content, const Tags& tags);
};

}  // namespace diff

#endif
