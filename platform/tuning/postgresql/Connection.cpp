#include "tuning/postgresql/Connection.h"

#include <memory>
#include <poll.h>
#include <utility>

#include "tuning/TuningError.h"
#include "tuning/postgresql/SocketWait.h"
#include "tuning/postgresql/SqlState.h"

namespace tn::postgresql {
namespace {

constexpr int kOldestServer = 100000;  // version 10

constexpr char kUseUtf8[] =
    "SELECT source FROM pg_catalog.pg_settings"
    " WHERE name OPERATOR(pg_catalog.=) 'client_encoding';"
    " SET client_encoding TO 'UTF8'";

}  // namespace

Connection::Connection(const char* uri, const char* user, const char* password)
    : uri_(uri), user_(user), password_(password) {
  open();
}

void Connection::reopen() {
  connection_.reset();
  open();
}

void Connection::open() {
  connection_ = ConnectionAttempt(uri_, user_, password_).open();
  if (version() < kOldestServer) throw TuningError(TN_SERVER_TOO_OLD);
  useUtf8();
}

// Asked for afterwards, and only where it is not so already: an encoding that is sent with the
// connection request costs nothing, but hides what the server is configured to use. Setting it
// hides that too, but for where it comes from, which is asked in the same turn.
void Connection::useUtf8() {
  if (reports("client_encoding", "UTF8") || reports("server_encoding", "SQL_ASCII")) return;
  PGconn* const connection = connection_.get();
  if (PQsendQuery(connection, kUseUtf8) == 0) throw TuningError(TN_CONNECTION_LOST);
  const Result source = checked(Result(PQgetResult(connection)));
  while (PGresult* const more = PQgetResult(connection)) checked(Result(more));
  encodingSource_ = source.text(0, 0);
}

bool Connection::reports(const char* parameter, std::string_view value) const {
  const char* const reported = PQparameterStatus(connection_.get(), parameter);
  return reported != nullptr && reported == value;
}

// One that was closed at a deadline counts as lost too.
bool Connection::isLost() const { return PQstatus(connection_.get()) == CONNECTION_BAD; }

Result Connection::query(const std::string& sql) {
  if (isLost()) throw TuningError(TN_CONNECTION_LOST);
  return checked(Result(PQexec(connection_.get(), sql.c_str())));
}

std::optional<Result> Connection::queryUntil(const std::string& sql,
                                             std::chrono::steady_clock::time_point deadline) {
  PGconn* const connection = connection_.get();
  if (PQsendQuery(connection, sql.c_str()) == 0) throw TuningError(TN_CONNECTION_LOST);
  while (PQisBusy(connection) != 0) {
    if (!waitForSocket(PQsocket(connection), POLLIN, millisecondsUntil(deadline))) {
      connection_.reset();
      return std::nullopt;
    }
    if (PQconsumeInput(connection) == 0) throw TuningError(TN_CONNECTION_LOST);
  }
  Result result(PQgetResult(connection));
  while (PGresult* const more = PQgetResult(connection)) PQclear(more);
  return checked(std::move(result));
}

Result Connection::checked(Result result) {
  const ExecStatusType outcome = PQresultStatus(result.get());
  if (outcome == PGRES_TUPLES_OK || outcome == PGRES_COMMAND_OK) return result;
  if (isLost()) throw TuningError(TN_CONNECTION_LOST);
  const char* const code = PQresultErrorField(result.get(), PG_DIAG_SQLSTATE);
  throw TuningError(SqlState::ofStatement(code ? code : ""));
}

std::string Connection::literal(const std::string& text) const {
  const std::unique_ptr<char, decltype(&PQfreemem)> escaped(
      PQescapeLiteral(connection_.get(), text.data(), text.size()), &PQfreemem);
  if (!escaped) throw TuningError(isLost() ? TN_CONNECTION_LOST : TN_VALUE_REFUSED);
  return escaped.get();
}

}  // namespace tn::postgresql
