// What the server's configuration files say, as far as the role may look: read when a session's own
// settings hide the server's, and before a change. The files' texts come as somebody wrote them.
#ifndef KNOB_POSTGRESQL_SERVER_FILES_H
#define KNOB_POSTGRESQL_SERVER_FILES_H

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "tuning/postgresql/CommandLine.h"
#include "tuning/postgresql/Connection.h"

namespace tn::postgresql {

class ServerFiles {
 public:
  explicit ServerFiles(Connection& connection);

  // Reads the server's command line as well, which wins over the files. False: it cannot be told
  // what it gives.
  bool readCommandLine(Connection& connection);

  // False: the role may not look, and nothing else here means anything.
  bool readable() const { return readable_; }
  // True: the role may make the server read its configuration again, and see when it has.
  bool mayReload() const { return mayReload_; }

  // What the command line, if it was read, or the files give the setting; not there when they do
  // not name it.
  std::optional<std::string_view> value(std::string_view settingName) const;
  // True: the command line was read and gives the setting.
  bool onCommandLine(std::string_view settingName) const {
    return commandLine_.value(settingName).has_value();
  }
  // What the files give without the one that ALTER SYSTEM writes: what a reset leaves.
  std::optional<std::string_view> valueAfterReset(std::string_view settingName) const;
  // What the files give the setting after the server's next reload or start, in force already or
  // not.
  std::optional<std::string_view> nextValue(std::string_view settingName) const;
  // True: the files hold an error for which the server would load nothing of them. `isKnown` tells
  // whether the server has a setting of a name.
  bool blocked(const std::function<bool(std::string_view)>& isKnown) const;

 private:
  struct Entry {
    std::string name;
    std::string value;
    bool applied = false;
    bool failed = false;   // where it stands; not where it was taken out
    bool written = false;  // stands in the file that ALTER SYSTEM writes
  };
  void readRights(Connection& connection);
  void readFiles(Connection& connection);
  template <typename Condition>
  std::optional<std::string_view> last(std::string_view settingName, Condition condition) const;

  bool readable_ = false;
  bool mayReload_ = false;
  bool mayReadOptions_ = false;
  std::vector<Entry> entries_;  // in the order in which the server reads them
  CommandLine commandLine_;
};

}  // namespace tn::postgresql

#endif
