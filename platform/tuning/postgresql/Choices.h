// The choices of a selection. Settings files and people hold the number of a choice, so it has to
// be the same on every server; but servers list what their own version and build has
// (wal_compression knows zstd here and not there). So the choices of a setting that is known stand
// in the table's order, those that this server has not got included, and choices that the table
// does not know come after them.
#ifndef KNOB_POSTGRESQL_CHOICES_H
#define KNOB_POSTGRESQL_CHOICES_H

#include <string>
#include <string_view>
#include <vector>

namespace tn::postgresql {

struct Choice {
  std::string text;
  bool available = true;  // false: only other servers have it
};

class Choices {
 public:
  // The position in the result is the choice's number. `listed` are the choices that the server
  // tells. The last one is always available.
  static std::vector<Choice> of(std::string_view settingName,
                                const std::vector<std::string>& listed);
  // The text that people see.
  static std::string shown(const Choice& choice);
};

}  // namespace tn::postgresql

#endif
