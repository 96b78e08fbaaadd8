// The differences in words: a table for people, a JSON object for programs, or a settings file that
// takes them away.
#ifndef KNOB_DIFF_REPORT_H
#define KNOB_DIFF_REPORT_H

#include <string>

#include "diff/Comparison.h"
#include "diff/Tags.h"

namespace diff {

class Report {
 public:
  // Nothing when nothing differs. `b` is null where the defaults stand in the second side's place.
  // `colored` marks the two values with terminal escapes.
  static std::string table(const Differences& differences, const std::string& a,
                           const std::string* b, bool colored);
  // The second side's name is null where the defaults stand in its place.
  static std::string json(const Differences& differences, const std::string& a,
                          const std::string* b);

  struct Carried {
    std::string file;       // the settings of A that an import can give to B
    std::string remaining;  // a line for each difference that it cannot take away
  };
  static Carried settingsFile(const Differences& differences, const Tags& tags);
};

}  // namespace diff

#endif
