// One attempt to connect to a server through libpq, with a status that tells why it failed.
//
// libpq's usual call cannot be asked for the server's error code, and its texts come in the
// server's language. So the attempt is driven step by step: the connection object is told to
// report codes before the server has said anything. The address is libpq's own affair: the whole
// URI, services, password files and environment variables are passed through to it.
#ifndef KNOB_POSTGRESQL_CONNECTION_ATTEMPT_H
#define KNOB_POSTGRESQL_CONNECTION_ATTEMPT_H

#include <chrono>
#include <libpq-fe.h>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "service/TuningInterface.h"

namespace tn::postgresql {

struct FinishConnection {
  void operator()(PGconn* connection) const { PQfinish(connection); }
};
using ConnectionPointer = std::unique_ptr<PGconn, FinishConnection>;

class ConnectionAttempt {
 public:
  // `uri` is a postgresql:// or postgres:// name. A user or password that is not empty wins over
  // the URI's.
  ConnectionAttempt(std::string uri, std::string user, std::string password);

  // An open connection, or TuningError with one of the statuses of opening a connection. Gives up
  // after the connect timeout of the URI, the service or the environment, else after 10 s; with
  // several addresses, after that time once more than there are silent ones.
  ConnectionPointer open();

 private:
  using Clock = std::chrono::steady_clock;

  // Two arrays of one length for libpq, whose texts are this object's.
  struct Parameters {
    std::vector<const char*> keywords;
    std::vector<const char*> values;
  };
  Parameters parameters() const;
  ConnectionPointer start() const;
  std::string option(const char* keyword) const;
  void readTimeout();
  bool pollUntil(std::optional<Clock::time_point> deadline);
  bool hasSeveralAddresses() const;
  void restartBlocking();
  TnStatus failureOfStart() const;
  TnStatus failure() const;

  std::string uri_;
  std::string user_;
  std::string password_;
  int timeoutSeconds_ = 0;  // 0: none
  std::string timeoutText_;
  ConnectionPointer connection_;
  ConnStatusType lastStep_ = CONNECTION_STARTED;
};

}  // namespace tn::postgresql

#endif
