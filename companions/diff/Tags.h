// What the lines of a settings file in text form begin with. The texts come from the message
// bundles, as they do for the program that writes such files.
#ifndef KNOB_DIFF_TAGS_H
#define KNOB_DIFF_TAGS_H

#include <string>
#include <vector>

namespace diff {

struct Tags {
  // Throws Trouble when the bundle is not installed.
  static Tags ofBundles();

  std::string id;
  std::string value;
  // What the texts begin with, in every language that is installed: a file keeps the language that
  // it was written in.
  std::vector<std::string> defaultValue;
  std::vector<std::string> afterValue;    // of the line after a setting's value
  std::vector<std::string> afterDefault;  // of the line after its default
  struct Closing {
    std::string before, after;  // the name of the file
  };
  std::vector<Closing> closing;
};

}  // namespace diff

#endif
