// Numbers from text: decimal digits with an optional leading "-". Anything else, a text that is
// only partly a number and a number out of range hold no number.
#ifndef KNOB_KZ_NUMBER_H
#define KNOB_KZ_NUMBER_H

#include "kz/String.h"

namespace kz {

class Number {
 public:
  // 0 for a text that holds no number.
  static int parseInt(const String& text);
  static long parseLong(const String& text);
};

}  // namespace kz

#endif
