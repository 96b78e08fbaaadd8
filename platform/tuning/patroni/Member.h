// One member of a cluster, as the REST API tells it.
#ifndef KNOB_PATRONI_MEMBER_H
#define KNOB_PATRONI_MEMBER_H

#include <string>
#include <vector>

namespace tn::patroni {

struct Member {
  std::string name;
  std::string host;  // of its PostgreSQL server; empty when it is not known yet
  int port = 0;
  std::string endpoint;  // of its REST API: "http://HOST:PORT"
  bool leader = false;   // of the cluster, or of a standby cluster
  bool running = false;  // its server runs, as far as Patroni knows
};

using Members = std::vector<Member>;

}  // namespace tn::patroni

#endif
