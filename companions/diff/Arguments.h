// The command line of knob-diff.
#ifndef KNOB_DIFF_ARGUMENTS_H
#define KNOB_DIFF_ARGUMENTS_H

#include <string>
#include <vector>

namespace diff {

enum class Form { table, json, settingsFile };

struct Arguments {
  // Throws Trouble for an option that is not known or lacks its value, and for too few or too many
  // sides.
  static Arguments parse(int argc, char** argv);
  static const char* usage();

  std::vector<std::string> sides{};  // one when the defaults are the other, else two
  std::string userA{}, userB{};
  std::vector<std::string> ignoreFiles{};
  Form form = Form::table;
  bool changed = false;  // against the defaults
  bool all = false;      // also what a file does not hold
  bool help = false;
  bool version = false;
};

}  // namespace diff

#endif
