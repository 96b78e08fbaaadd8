// The settings of one side of a comparison, and the failure to read them.
#ifndef KNOB_DIFF_SETTINGS_H
#define KNOB_DIFF_SETTINGS_H

#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

namespace diff {

struct Setting {
  int id = 0;
  std::string name{};      // empty in a file that holds ids and values alone
  std::string category{};  // empty where the file does not tell
  std::string value{};
  std::optional<std::string> defaultValue{};
};

// In the order of the file or server.
using Settings = std::vector<Setting>;

// Nothing can be said about the settings; the text says why, in one line.
class Trouble : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

}  // namespace diff

#endif
