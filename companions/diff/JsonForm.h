// The JSON form of a settings file.
#ifndef KNOB_DIFF_JSON_FORM_H
#define KNOB_DIFF_JSON_FORM_H

#include <string_view>

#include "diff/Settings.h"

namespace diff {

class JsonForm {
 public:
  // Throws Trouble. Double quotes of values are not escaped in this form: one can make a setting
  // with members that no setting has, which is refused.
  static Settings parse(std::string_view content);
};

}  // namespace diff

#endif
