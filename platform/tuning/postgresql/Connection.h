// An open connection to a server: statements go in, rows or TuningError come out. Text is UTF-8 in
// both directions, except where the database has no encoding (SQL_ASCII): its bytes pass through.
#ifndef KNOB_POSTGRESQL_CONNECTION_H
#define KNOB_POSTGRESQL_CONNECTION_H

#include <chrono>
#include <optional>
#include <string>
#include <string_view>

#include "tuning/postgresql/ConnectionAttempt.h"
#include "tuning/postgresql/Result.h"
#include "tuning/postgresql/SqlState.h"

namespace tn::postgresql {

class Connection {
 public:
  // Throws the status that tells why the server could not be reached or used.
  Connection(const char* uri, const char* user, const char* password);

  // Connects once more, as at first: after the connection was lost.
  void reopen();

  // What a server's error code means: one of SqlState's.
  using StatusOf = TnStatus (*)(std::string_view code);

  // The result of the first of the statements. Throws `statusOf` an error, or TN_CONNECTION_LOST,
  // also when the server does not answer for 30 s.
  Result query(const std::string& sql, StatusOf statusOf = SqlState::ofQuestion);

  // The same, but gives up at the deadline: there is no result then, and the connection is closed.
  std::optional<Result> queryUntil(const std::string& sql,
                                   std::chrono::steady_clock::time_point deadline,
                                   StatusOf statusOf = SqlState::ofQuestion);

  // True once anything has found it lost.
  bool isLost() const;

  // True: the server checks no rights of this user. Costs nothing: the server tells it by itself.
  bool isSuperuser() const { return reports("is_superuser", "on"); }

  // 150002 for version 15.2.
  int version() const { return PQserverVersion(connection_.get()); }

  // Where the session had client_encoding from, as pg_settings names it, before it was set here.
  // Empty when it was not.
  const std::string& encodingSource() const { return encodingSource_; }

  // The text as a literal that no text can leave, quotes included. Throws TN_VALUE_REFUSED for text
  // that is not valid in the connection's encoding.
  std::string literal(const std::string& text) const;

 private:
  // Whether a result can be had without waiting; false at the deadline.
  bool answersBy(std::chrono::steady_clock::time_point deadline);
  void check(const Result& result, StatusOf statusOf);
  bool reports(const char* parameter, std::string_view value) const;
  void useEncoding();
  void open();

  std::string uri_;
  std::string user_;
  std::string password_;
  ConnectionPointer connection_;
  std::string encodingSource_;
};

}  // namespace tn::postgresql

#endif
