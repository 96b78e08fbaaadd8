#include "tuning/postgresql/ConnectionAttempt.h"

#include <algorithm>
#include <charconv>
#include <netdb.h>
#include <new>
#include <poll.h>
#include <string_view>

#include "tuning/TuningError.h"
#include "tuning/postgresql/SocketWait.h"
#include "tuning/postgresql/SqlState.h"

namespace tn::postgresql {
namespace {

constexpr int kDefaultTimeoutSeconds = 10;
constexpr int kShortestTimeoutSeconds = 2;  // libpq's own
constexpr int kExpandUri = 1;
constexpr int kForever = -1;  // to poll()

void discardNotice(void*, const PGresult*) {}

}  // namespace

ConnectionAttempt::ConnectionAttempt(std::string uri, std::string user, std::string password)
    : uri_(std::move(uri)), user_(std::move(user)), password_(std::move(password)) {}

ConnectionPointer ConnectionAttempt::open() {
  connection_ = start();
  readTimeout();  // for failureOfStart() too, which may connect
  if (PQstatus(connection_.get()) == CONNECTION_BAD) throw TuningError(failureOfStart());
  std::optional<Clock::time_point> deadline;
  if (timeoutSeconds_ > 0) deadline = Clock::now() + std::chrono::seconds(timeoutSeconds_);
  if (!pollUntil(deadline)) {
    if (!hasSeveralAddresses()) throw TuningError(TN_SERVER_UNREACHABLE);
    restartBlocking();
  }
  if (PQstatus(connection_.get()) != CONNECTION_OK) throw TuningError(failure());
  return std::move(connection_);
}

// Later keywords win over what the URI, the first "dbname", is expanded to.
ConnectionAttempt::Parameters ConnectionAttempt::parameters() const {
  Parameters parameters{{"dbname"}, {uri_.c_str()}};
  const auto add = [&parameters](const char* keyword, const std::string& value) {
    if (value.empty()) return;
    parameters.keywords.push_back(keyword);
    parameters.values.push_back(value.c_str());
  };
  add("user", user_);
  add("password", password_);
  add("connect_timeout", timeoutText_);
  parameters.keywords.push_back(nullptr);
  parameters.values.push_back(nullptr);
  return parameters;
}

ConnectionPointer ConnectionAttempt::start() const {
  const Parameters given = parameters();
  ConnectionPointer connection(
      PQconnectStartParams(given.keywords.data(), given.values.data(), kExpandUri));
  if (!connection) throw std::bad_alloc();
  PQsetErrorVerbosity(connection.get(), PQERRORS_SQLSTATE);
  PQsetNoticeReceiver(connection.get(), discardNotice, nullptr);
  return connection;
}

// What libpq made of the URI, the service file and the environment together.
std::string ConnectionAttempt::option(const char* keyword) const {
  const std::unique_ptr<PQconninfoOption, decltype(&PQconninfoFree)> options(
      PQconninfo(connection_.get()), &PQconninfoFree);
  if (!options) throw std::bad_alloc();
  for (const PQconninfoOption* entry = options.get(); entry->keyword != nullptr; ++entry) {
    if (std::string_view(entry->keyword) == keyword) return entry->val ? entry->val : "";
  }
  return {};
}

void ConnectionAttempt::readTimeout() {
  const std::string text = option("connect_timeout");
  int seconds = kDefaultTimeoutSeconds;
  if (!text.empty()) {
    std::from_chars(text.data(), text.data() + text.size(), seconds);
    seconds = seconds <= 0 ? 0 : std::max(seconds, kShortestTimeoutSeconds);
  }
  timeoutSeconds_ = seconds;
  timeoutText_ = std::to_string(seconds);
}

// Drives the attempt to its end, good or bad. False: the deadline passed first.
bool ConnectionAttempt::pollUntil(std::optional<Clock::time_point> deadline) {
  PGconn* const connection = connection_.get();
  PostgresPollingStatusType wish = PGRES_POLLING_WRITING;
  while (wish == PGRES_POLLING_READING || wish == PGRES_POLLING_WRITING) {
    const int timeout = deadline ? millisecondsUntil(*deadline) : kForever;
    const short events = wish == PGRES_POLLING_READING ? POLLIN : POLLOUT;
    if (!waitForSocket(PQsocket(connection), events, timeout)) return false;
    lastStep_ = PQstatus(connection);
    wish = PQconnectPoll(connection);
  }
  return true;
}

bool ConnectionAttempt::hasSeveralAddresses() const {
  const std::string host = option("host");
  const std::string address = option("hostaddr");
  if (host.find(',') != std::string::npos || address.find(',') != std::string::npos) return true;
  if (host.empty() || host.front() == '/' || !address.empty()) return false;
  addrinfo wanted{};
  wanted.ai_socktype = SOCK_STREAM;
  addrinfo* found = nullptr;
  if (getaddrinfo(host.c_str(), nullptr, &wanted, &found) != 0) return false;
  const std::unique_ptr<addrinfo, decltype(&freeaddrinfo)> addresses(found, &freeaddrinfo);
  return addresses->ai_next != nullptr;
}

// The stepwise calls cannot leave an address that does not answer for the next one; libpq's
// blocking call can. A reset keeps what start() asked of the connection object.
void ConnectionAttempt::restartBlocking() {
  connection_ = start();
  PQreset(connection_.get());
}

// libpq gave up at once: either it does not understand the address, or nothing is there.
TnStatus ConnectionAttempt::failureOfStart() const {
  if (option("port").find_first_not_of("0123456789,") != std::string::npos) {
    return TN_SERVER_ADDRESS_INVALID;
  }
  const Parameters given = parameters();
  const bool understood =
      PQpingParams(given.keywords.data(), given.values.data(), kExpandUri) != PQPING_NO_ATTEMPT;
  return understood ? TN_SERVER_UNREACHABLE : TN_SERVER_ADDRESS_INVALID;
}

TnStatus ConnectionAttempt::failure() const {
  PGconn* const connection = connection_.get();
  const std::string_view code = SqlState::lastIn(PQerrorMessage(connection));
  if (!code.empty()) return SqlState::whenConnecting(code);
  if (PQconnectionNeedsPassword(connection)) return TN_LOGIN_REFUSED;
  if (lastStep_ == CONNECTION_SSL_STARTUP || lastStep_ == CONNECTION_GSS_STARTUP) {
    return TN_TLS_REFUSED;
  }
  // Of what it finds missing itself libpq gives no code; a server was there to miss it on.
  const bool reached = lastStep_ != CONNECTION_STARTED;
  if (reached && (option("channel_binding") == "require" || option("gssencmode") == "require" ||
                  !option("requirepeer").empty())) {
    return TN_TLS_REFUSED;
  }
  // The last server let us in and was then found not to be of the kind that was asked for.
  if (PQparameterStatus(connection, "server_version") != nullptr) return TN_NO_SUITABLE_SERVER;
  return TN_SERVER_UNREACHABLE;
}

}  // namespace tn::postgresql
