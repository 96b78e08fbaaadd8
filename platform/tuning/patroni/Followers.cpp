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

bool Followers::await(const std::vector<Change>& changes) {
  const auto deadline = Clock::now() + kPatience;
  std::vector<MemberServer*> behind;
  for (MemberServer& server : servers_) behind.push_back(&server);
  const auto follows = [&](MemberServer* server) {
    return std::ranges::all_of(server->standings(changes, deadline),
                               [](Standing s) { return s == Standing::followed; });
  };
  const bool all = until(deadline, [&] {
    std::erase_if(behind, follows);
    return behind.empty();
  });
  std::erase_if(servers_, [&](const MemberServer& server) {
    return std::ranges::find(behind, server.name(), &MemberServer::name) != behind.end();
  });
  return !std::exchange(missing_, false) && all;
}

// What one server makes of a value the others make of it too.
Standing Followers::judge(const Change& change) {
  const auto deadline = Clock::now() + kPatience;
  Standing standing = Standing::notYet;
  const auto isDecided = [&](MemberServer& server) {
    standing = server.standings({change}, deadline).front();
    return standing != Standing::notYet;
  };
  until(deadline, [&] { return std::ranges::any_of(servers_, isDecided); });
  return standing;
}

}  // namespace tn::patroni
