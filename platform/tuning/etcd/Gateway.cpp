#include "tuning/etcd/Gateway.h"

#include <algorithm>
#include <random>
#include <string_view>
#include <thread>
#include <utility>

#include "tuning/TuningError.h"

namespace tn::etcd {
namespace {

using http::Failure;
using http::Json;
using std::chrono::milliseconds;

constexpr milliseconds kPause{200};  // an election takes about as long
constexpr std::chrono::seconds kOutage{10};

enum class Verdict {
  done,
  failed,   // for good
  login,    // there is no token, or it is no longer good
  noLogin,  // nobody can log in here, nor has to
  retry,    // not carried out; another endpoint or a later time may help
  lost,     // no answer, so it may have been carried out; asking again may help
  garbled   // an answer that no repetition makes better, so it may have been carried out
};

struct Meaning {
  Verdict verdict = Verdict::done;
  TnStatus status = TN_SUCCESS;
};

struct FailureMeaning {
  Failure failure;
  Meaning meaning;
};

constexpr FailureMeaning kFailures[] = {
    {Failure::unreachable, {Verdict::failed, TN_SERVER_UNREACHABLE}},
    {Failure::tls, {Verdict::failed, TN_ETCD_TLS_REFUSED}},
    {Failure::timeout, {Verdict::lost, TN_ETCD_NO_ANSWER}},
    {Failure::tooLarge, {Verdict::garbled, TN_ETCD_ANSWER_TOO_LARGE}},
    {Failure::cut, {Verdict::lost, TN_ETCD_NO_ANSWER}},
};

// An error is known by its code of gRPC and, where one code stands for several, by its text.
constexpr long kAnyCode = -1;
struct ErrorMeaning {
  long code;
  std::string_view text;
  Meaning meaning;
};

// The first row that fits counts.
constexpr ErrorMeaning kErrors[] = {
    {3, "authentication failed", {Verdict::failed, TN_ETCD_LOGIN_REFUSED}},
    {3, "user name is empty", {Verdict::login, TN_ETCD_LOGIN_NEEDED}},
    {3, "auth store is old", {Verdict::login, TN_ETCD_LOGIN_REFUSED}},
    {3, "too large", {Verdict::failed, TN_ETCD_REQUEST_TOO_LARGE}},
    {7, "", {Verdict::failed, TN_ETCD_NOT_PERMITTED}},
    {8, "space exceeded", {Verdict::failed, TN_ETCD_FULL}},
    {8, "too many requests", {Verdict::retry, TN_ETCD_NO_ANSWER}},
    {9, "authentication is not enabled", {Verdict::noLogin, TN_ETCD_ERROR}},
    {11, "compacted", {Verdict::failed, TN_ETCD_OUTCOME_UNKNOWN}},
    {12, "", {Verdict::failed, TN_ETCD_NO_GATEWAY}},
    {14, "no leader", {Verdict::retry, TN_ETCD_NO_QUORUM}},
    {14, "leader", {Verdict::lost, TN_ETCD_NO_QUORUM}},
    {14, "", {Verdict::lost, TN_ETCD_NO_ANSWER}},
    {16, "", {Verdict::login, TN_ETCD_LOGIN_REFUSED}},
    {kAnyCode, "CommonName", {Verdict::failed, TN_ETCD_CERTIFICATE_NAME}},
};

// What has no row: the server's trouble may pass, and may have come after the work was done.
Meaning meaningOfStatus(long status) {
  if (status >= 500 || status == 408) return {Verdict::lost, TN_ETCD_NO_ANSWER};
  if (status == 404 || status == 405 || status < 400) return {Verdict::failed, TN_ETCD_NO_GATEWAY};
  return {Verdict::failed, TN_ETCD_ERROR};
}

Meaning meaningOfError(const http::Answer& answer) {
  const Json error = http::parseJson(answer.body);
  const Json& number = http::member(error, "code");
  const long code = number.is_number_integer() ? number.get<long>() : kAnyCode;
  const std::string message = http::textMember(error, "error");
  const std::string_view text = message.empty() ? std::string_view(answer.body) : message;
  const auto* const known = std::ranges::find_if(kErrors, [&](const ErrorMeaning& row) {
    return row.code == code && text.find(row.text) != std::string_view::npos;
  });
  return known != std::end(kErrors) ? known->meaning : meaningOfStatus(answer.status);
}

Meaning meaningOfFailure(Failure failure) {
  return std::ranges::find(kFailures, failure, &FailureMeaning::failure)->meaning;
}

http::Options optionsOf(const Address& address) {
  http::Options options;
  options.tls = address.tls;
  return options;
}

std::vector<std::string> startedAnywhere(std::vector<std::string> endpoints) {
  std::random_device random;
  std::uniform_int_distribution<size_t> position(0, endpoints.size() - 1);
  std::rotate(endpoints.begin(), endpoints.begin() + static_cast<std::ptrdiff_t>(position(random)),
              endpoints.end());
  return endpoints;
}

void pauseUntil(http::Deadline deadline) {
  std::this_thread::sleep_until(std::min(deadline, http::Clock::now() + kPause));
}

}  // namespace

struct Gateway::Reading {
  Meaning meaning{};
  Json answer{};
};

Gateway::Gateway(const Address& address)
    : user_(address.user),
      password_(address.password),
      client_(startedAnywhere(address.endpoints), optionsOf(address)),
      loginWanted_(!user_.empty() || !password_.empty()) {}

Json Gateway::read(const char* path, const Json& request, http::Deadline deadline) {
  return *call(path, request, true, deadline);
}

std::optional<Json> Gateway::change(const char* path, const Json& request,
                                    http::Deadline deadline) {
  return call(path, request, false, deadline);
}

std::optional<Json> Gateway::call(const char* path, const Json& request, bool repeatable,
                                  http::Deadline deadline) {
  failAtOnceAfterOutage();
  constexpr int kLogins = 2;  // a server that lags behind may not know a new token yet
  for (int logins = 0;; token_.clear()) {
    if (loginWanted_ && token_.empty()) {
      logIn(deadline);
      ++logins;
    }
    Reading reading = settle(path, request, repeatable, deadline);
    const auto [verdict, status] = reading.meaning;
    if (verdict == Verdict::done) return std::move(reading.answer);
    if (verdict == Verdict::lost) return std::nullopt;
    if (verdict != Verdict::login || !loginWanted_ || logins == kLogins) giveUp(status);
  }
}

void Gateway::logIn(http::Deadline deadline) {
  const Json request = {{"name", user_}, {"password", password_}};
  const Reading reading = settle("/v3/auth/authenticate", request, true, deadline);
  const auto [verdict, status] = reading.meaning;
  loginWanted_ = verdict != Verdict::noLogin;
  if (!loginWanted_) return;
  if (verdict != Verdict::done) giveUp(status);
  token_ = http::textMember(reading.answer, "token");
  if (token_.empty()) giveUp(TN_ETCD_NO_GATEWAY);
}

// Asks until it makes no sense to ask again. A change ends as done or lost, or asks for a login.
Gateway::Reading Gateway::settle(const char* path, const Json& request, bool repeatable,
                                 http::Deadline deadline) {
  TnStatus last = TN_ETCD_NO_ANSWER;
  while (http::Clock::now() < deadline) {
    Reading reading = ask(path, request, repeatable, deadline);
    Verdict& verdict = reading.meaning.verdict;
    last = reading.meaning.status;
    if (verdict == Verdict::garbled) verdict = repeatable ? Verdict::failed : Verdict::lost;
    if (verdict == Verdict::failed) giveUp(last);
    const bool again = verdict == Verdict::retry || verdict == Verdict::lost;
    if (again) pauseUntil(deadline);
    if (!again || (verdict == Verdict::lost && !repeatable)) return reading;
  }
  giveUp(last);
}

Gateway::Reading Gateway::ask(const char* path, const Json& request, bool repeatable,
                              http::Deadline deadline) {
  http::Request sent{http::Method::post, path, http::toText(request)};
  sent.headers.emplace_back("Grpc-Metadata-hasleader: true");
  if (!token_.empty()) sent.headers.push_back("Authorization: " + token_);
  sent.repeatable = repeatable;

  const http::Answer answer = client_.send(sent, deadline);
  if (answer.failure != Failure::none) return {meaningOfFailure(answer.failure)};
  if (answer.status == 200) {
    Json parsed = http::parseJson(answer.body);
    if (parsed.is_object()) return {{}, std::move(parsed)};
    return {{Verdict::garbled, TN_ETCD_NO_GATEWAY}};
  }
  client_.skipEndpoint();
  return {meaningOfError(answer)};
}

void Gateway::failAtOnceAfterOutage() const {
  if (outage_ != TN_SUCCESS && http::Clock::now() < outageEnd_) throw TuningError(outage_);
}

void Gateway::giveUp(TnStatus status) {
  constexpr TnStatus kOutages[] = {TN_SERVER_UNREACHABLE, TN_ETCD_NO_QUORUM, TN_ETCD_NO_ANSWER};
  if (std::ranges::find(kOutages, status) != std::end(kOutages)) {
    outage_ = status;
    outageEnd_ = http::Clock::now() + kOutage;
  }
  throw TuningError(status);
}

}  // namespace tn::etcd
