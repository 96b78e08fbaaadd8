// Facts about paths.
#ifndef KNOB_KZ_UTIL_FILE_PATH_H
#define KNOB_KZ_UTIL_FILE_PATH_H

#include "kz/String.h"

namespace kz::util {

class FilePath {
 public:
  static constexpr wchar_t dirDelim = L'/';

  // With the delimiter at its end, so that a file name can follow. Throws ResultException when it
  // cannot be told.
  static String getCurrentDir();
  // The folder that holds the running program's file, without the delimiter; links are resolved.
  static String getProgramDir();
};

}  // namespace kz::util

#endif
