#include "tuning/postgresql/Connection.h"

#include <memory>
#include <poll.h>
#include <utility>
#include <vector>

#include "tuning/TuningError.h"
#include "tuning/postgresql/SocketWait.h"

namespace tn::postgresql {
namespace {

constexpr int kOldestServer = 100000;  // version 10

// The longest that any of our statements may take. A server that is cut off without a word would
// otherwise be waited for until the system gives the connection up, which can be never.
constexpr std::chrono::seconds kLongestStatement(30);

constexpr char kUseEncoding[] =
    "SELECT source FROM pg_catalog.pg_settings"
    " WHERE name OPERATOR(pg_catalog.=) 'client_encoding';"
    " SET client_encoding TO ";

constexpr char kNoEncoding[] = "SQL_ASCII";

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
  useEncoding();
}

// Asked for afterwards, and only where it is not so already: an encoding that is sent with the
// connection request costs nothing, but hides what the server is configured to use. Setting it
// hides that too, but for where it comes from, which is asked in the same turn.
void Connection::useEncoding() {
  const std::string wanted = reports("server_encoding", kNoEncoding) ? kNoEncoding : "UTF8";
  if (reports("client_encoding", wanted)) return;
  encodingSource_ = query(kUseEncoding + wanted).text(0, 0);
}

bool Connection::reports(const char* parameter, std::string_view value) const {
  const char* const reported = PQparameterStatus(connection_.get(), parameter);
  return reported != nullptr && reported == value;
}

// One that was closed at a deadline counts as lost too.
bool Connection::isLost() const { return PQstatus(connection_.get()) == CONNECTION_BAD; }

Result Connection::query(const std::string& sql, StatusOf statusOf) {
  if (isLost()) throw TuningError(TN_CONNECTION_LOST);
  std::optional<Result> result =
      queryUntil(sql, std::chrono::steady_clock::now() + kLongestStatement, statusOf);
  if (!result) throw TuningError(TN_CONNECTION_LOST);
  return std::move(*result);
}

std::optional<Result> Connection::queryUntil(const std::string& sql,
                                             std::chrono::steady_clock::time_point deadline,
                                             StatusOf statusOf) {
  PGconn* const connection = connection_.get();
  if (PQsendQuery(connection, sql.c_str()) == 0) throw TuningError(TN_CONNECTION_LOST);
  std::vector<Result> results;
  // The last result is followed by a word of the server too, which may not come either.
  while (answersBy(deadline)) {
    PGresult* const next = PQgetResult(connection);
    if (next == nullptr) {
      if (results.empty()) throw TuningError(TN_CONNECTION_LOST);
      for (const Result& result : results) check(result, statusOf);
      return std::move(results.front());
    }
    results.emplace_back(next);
  }
  connection_.reset();
  return std::nullopt;
}

bool Connection::answersBy(std::chrono::steady_clock::time_point deadline) {
  PGconn* const connection = connection_.get();
  while (PQisBusy(connection) != 0) {
    if (!waitForSocket(PQsocket(connection), POLLIN, millisecondsUntil(deadline))) return false;
    if (PQconsumeInput(connection) == 0) throw TuningError(TN_CONNECTION_LOST);
  }
  return true;
}

void Connection::check(const Result& result, StatusOf statusOf) {
  const ExecStatusType outcome = PQresultStatus(result.get());
  if (outcome == PGRES_TUPLES_OK || outcome == PGRES_COMMAND_OK) return;
  if (isLost()) throw TuningError(TN_CONNECTION_LOST);
  const char* const code = PQresultErrorField(result.get(), PG_DIAG_SQLSTATE);
  throw TuningError(statusOf(code ? code : ""));
}

std::string Connection::literal(const std::string& text) const {
  const std::unique_ptr<char, decltype(&PQfreemem)> escaped(
      PQescapeLiteral(connection_.get(), text.data(), text.size()), &PQfreemem);
  if (!escaped) throw TuningError(isLost() ? TN_CONNECTION_LOST : TN_VALUE_REFUSED);
  return escaped.get();
}

}  // namespace tn::postgresql
