#include "tuning/patroni/Followers.h"

#include <algorithm>
#include <chrono>
#include <functional>
#include <thread>
#include <utility>

#include "tuning/TuningError.h"

namespace tn::patroni {
namespace {

using Clock = std::chrono::steady_clock;
using Standing = MemberServer::Standing;

constexpr std::chrono::seconds kPatience{5};
constexpr std::chrono::seconds kPatienceForOthers{3};
constexpr std::chrono::milliseconds kFirstPause{5};
constexpr std::chrono::milliseconds kLongestPause{100};

// A member that is paused lets nobody in, and says so to nobody.
constexpr std::string_view kShortWait = "&connect_timeout=3";

bool isDecided(Standing standing) {
  return standing == Standing::followed || standing == Standing::refused;
}

bool isSettled(const std::vector<Standing>& standings) {
  return !standings.empty() && std::ranges::all_of(standings, isDecided);
}

Standing ofAll(const std::vector<std::vector<Standing>>& standings, size_t change, bool missing) {
  const auto is = [change](Standing standing) {
    return [=](const auto& ofServer) { return ofServer[change] == standing; };
  };
  if (std::ranges::any_of(standings, is(Standing::refused))) return Standing::refused;
  if (missing) return Standing::notYet;
  if (std::ranges::all_of(standings, is(Standing::followed))) return Standing::followed;
  return std::ranges::all_of(standings, is(Standing::unwritten)) ? Standing::unwritten
                                                                 : Standing::notYet;
}

// Asks again and again, less and less often, until the answer is yes or the time is over.
template <typename Question>
bool until(Clock::time_point deadline, Question yes) {
  for (auto pause = kFirstPause; !yes(); pause = std::min(pause * 2, kLongestPause)) {
    if (Clock::now() + pause >= deadline) return false;
    std::this_thread::sleep_for(pause);
  }
  return true;
}

}  // namespace

Followers::Followers(const Address& address, const Members& members, const std::string& user,
                     const std::string& password) {
  const std::string_view wait = address.hasConnectTimeout ? "" : kShortWait;
  for (const Member& member : members) {
    if (!member.leader && !member.running) continue;
    servers_.emplace_back(member.name, address.serverUri(member.host, member.port, wait), user,
                          password);
  }
  const auto reached = [](MemberServer& server) { return server.look(Clock::now() + kPatience); };
  missing_ = std::erase_if(servers_, std::not_fn(reached)) > 0;
}

void Followers::lookAgain() {
  for (MemberServer& server : servers_) server.look(Clock::now() + kPatienceForOthers);
}

bool Followers::have(const Change& change) const {
  return std::ranges::all_of(servers_, [&](const MemberServer& s) { return s.has(change); });
}

TnStatus Followers::hindrance(const postgresql::Setting& setting,
                              const Configuration& configuration) const {
  for (const MemberServer& server : servers_) {
    const TnStatus status = server.hindrance(setting, configuration);
    if (status != TN_SUCCESS) return status;
  }
  return TN_SUCCESS;
}

void Followers::checkHindrance(const postgresql::Setting& setting, RestApi& api,
                               Configuration& configuration) {
  TnStatus status = hindrance(setting, configuration);
  if (status == TN_PATRONI_SET_BY_MEMBER && !std::exchange(settled_, true)) {
    until(Clock::now() + kPatienceForOthers, [&] {
      configuration = api.configuration();
      lookAgain();
      status = hindrance(setting, configuration);
      return status != TN_PATRONI_SET_BY_MEMBER;
    });
  }
  if (status != TN_SUCCESS) throw TuningError(status);
}

std::vector<Standing> Followers::await(const std::vector<Change>& changes) {
  const auto deadline = Clock::now() + kPatience;
  std::vector<std::vector<Standing>> standings(servers_.size());
  const auto settles = [&](size_t server) {
    if (!isSettled(standings[server])) {
      standings[server] = servers_[server].standings(changes, deadline);
    }
    return isSettled(standings[server]);
  };
  until(deadline, [&] {
    size_t settled = 0;
    for (size_t server = 0; server < servers_.size(); ++server) settled += settles(server);
    return settled == servers_.size();
  });

  std::vector<Standing> found;
  found.reserve(changes.size());
  for (size_t change = 0; change < changes.size(); ++change) {
    found.push_back(ofAll(standings, change, missing_));
  }
  missing_ = false;
  size_t server = 0;
  std::erase_if(servers_, [&](const MemberServer&) { return !isSettled(standings[server++]); });
  return found;
}

// What one server makes of a value the others make of it too, as far as it can be asked in advance.
Standing Followers::judge(const Change& change) {
  const auto deadline = Clock::now() + kPatience;
  Standing standing = Standing::notYet;
  const auto decides = [&](MemberServer& server) {
    standing = server.standings({change}, deadline).front();
    return isDecided(standing);
  };
  until(deadline, [&] { return servers_.empty() || std::ranges::any_of(servers_, decides); });
  return standing;
}

}  // namespace tn::patroni
