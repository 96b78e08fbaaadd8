// Reads the settings of both sides at the same time: files themselves, servers by running the knob
// that lies beside this program and reading its export from a pipe.
#ifndef KNOB_DIFF_SIDE_READER_H
#define KNOB_DIFF_SIDE_READER_H

#include <string>
#include <vector>

#include "diff/Settings.h"
#include "diff/Side.h"
#include "diff/Tags.h"

namespace diff {

class SideReader {
 public:
  // The whole content. Throws Trouble, which names the file.
  static std::string readFile(const std::string& path);
  // One result for each side, in order. Throws Trouble, which names the side.
  static std::vector<Settings> readAll(const std::vector<Side>& sides, const Tags& tags);
};

}  // namespace diff

#endif
