#include "tuning/patroni/Followers.h"

#include <algorithm>
#include <chrono>
#include <thread>
#include <utility>

#include "tuning/TuningError.h"

namespace tn::patroni {
namespace {

using Clock = std::chrono::steady_clock;
using Standing = MemberServer::Standing;

constexpr std::chrono::seconds kPatience{5};
constexpr std::chrono::seconds kPatienceForOthers{3};
constexpr std::chrono::seconds kPatienceForAnswer{2};
constexpr std::chrono::milliseconds kFirstPause{5};
constexpr std::chrono::milliseconds kLongestPause{100};

// A member that is paused lets nobody in, and says so to nobody.
constexpr std::string_view kShortWait = "&connect_timeout=3";

bool isDecided(Standing standing) {
  return standing == Standing::followed || standing == Standing::refused;
}

bool isSettled(const std::vector<Standing>& standings) {
  return std::ranges::all_of(standings, isDecided);
}

Standing ofAll(const std::vector<std::vector<Standing>>& standings, size_t change) {
  const auto is = [change](Standing standing) {
    return [=](const auto& ofServer) { return ofServer[change] == standing; };
  };
  if (std::ranges::any_of(standings, is(Standing::refused))) return Standing::refused;
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
  for (const bool leader : {true, false}) {
    for (const Member& member : members) {
      if (member.leader != leader || (!leader && !member.running)) continue;
      const std::string uri = address.serverUri(member.host, member.port, wait);
      followers_.push_back({MemberServer(uri, user, password)});
    }
  }
  for (Follower& follower : followers_) follower.server.look(Clock::now() + kPatience);
}

void Followers::lookAgain() {
  for (auto& [server, late] : followers_) {
    if (!server.isSilent()) server.look(Clock::now() + kPatienceForOthers);
  }
}

bool Followers::have(const Change& change) const {
  return std::ranges::all_of(followers_,
                             [&](const Follower& each) { return each.server.has(change); });
}

TnStatus Followers::hindrance(const postgresql::Setting& setting,
                              const Configuration& configuration) const {
  for (const auto& [server, late] : followers_) {
    const TnStatus status = server.hindrance(setting, configuration);
    if (status != TN_SUCCESS) return status;
  }
  return TN_SUCCESS;
}

void Followers::checkHindrance(const postgresql::Setting& setting, RestApi& api,
                               Configuration& configuration) {
  TnStatus status = hindrance(setting, configuration);
  if (status == TN_PATRONI_SET_BY_MEMBER) {
    const auto deadline =
        Clock::now() + (std::exchange(settled_, true) ? Clock::duration() : kPatienceForOthers);
    until(deadline, [&] {
      configuration = api.configuration();
      lookAgain();
      status = hindrance(setting, configuration);
      return status != TN_PATRONI_SET_BY_MEMBER;
    });
  }
  if (status != TN_SUCCESS) throw TuningError(status);
}

std::vector<Standing> Followers::await(const std::vector<Change>& changes) {
  std::vector<std::vector<Standing>> standings(
      followers_.size(), std::vector<Standing>(changes.size(), Standing::notYet));
  // True: there is nothing to wait for.
  const auto ask = [&](size_t i) {
    auto& [server, late] = followers_[i];
    if (server.isSilent() || isSettled(standings[i])) return true;
    standings[i] = server.standings(changes, Clock::now() + kPatienceForAnswer);
    return server.isSilent() || late || isSettled(standings[i]);
  };
  until(Clock::now() + kPatience, [&] {
    bool all = true;
    for (size_t i = 0; i < followers_.size(); ++i) all = ask(i) && all;
    return all;
  });

  for (size_t i = 0; i < followers_.size(); ++i) {
    followers_[i].late = followers_[i].late || !isSettled(standings[i]);
  }
  std::vector<Standing> found;
  found.reserve(changes.size());
  for (size_t change = 0; change < changes.size(); ++change) {
    found.push_back(ofAll(standings, change));
  }
  return found;
}

// What one server makes of a value the others make of it too, as far as it can be asked in advance.
Standing Followers::judge(const Change& change) {
  Standing standing = Standing::notYet;
  const auto answers = [](const Follower& each) { return !each.server.isSilent(); };
  const auto decides = [&](Follower& each) {
    if (!answers(each) && std::ranges::any_of(followers_, answers)) return false;
    standing = each.server.standings({change}, Clock::now() + kPatienceForAnswer).front();
    return isDecided(standing);
  };
  until(Clock::now() + kPatience, [&] { return std::ranges::any_of(followers_, decides); });
  return standing;
}

}  // namespace tn::patroni
