#include "tuning/patroni/RestApi.h"

#include <algorithm>
#include <string_view>
#include <thread>
#include <utility>

#include "tuning/TuningError.h"

namespace tn::patroni {
namespace {

using http::Clock;
using http::Failure;
using http::Json;
using std::chrono::milliseconds;

// A Patroni without its store answers after its retry_timeout, 10 s unless set. Together the two
// keep an answer to the user below 15 s.
constexpr std::chrono::seconds kPatience{10};
constexpr std::chrono::seconds kPatienceForSignOfLife{2};
constexpr std::chrono::seconds kOneMember{6};
constexpr std::chrono::seconds kOutage{10};
constexpr milliseconds kPause{50};

constexpr long kOk = 200;
constexpr long kConflict = 409;
constexpr long kUnavailable = 503;  // what Patroni says before it does anything

struct Meaning {
  long code;              // of HTTP
  std::string_view text;  // that the body holds
  TnStatus status;
};

// The first row that fits counts.
constexpr Meaning kMeanings[] = {
    {401, "no auth header", TN_PATRONI_LOGIN_NEEDED},
    {401, "", TN_PATRONI_LOGIN_REFUSED},
    {403, "certificate", TN_PATRONI_TLS_REFUSED},
    {403, "", TN_PATRONI_NOT_PERMITTED},
    {kConflict, "", TN_PATRONI_CONFLICT},
};

constexpr std::string_view kRunningStates[] = {"running", "streaming", "in archive recovery"};

constexpr TnStatus kOutages[] = {TN_PATRONI_STORE_DOWN, TN_PATRONI_UNREACHABLE,
                                 TN_PATRONI_OUTCOME_UNKNOWN, TN_PATRONI_CONFIG_NOT_READABLE};

http::Options optionsOf(const Address& address) {
  http::Options options;
  options.tls = address.tls;
  options.user = address.apiUser;
  options.password = address.apiPassword;
  options.requestTime = kOneMember;
  return options;
}

// "http://10.0.0.1:8008/patroni" without the path.
std::string endpointIn(const std::string& url) {
  const size_t host = url.find("://");
  return host == std::string::npos ? "" : url.substr(0, url.find('/', host + 3));
}

// The request may be carried out yet: whoever stands before Patroni may have given it up only.
bool isOpen(const http::Answer& answer) {
  return answer.failure == Failure::timeout || answer.failure == Failure::cut ||
         (answer.status >= 500 && answer.status != kUnavailable);
}

Member memberOf(const Json& entry) {
  const std::string role = http::textMember(entry, "role");
  const std::string state = http::textMember(entry, "state");
  const Json& port = http::member(entry, "port");
  Member member;
  member.name = http::textMember(entry, "name");
  member.host = http::textMember(entry, "host");
  const int64_t number = port.is_number_integer() ? port.get<int64_t>() : 5432;
  if (number < 1 || number > 65535) throw TuningError(TN_PATRONI_FOREIGN);
  member.port = static_cast<int>(number);
  member.endpoint = endpointIn(http::textMember(entry, "api_url"));
  member.leader = role == "leader" || role == "standby_leader";
  member.running = std::ranges::find(kRunningStates, state) != std::end(kRunningStates);
  return member;
}

}  // namespace

struct RestApi::Reply {
  http::Answer answer;
  Json json;  // discarded when the body is no JSON
};

RestApi::RestApi(const Address& address)
    : address_(address), client_(address.endpoints, optionsOf(address)) {}

void RestApi::alsoAsk(const Members& members) {
  auto& endpoints = address_.endpoints;
  const std::string scheme = endpoints.front().substr(0, endpoints.front().find(':') + 1);
  for (const Member& member : members) {
    if (!member.endpoint.starts_with(scheme)) continue;
    if (std::ranges::find(endpoints, member.endpoint) != endpoints.end()) continue;
    endpoints.push_back(member.endpoint);
    client_.addEndpoint(member.endpoint);
  }
}

// A member that fails may be cut off from a store that others reach.
RestApi::Reply RestApi::ask(const http::Request& request, http::Deadline deadline) {
  http::Answer best;
  for (size_t tries = 0; tries < client_.endpointCount(); ++tries) {
    http::Answer answer = client_.send(request, deadline);
    const bool failed = answer.failure != Failure::none;
    if (failed && tries > 0) break;  // what the member before has said tells more
    best = std::move(answer);
    if (failed || best.status < 500 || (!request.repeatable && isOpen(best))) break;
    client_.skipEndpoint();
  }
  http::Json json = http::parseJson(best.body);
  return {std::move(best), std::move(json)};
}

TnStatus RestApi::statusOf(const Reply& reply) {
  const http::Answer& answer = reply.answer;
  if (answer.failure == Failure::unreachable) return TN_PATRONI_UNREACHABLE;
  if (answer.failure == Failure::tls) return TN_PATRONI_TLS_REFUSED;
  if (answer.failure == Failure::tooLarge) return TN_PATRONI_FOREIGN;
  if (answer.failure != Failure::none || answer.status >= 500) return TN_PATRONI_STORE_DOWN;
  if (answer.status == kOk && reply.json.is_object()) return TN_SUCCESS;
  const auto* const known = std::ranges::find_if(kMeanings, [&](const Meaning& row) {
    return row.code == answer.status && answer.body.find(row.text) != std::string::npos;
  });
  return known == std::end(kMeanings) ? TnStatus{TN_PATRONI_FOREIGN} : known->status;
}

// Whoever tells of itself without its store is a Patroni that has lost it.
TnStatus RestApi::whyNoAnswer(bool changing) {
  const Reply reply =
      ask({http::Method::get, "/patroni", {}, {}, true}, Clock::now() + kPatienceForSignOfLife);
  if (http::member(reply.json, "patroni").is_object()) return TN_PATRONI_STORE_DOWN;
  if (changing) return TN_PATRONI_OUTCOME_UNKNOWN;
  const Failure failure = reply.answer.failure;
  const bool silent = failure == Failure::unreachable || failure == Failure::timeout;
  return silent ? TN_PATRONI_UNREACHABLE : TN_PATRONI_FOREIGN;
}

Json RestApi::read(const char* path) {
  Reply reply = ask({http::Method::get, path, {}, {}, true}, Clock::now() + kPatience);
  TnStatus status = statusOf(reply);
  if (status == TN_PATRONI_STORE_DOWN) status = whyNoAnswer(false);
  if (status != TN_SUCCESS) throw TuningError(status);
  return std::move(reply.json);
}

Members RestApi::members() {
  const Json cluster = read("/cluster");
  const Json& list = http::member(cluster, "members");
  if (!list.is_array()) throw TuningError(TN_PATRONI_FOREIGN);
  Members members;
  for (const Json& entry : list) members.push_back(memberOf(entry));
  return members;
}

Configuration RestApi::configuration() {
  failAtOnceDuringOutage();
  try {
    return Configuration(read("/config"));
  } catch (const TuningError& error) {
    if (error.status() != TN_PATRONI_STORE_DOWN) giveUp(error.status());
  }
  const Reply cluster =
      ask({http::Method::get, "/cluster", {}, {}, true}, Clock::now() + kPatienceForSignOfLife);
  giveUp(statusOf(cluster) == TN_SUCCESS ? TN_PATRONI_CONFIG_NOT_READABLE : TN_PATRONI_STORE_DOWN);
}

Configuration RestApi::change(const Json& change) {
  failAtOnceDuringOutage();
  const std::string body = http::toText(change);
  // Bytes that are no text were replaced.
  if (http::parseJson(body) != change) throw TuningError(TN_VALUE_REFUSED);

  // Never sent twice: a member that was given up may carry it out later, over somebody else's newer
  // value.
  const http::Request request{http::Method::patch, "/config", body};
  const auto deadline = Clock::now() + kPatience;
  TnStatus status = TN_PATRONI_CONFLICT;
  while (status == TN_PATRONI_CONFLICT && Clock::now() < deadline) {
    const Reply reply = ask(request, deadline);
    status = statusOf(reply);
    if (status == TN_SUCCESS) return Configuration(reply.json);
    if (isOpen(reply.answer)) return configurationWith(change);
    if (status == TN_PATRONI_CONFLICT) std::this_thread::sleep_for(kPause);
  }
  giveUp(status == TN_PATRONI_STORE_DOWN ? whyNoAnswer(true) : status);
}

// What became of a change to which no answer came. Where members answer, the next change need not
// fail at once.
Configuration RestApi::configurationWith(const Json& change) {
  Reply reply =
      ask({http::Method::get, "/config", {}, {}, true}, Clock::now() + kPatienceForSignOfLife);
  if (statusOf(reply) != TN_SUCCESS) giveUp(whyNoAnswer(true));
  Json changed = reply.json;
  changed.merge_patch(change);
  if (changed != reply.json) throw TuningError(TN_PATRONI_OUTCOME_UNKNOWN);
  return Configuration(std::move(changed));
}

void RestApi::failAtOnceDuringOutage() const {
  if (outage_ != TN_SUCCESS && Clock::now() < outageEnd_) throw TuningError(outage_);
}

void RestApi::giveUp(TnStatus status) {
  if (std::ranges::find(kOutages, status) != std::end(kOutages)) {
    outage_ = status;
    outageEnd_ = Clock::now() + kOutage;
  }
  throw TuningError(status);
}

}  // namespace tn::patroni
