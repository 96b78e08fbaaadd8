// A sink of bytes. Bytes are handed to the system as they come; a failed operation throws
// ResultException with the status of the system's error.
#ifndef KNOB_KZ_IO_OUTPUT_STREAM_H
#define KNOB_KZ_IO_OUTPUT_STREAM_H

#include <cstddef>

#include "kz/Object.h"

namespace kz::io {

class OutputStream : public Object {
 public:
  virtual void write(const char* bytes, std::size_t count) = 0;
  virtual void close() = 0;
};

}  // namespace kz::io

#endif
