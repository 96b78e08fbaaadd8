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
  // The columns of the rows that tell how settings stand.
  enum Column : int { kName, kConfigured, kSource, kPendingRestart };

  using Names = std::vector<std::string_view>;

  // Once the configuration is loaded: rows of the first two columns, the value that this session
  // has, as SHOW words it. None when that has not happened within 5 s. It is quick, but only a
  // superuser may look at every setting in this way. Throws as Connection::query does.
  static std::optional<Result> values(Connection& connection, const Names& names);
  // The same with whole rows, which takes the server a few milliseconds.
  static std::optional<Result> rows(Connection& connection, const Names& names);
  // Whole rows as they are now.
  static Result rowsNow(Connection& connection, const Names& names);
};

}  // namespace tn::postgresql

#endif
