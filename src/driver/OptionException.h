// A command line that cannot be parsed; the description says why.
#ifndef KNOB_DRIVER_OPTION_EXCEPTION_H
#define KNOB_DRIVER_OPTION_EXCEPTION_H

#include "kz/Exception.h"

class OptionException : public kz::Exception {
 public:
  OptionException() = default;
  OptionException(const OptionException&) = default;
  explicit OptionException(const kz::String& message) : kz::Exception(message) {}
};

#endif
