// What differs between two sides, or between the values of one and their defaults.
//
// Settings are the same when their ids are, and their names as far as both are known; letter case
// of names does not matter, since the text form of a settings file has them in capitals.
#ifndef KNOB_DIFF_COMPARISON_H
#define KNOB_DIFF_COMPARISON_H

#include <optional>
#include <string>
#include <vector>

#include "diff/IgnoreList.h"
#include "diff/Settings.h"

namespace diff {

struct Difference {
  int id = 0;
  std::string name{};
  std::string category{};
  std::optional<std::string> a{}, b{};  // none where the side has not got the setting
};
using Differences = std::vector<Difference>;

// Which settings count: those of both sides, or those that one of the two has.
enum class Extent { all, ofA, ofB };

class Comparison {
 public:
  // In the order of A, then what B alone has.
  static Differences compare(const Settings& a, const Settings& b, Extent extent,
                             const IgnoreList& ignored);
  // The value as `a`, the default as `b`. Throws Trouble for a setting whose default is not told.
  static Differences changed(const Settings& settings, const IgnoreList& ignored);
};

}  // namespace diff

#endif
