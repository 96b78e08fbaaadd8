// The settings on the command line that the server was started with. They win over the
// configuration files, which do not show it. The server keeps its command line in the file
// postmaster.opts of its data folder: the path of the program, then every argument in double
// quotes, nothing escaped.
#ifndef KNOB_POSTGRESQL_COMMAND_LINE_H
#define KNOB_POSTGRESQL_COMMAND_LINE_H

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tn::postgresql {

class CommandLine {
 public:
  CommandLine() = default;
  explicit CommandLine(std::string_view postmasterOptions);

  // The text that the command line gives this setting.
  std::optional<std::string_view> value(std::string_view settingName) const;

 private:
  struct Assignment {
    std::string name;
    std::string value;
  };
  void take(std::string_view assignment);

  std::vector<Assignment> assignments_;
};

}  // namespace tn::postgresql

#endif
