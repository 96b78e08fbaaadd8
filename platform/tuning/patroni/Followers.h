// The servers of a cluster as those that have to follow its configuration: all members that ran
// when the cluster was asked for its members.
//
// A server that does not answer costs its time once: it is then left out as long as another one
// answers, and counts as one that has not followed.
#ifndef KNOB_PATRONI_FOLLOWERS_H
#define KNOB_PATRONI_FOLLOWERS_H

#include <string>
#include <vector>

#include "service/TuningInterface.h"
#include "tuning/patroni/Address.h"
#include "tuning/patroni/Configuration.h"
#include "tuning/patroni/Member.h"
#include "tuning/patroni/MemberServer.h"
#include "tuning/patroni/RestApi.h"

namespace tn::patroni {

class Followers {
 public:
  // Looks at each running member's server. Throws TN_PATRONI_SOURCES_HIDDEN.
  Followers(const Address& address, const Members& members, const std::string& user,
            const std::string& password);

  // True when every member has the value in force or waiting for a restart, as far as is known.
  bool have(const Change& change) const;

  // Throws why one of the members would not follow a change of the setting. What could be a change
  // of somebody else's on its way is given 3 s, once; `configuration` is then read again.
  void checkHindrance(const postgresql::Setting& setting, RestApi& api,
                      Configuration& configuration);

  // Waits until every member has followed the changes or refused them: 5 s at most, and 2 s for
  // each that does not answer; one that has not is not waited for again. Of each change: refused by
  // one, followed by all, unwritten on all, or else notYet.
  std::vector<MemberServer::Standing> await(const std::vector<Change>& changes);

  // Waits as long until a member has followed the change or refused it, and tells which.
  MemberServer::Standing judge(const Change& change);

 private:
  struct Follower {
    MemberServer server;
    bool late = false;  // is asked, but no longer waited for
  };

  TnStatus hindrance(const postgresql::Setting& setting, const Configuration& configuration) const;
  void lookAgain();

  std::vector<Follower> followers_{};  // the leader first
  bool settled_ = false;
};

}  // namespace tn::patroni

#endif
