#include "tuning/patroni/PatroniEngine.h"

#include <algorithm>
#include <charconv>
#include <chrono>
#include <iterator>
#include <thread>
#include <utility>

#include "tuning/TuningError.h"
#include "tuning/patroni/Rules.h"
#include "tuning/postgresql/KnownSettings.h"
#include "tuning/postgresql/SettingText.h"

namespace tn::patroni {
namespace {

using Clock = std::chrono::steady_clock;
using postgresql::NewValue;
using postgresql::Setting;
using postgresql::Snapshot;

constexpr std::chrono::seconds kPatienceAtFirst{10};
constexpr std::chrono::seconds kPatienceForNewLeader{30};
constexpr std::chrono::seconds kPatienceForFiles{5};
constexpr std::chrono::seconds kOutage{10};
constexpr std::chrono::milliseconds kPause{250};

// Processes of a server that share one limit, and the limit without the launcher of autovacuum.
constexpr std::string_view kProcesses[] = {"autovacuum_max_workers", "max_connections",
                                           "max_wal_senders", "max_worker_processes"};
constexpr int64_t kMostProcesses = 262142;

// What a server says while it becomes the leader, or was it until a moment ago.
constexpr TnStatus kPassing[] = {TN_SERVER_UNREACHABLE, TN_SERVER_NOT_READY, TN_CONNECTION_LOST,
                                 TN_PATRONI_UNREACHABLE};

// What became of several changes, the worst last.
constexpr TnStatus kWorse[] = {TN_SUCCESS, TN_PATRONI_NOT_FOLLOWED, TN_PATRONI_NOT_TAKEN,
                               TN_VALUE_REFUSED, TN_PATRONI_OUTCOME_UNKNOWN};

bool isPassing(const TuningError& error) {
  return std::ranges::find(kPassing, error.status()) != std::end(kPassing);
}

bool hasLeader(const Members& members) {
  return std::ranges::any_of(members, [](const Member& m) { return m.leader && !m.host.empty(); });
}

std::string joined(const std::string& sentence, const std::string& another) {
  return sentence + (sentence.empty() || another.empty() ? "" : " ") + another;
}

// A whole number can stand in the configuration as one. Patroni does not read every way to write a
// fraction.
http::Json jsonOf(const Setting& setting, const NewValue& value) {
  if (setting.type == TN_TYPE_INTEGER) return std::stoi(value.text());
  const auto number = postgresql::ValueText::real(value.text(), setting.unit);
  if (!setting.real || !number) return value.text();
  char digits[32];
  return std::string(digits, std::to_chars(digits, std::end(digits), *number).ptr);
}

// A number with a fraction is a text to whoever gives it.
void checkReal(const Setting& setting, const NewValue& value) {
  if (!setting.real) return;
  const auto wanted = postgresql::ValueText::real(value.shown(), setting.unit);
  if (!wanted) throw TuningError(TN_VALUE_REFUSED);
  const auto lowest = postgresql::ValueText::real(setting.minimum, {});
  const auto highest = postgresql::ValueText::real(setting.maximum, {});
  if ((lowest && *wanted < *lowest) || (highest && *wanted > *highest)) {
    throw TuningError(TN_VALUE_OUT_OF_RANGE);
  }
}

}  // namespace

const Member& Cluster::leader() const {
  return *std::ranges::find_if(members, [](const Member& member) { return member.leader; });
}

std::unique_ptr<PatroniEngine> PatroniEngine::open(const char* server, const char* user,
                                                   const char* password) {
  const auto deadline = Clock::now() + kPatienceAtFirst;
  for (;; std::this_thread::sleep_for(kPause)) {
    Cluster cluster{Address::parse(server), nullptr, user, password, {}};
    cluster.api = std::make_unique<RestApi>(cluster.address);
    cluster.members = cluster.api->members();
    if (!hasLeader(cluster.members)) {
      if (Clock::now() >= deadline) throw TuningError(TN_PATRONI_NO_LEADER);
      continue;
    }
    // One that has died is told as the leader until its time is over.
    try {
      return std::make_unique<PatroniEngine>(std::move(cluster));
    } catch (const TuningError& error) {
      // The cluster has named host and port: what libpq does not understand is one of the options.
      if (error.status() == TN_SERVER_ADDRESS_INVALID) {
        throw TuningError(TN_PATRONI_ADDRESS_INVALID);
      }
      if (Clock::now() >= deadline || !isPassing(error)) throw;
    }
  }
}

PatroniEngine::PatroniEngine(Cluster cluster)
    : PostgresReader(cluster.leaderUri().c_str(), cluster.user.c_str(), cluster.password.c_str()),
      cluster_(std::move(cluster)) {}

void PatroniEngine::leave() { awaitFollowers(false); }

void PatroniEngine::beforeReading() {
  if (!stale_) return;
  awaitFollowers(false);
  try {
    readAgain();
  } catch (const TuningError& error) {
    if (error.status() != TN_CONNECTION_LOST) throw;
    goToLeader();
    readAgain();
  }
  configuration_.reset();
  filesRead_ = false;
  stale_ = false;
}

Configuration& PatroniEngine::configuration() {
  if (!configuration_) configuration_ = cluster_.api->configuration();
  return *configuration_;
}

Followers& PatroniEngine::followers() {
  if (!followers_) {
    cluster_.api->alsoAsk(cluster_.members);
    followers_.emplace(cluster_.address, cluster_.members, cluster_.user, cluster_.password);
  }
  return *followers_;
}

// Nothing for a role that may not look.
const std::optional<MemberFiles>& PatroniEngine::leadersFiles() {
  if (!std::exchange(filesRead_, true)) {
    leadersFiles_.reset();
    try {
      leadersFiles_ = MemberFiles::read(connection(), Clock::now() + kPatienceForFiles);
    } catch (const TuningError& error) {
      if (error.status() != TN_PATRONI_SOURCES_HIDDEN) throw;
    }
  }
  return leadersFiles_;
}

// For a while after no leader was found this fails at once: an import is told for each setting
// without waiting for each.
void PatroniEngine::goToLeader() {
  if (leaderless_ != TN_SUCCESS && Clock::now() < leaderlessEnd_) throw TuningError(leaderless_);
  try {
    findLeader();
    leaderless_ = TN_SUCCESS;
  } catch (const TuningError& error) {
    leaderless_ = error.status();
    leaderlessEnd_ = Clock::now() + kOutage;
    throw;
  }
}

// The leader of the moment may be one that is gone: then the cluster does not know it yet.
void PatroniEngine::findLeader() {
  cluster_.api->alsoAsk(cluster_.members);
  const auto deadline = Clock::now() + kPatienceForNewLeader;
  for (;; std::this_thread::sleep_for(kPause)) {
    try {
      Members members = cluster_.api->members();
      if (hasLeader(members)) {
        cluster_.members = std::move(members);
        connection() = postgresql::Connection(cluster_.leaderUri().c_str(), cluster_.user.c_str(),
                                              cluster_.password.c_str());
        followers_.reset();
        return;
      }
    } catch (const TuningError& error) {
      if (Clock::now() >= deadline || !isPassing(error)) throw;
    }
    if (Clock::now() >= deadline) throw TuningError(TN_PATRONI_NO_LEADER);
  }
}

void PatroniEngine::store(Setting& setting, const NewValue& value) {
  if (isCurrent(setting, value)) return;
  checkChangeable(setting, value);
  const std::string asTold = askServer(setting, value);
  const Change change{&setting, value, asTold, jsonOf(setting, value),
                      configuration().stored(setting.name)};
  write(change);
  setting.written = value.shown();
  std::erase_if(unfollowed_, [&](const Change& earlier) { return earlier.setting == &setting; });
  unfollowed_.push_back(change);
  stale_ = true;
  if (!std::exchange(begun_, true)) awaitFollowers(true);
}

// What a member may have otherwise than the leader, by its role or as its own, the leader decides.
bool PatroniEngine::isCurrent(const Setting& setting, const NewValue& value) {
  if (setting.written) return Snapshot::same(*setting.written, value.shown(), setting);
  if (!isCurrentOnLeader(setting, value.shown())) return false;
  if (isReadOnly(setting) || Rules::isPatronisOwn(setting.name)) return true;
  return Rules::isOfSynchronousMode(setting.name, configuration()) ||
         followers().have({&setting, value, {}});
}

// True when the value is in force or will be after a restart, and nothing waits to change that.
bool PatroniEngine::isCurrentOnLeader(const Setting& setting, const std::string& wanted) {
  const auto isWanted = [&](std::string_view text) {
    return Snapshot::means(text, wanted, setting);
  };
  const bool inForce = setting.currentIsKnown && Snapshot::same(setting.current, wanted, setting);
  const auto stored = configuration().parameter(setting.name);
  if (stored && isWanted(*stored)) return inForce || setting.changeMayWait;
  if (!inForce || Rules::isPatronisOwn(setting.name)) return inForce;
  if (stored) return runsAs(*stored, setting);
  // A change back to what runs takes nothing out of the file: Patroni will do that at a restart.
  return !setting.changeMayWait || isWanted(textByPatroni(setting));
}

// True: the stored text gives the value that runs, which the server tells in other words.
bool PatroniEngine::runsAs(const std::string& stored, const Setting& setting) {
  if (Snapshot::means(stored, setting.current, setting)) return true;
  if (setting.type != TN_TYPE_STRING || setting.changeMayWait) return false;
  const auto& files = leadersFiles();
  return files && !files->isOverridden(setting.name) && textByPatroni(setting) == stored;
}

// Empty for none.
std::string_view PatroniEngine::textByPatroni(const Setting& setting) {
  const auto& files = leadersFiles();
  const MemberFiles::Entry* const written = files ? files->byPatroni(setting.name) : nullptr;
  return written && !(written->failed && !setting.changeMayWait) ? written->text
                                                                 : std::string_view();
}

// A change that could not take effect is not made at all.
void PatroniEngine::checkChangeable(const Setting& setting, const NewValue& value) {
  Rules::check(setting, value, configuration());
  if (isReadOnly(setting)) throw TuningError(TN_SETTING_READ_ONLY);
  checkReal(setting, value);
  checkProcesses(setting, value);
  if (!setting.written) followers().checkHindrance(setting, *cluster_.api, configuration());
}

// What a session may set the leader's server judges when it is set for the moment of the question.
// Returns the value as the server tells it; nothing where it cannot be asked in this way.
std::string PatroniEngine::askServer(const Setting& setting, const NewValue& value) {
  const auto ask = [&] {
    const std::string text = connection().literal(value.text());
    if (setting.server || setting.ofNewSessions) return std::string();
    return std::string(connection()
                           .query("SELECT pg_catalog.set_config(" +
                                      connection().literal(std::string(setting.name)) + ", " +
                                      text + ", true)",
                                  postgresql::SqlState::ofValue)
                           .text(0, 0));
  };
  for (bool again = true;; again = false) {
    try {
      return ask();
    } catch (const TuningError& error) {
      if (error.status() == TN_NOT_PERMITTED || error.status() == TN_SETTING_READ_ONLY) return {};
      if (error.status() != TN_CONNECTION_LOST || !again) throw;
    }
    goToLeader();
  }
}

// A server refuses what is too much together with the others. Of a setting that already waits for a
// restart it does not tell that it does, and of several that wait together it does not know.
void PatroniEngine::checkProcesses(const Setting& setting, const NewValue& value) {
  const auto isShared = [&](std::string_view name) { return name == setting.name; };
  if (std::ranges::none_of(kProcesses, isShared)) return;
  int64_t all = std::stoi(value.text());
  for (const std::string_view name : kProcesses) {
    const auto* const known = postgresql::KnownSettings::find(name);
    const Setting* const other = known ? snapshot().setting(known->id) : nullptr;
    if (!other || other == &setting) continue;
    const auto stored = configuration().parameter(name);
    const std::string shown =
        stored ? Snapshot::shown(*stored, *other).value_or(*stored) : other->current;
    all += postgresql::ValueText::integer(shown, {}).value_or(0);
  }
  if (all > kMostProcesses) throw TuningError(TN_VALUE_REFUSED);
}

// What no session can be asked about is looked at where it has arrived. It does not stay where no
// server has taken it: a server does not start with a value that it refuses.
void PatroniEngine::write(const Change& change) {
  Followers& members = followers();  // nothing may fail between the change and its judgement
  configuration_ = cluster_.api->change(configuration().change(change.setting->name, change.json));
  if (!change.asTold.empty()) return;
  const auto standing = members.judge(change);
  if (standing == MemberServer::Standing::followed) return;
  takeOut(change);
  if (standing == MemberServer::Standing::refused) throw TuningError(TN_VALUE_REFUSED);
  throw TuningError(TN_PATRONI_NOT_TAKEN);
}

// A server may refuse what another takes: it would not start with it, so that is taken out. What
// Patroni writes nowhere does no harm, and is taken out only where somebody is told of it.
void PatroniEngine::awaitFollowers(bool isReported) {
  if (unfollowed_.empty()) return;
  const auto changes = std::exchange(unfollowed_, {});
  const auto standings = followers().await(changes);
  TnStatus worst = TN_SUCCESS;
  for (size_t i = 0; i < changes.size(); ++i) {
    const TnStatus status = settle(changes[i], standings[i], isReported);
    if (std::ranges::find(kWorse, status) > std::ranges::find(kWorse, worst)) worst = status;
  }
  if (worst != TN_SUCCESS) throw TuningError(worst);
}

TnStatus PatroniEngine::settle(const Change& change, MemberServer::Standing standing,
                               bool isReported) {
  using enum MemberServer::Standing;
  if (standing == followed) return TN_SUCCESS;
  if (standing == notYet || (standing == unwritten && !isReported)) return TN_PATRONI_NOT_FOLLOWED;
  try {
    takeOut(change);
  } catch (const TuningError& error) {
    return error.status();
  }
  return standing == refused ? TN_VALUE_REFUSED : TN_PATRONI_NOT_TAKEN;
}

// Gives the setting back what it had, unless it has been changed again. A member that has not
// looked at the store since still tells what it had.
void PatroniEngine::takeOut(const Change& change) {
  const std::string_view name = change.setting->name;
  snapshot().setting(change.setting->id)->written.reset();
  try {
    configuration_ = cluster_.api->configuration();
    const http::Json now = configuration_->stored(name);
    if (now != change.json && now != change.previous) return;
    configuration_ = cluster_.api->change(configuration_->change(name, change.previous));
  } catch (const TuningError&) {
    throw TuningError(TN_PATRONI_OUTCOME_UNKNOWN);
  }
}

std::string PatroniEngine::description(int32_t settingId) {
  beforeReading();
  const Setting* const setting = snapshot().setting(settingId);
  if (!setting) throw TuningError(TN_UNKNOWN_SETTING);
  return postgresql::SettingText::of(*setting, origin(*setting));
}

// Where the value comes from, unless that is the plain case: the default, or what the server was
// configured with before it was the cluster's.
std::string PatroniEngine::origin(const Setting& setting) {
  if (Rules::isPatronisOwn(setting.name)) return "Patroni sets it on every member.";
  if (isConfigurationHidden()) return "The cluster's configuration cannot be read at the moment.";
  if (Rules::isOfSynchronousMode(setting.name, configuration())) {
    return "Patroni sets it in synchronous mode.";
  }
  const auto stored = configuration().parameter(setting.name);
  const std::string waits = setting.changeMayWait ? "A change waits for a restart." : "";
  if (!stored) return joined(hindranceOnLeader(setting), waits);
  if (runsAs(*stored, setting)) return "Set in the cluster's configuration.";
  const std::string set = "Set to " + Snapshot::shown(*stored, setting).value_or(*stored) +
                          " in the cluster's configuration.";
  return joined(set, waits.empty() ? hindranceOnLeader(setting) : waits);
}

// Settings are shown all the same.
bool PatroniEngine::isConfigurationHidden() {
  if (configurationHidden_) return true;
  try {
    configuration();
  } catch (const TuningError& error) {
    if (error.status() != TN_PATRONI_CONFIG_NOT_READABLE) throw;
    configurationHidden_ = true;
  }
  return configurationHidden_;
}

std::string PatroniEngine::hindranceOnLeader(const Setting& setting) {
  const bool stored = configuration().parameter(setting.name).has_value();
  if (!stored && Snapshot::same(setting.current, setting.fallback, setting)) return {};
  const auto& files = leadersFiles();
  if (!files) return {};
  const TnStatus status =
      MemberServer::hindrance(*files, setting.changeMayWait, setting, configuration());
  if (status == TN_PATRONI_OVERRIDDEN) return "Overridden on the leader by postgresql.auto.conf.";
  const MemberFiles::Entry* const written = files->byPatroni(setting.name);
  if (stored && written && written->failed) return "The leader's server refuses it.";
  if (stored || status == TN_PATRONI_SET_BY_MEMBER) {
    return "Overridden on the leader by the member's own configuration, or its Patroni does not "
           "follow.";
  }
  return {};
}

}  // namespace tn::patroni
