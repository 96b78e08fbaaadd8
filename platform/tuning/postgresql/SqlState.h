// The one place that says what a five-character error code (SQLSTATE) of the server means to a
// caller of the tuning interface. The server's messages come in whatever language it speaks, so
// nothing is ever decided by their words.
#ifndef KNOB_POSTGRESQL_SQL_STATE_H
#define KNOB_POSTGRESQL_SQL_STATE_H

#include <string_view>

#include "service/TuningInterface.h"

namespace tn::postgresql {

class SqlState {
 public:
  // The status of a server that answered an attempt to connect with this code.
  static TnStatus whenConnecting(std::string_view code);
  // The status of a statement that failed with this code on an open connection: one that asks, one
  // that gives a session a value, and ALTER SYSTEM. A failure without a code is the client
  // library's own: it could not send or receive.
  static TnStatus ofQuestion(std::string_view code);
  static TnStatus ofValue(std::string_view code);
  static TnStatus ofAlterSystem(std::string_view code);
  // The last code in an error text written in libpq's terse form, in which the server's answer is a
  // line that ends in ":  " and the code. Empty when no server answered.
  static std::string_view lastIn(std::string_view errorText);
};

}  // namespace tn::postgresql

#endif
