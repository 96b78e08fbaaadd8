// A source of bytes. A failed read throws ResultException with the status of the system's error.
#ifndef KNOB_KZ_IO_INPUT_STREAM_H
#define KNOB_KZ_IO_INPUT_STREAM_H

#include <cstddef>

#include "kz/Object.h"

namespace kz::io {

class InputStream : public Object {
 public:
  // Waits for at least one byte, reads at most `count`; 0 at the end.
  virtual std::size_t read(char* bytes, std::size_t count) = 0;
};

}  // namespace kz::io

#endif
