// A source of characters.
#ifndef KNOB_KZ_IO_READER_H
#define KNOB_KZ_IO_READER_H

#include <string>

#include "kz/Object.h"

namespace kz::io {

class Reader : public Object {
 public:
  // Appends at least one character; false at the end.
  virtual bool read(std::wstring& characters) = 0;
};

}  // namespace kz::io

#endif
