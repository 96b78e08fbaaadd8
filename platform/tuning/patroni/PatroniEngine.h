// The engine of a whole PostgreSQL cluster that Patroni runs. Reads come from a snapshot of the
// leader's settings; changes go into the cluster's configuration, from where every member's Patroni
// takes them. Since Patroni itself checks next to nothing, what it or a server would leave out is
// refused here, before it is stored or, where only a server can tell, by taking it out again: what
// needs a restart too, as far as a server tells before it.
//
// A change is stored at once. The first one of a run is followed by every running member before it
// is done, in 5 s at most; later ones are waited for together when the engine is left or a value is
// read. A change that needs a restart counts as followed when it waits for one: none is made here.
//
// The leader may change at any time. The configuration is then changed through another member, and
// what needs a server is asked of the new leader.
#ifndef KNOB_PATRONI_PATRONI_ENGINE_H
#define KNOB_PATRONI_PATRONI_ENGINE_H

#include <chrono>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "tuning/patroni/Address.h"
#include "tuning/patroni/Configuration.h"
#include "tuning/patroni/Followers.h"
#include "tuning/patroni/Member.h"
#include "tuning/patroni/MemberFiles.h"
#include "tuning/patroni/RestApi.h"
#include "tuning/postgresql/PostgresReader.h"

namespace tn::patroni {

// A cluster whose leader is known.
struct Cluster {
  Address address;
  std::unique_ptr<RestApi> api;
  std::string user;  // of the servers
  std::string password;
  Members members;

  const Member& leader() const;
  std::string leaderUri() const { return address.serverUri(leader().host, leader().port); }
};

class PatroniEngine final : public postgresql::PostgresReader {
 public:
  // Waits for a leader that lets us in: no attempt begins after 10 s.
  static std::unique_ptr<PatroniEngine> open(const char* server, const char* user,
                                             const char* password);

  explicit PatroniEngine(Cluster cluster);

 protected:
  void leave() override;
  void store(postgresql::Setting& setting, const postgresql::NewValue& value) override;
  void beforeReading() override;
  std::string description(int32_t settingId) override;

 private:
  bool isCurrent(const postgresql::Setting& setting, const postgresql::NewValue& value);
  bool isCurrentOnLeader(const postgresql::Setting& setting, const std::string& wanted);
  bool runsAs(const std::string& stored, const postgresql::Setting& setting);
  std::string_view textByPatroni(const postgresql::Setting& setting);
  void checkChangeable(const postgresql::Setting& setting, const postgresql::NewValue& value);
  std::string askServer(const postgresql::Setting& setting, const postgresql::NewValue& value);
  void checkProcesses(const postgresql::Setting& setting, const postgresql::NewValue& value);
  void write(const Change& change);
  void awaitFollowers(bool isReported);
  TnStatus settle(const Change& change, MemberServer::Standing standing, bool isReported);
  void takeOut(const Change& change);
  void goToLeader();
  void findLeader();
  Configuration& configuration();
  Followers& followers();
  const std::optional<MemberFiles>& leadersFiles();
  bool isConfigurationHidden();
  std::string origin(const postgresql::Setting& setting);
  std::string hindranceOnLeader(const postgresql::Setting& setting);

  Cluster cluster_;
  std::optional<Configuration> configuration_{};
  std::optional<Followers> followers_{};
  std::optional<MemberFiles> leadersFiles_{};
  bool configurationHidden_ = false;
  bool filesRead_ = false;
  std::vector<Change> unfollowed_{};  // stored, and not known to have reached every member
  TnStatus leaderless_ = TN_SUCCESS;  // why no leader was found the last time
  std::chrono::steady_clock::time_point leaderlessEnd_{};
  bool begun_ = false;  // a change of this run was stored
  bool stale_ = false;  // the snapshot is of before a change
};

}  // namespace tn::patroni

#endif
