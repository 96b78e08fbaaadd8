// A text that should be a number and is none. Its message is empty: whoever catches it words it.
#ifndef KNOB_UTIL_NUMBER_FORMAT_EXCEPTION_H
#define KNOB_UTIL_NUMBER_FORMAT_EXCEPTION_H

#include "kz/Exception.h"

class NumberFormatException : public kz::Exception {
 public:
  explicit NumberFormatException(const kz::String& message) : kz::Exception(message) {}
};

#endif
