// A file failure that has been put into words.
#ifndef KNOB_KZ_IO_IO_EXCEPTION_H
#define KNOB_KZ_IO_IO_EXCEPTION_H

#include "kz/Exception.h"

namespace kz::io {

class IoException : public Exception {
 public:
  explicit IoException(const String& description) : Exception(description) {}
};

}  // namespace kz::io

#endif
