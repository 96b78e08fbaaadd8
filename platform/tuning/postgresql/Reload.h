// Makes a server load its changed configuration and waits until it has.
//
// The server's main process loads the configuration and then has every other process do so; a
// process does it before its next statement. So the configuration is loaded when a process shows
// that it has loaded it since it was asked. A connection pooler may give every statement to another
// process: one that is not the one that was asked has to have loaded it after the moment of asking.
#ifndef KNOB_POSTGRESQL_RELOAD_H
#define KNOB_POSTGRESQL_RELOAD_H

#include <optional>
#include <string_view>
#include <vector>

#include "tuning/postgresql/Connection.h"
#include "tuning/postgresql/Result.h"

namespace tn::postgresql {

class Reload {
 public:
  // The columns of the rows that tell how settings stand afterwards.
  enum Column : int { kName, kConfigured, kSource, kPendingRestart };

  // The rows of the settings with these names, in any order, once the configuration is loaded.
  // None when that has not happened within 5 s. Throws as Connection::query does.
  static std::optional<Result> run(Connection& connection,
                                   const std::vector<std::string_view>& names);
};

}  // namespace tn::postgresql

#endif
