// A PostgreSQL cluster of two members under Patroni that lives as long as the object: its data in a
// temporary folder, on free ports of 127.0.0.1, as a user that is not root.
#ifndef KNOB_TESTS_PATRONI_PATRONI_CLUSTER_H
#define KNOB_TESTS_PATRONI_PATRONI_CLUSTER_H

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "etcd/Cluster.h"
#include "support/Daemon.h"
#include "support/Process.h"
#include "support/TempFolder.h"
#include "tuning/http/Client.h"

class PatroniCluster {
 public:
  // Why there can be no cluster here; empty when there can.
  static std::string obstacle();

  // The API wants the login admin, "right" for changes.
  PatroniCluster();
  ~PatroniCluster();

  Cluster& etcd() { return etcd_; }
  void start(std::size_t member);
  void signal(std::size_t member, int number) const { members_[member].patroni.signal(number); }
  // Patroni gets SIGKILL, its server the signal.
  void kill(std::size_t member, int number = SIGKILL);
  std::size_t leader() const;  // waits for one
  void awaitMembers() const;   // until both run
  void restart() const;        // both servers, through Patroni

  int port(std::size_t member) const { return members_[member].apiPort; }
  std::string sql(std::size_t member, const std::string& statement) const;
  std::string value(std::size_t member, const std::string& setting) const {
    return sql(member, "SELECT setting FROM pg_settings WHERE name = '" + setting + "'");
  }
  // The cluster's configuration as it stands in etcd.
  nlohmann::json configuration() const {
    return nlohmann::json::parse(etcd_.ctl({"get", "--print-value-only", "/service/knob/config"}));
  }
  void configure(const std::string& patch) const;

  // knob on one member's address.
  Outcome knob(std::size_t member, std::vector<std::string> arguments) const;
  static std::string id(const std::string& setting);

 private:
  struct Member {
    int serverPort = freePort();
    int apiPort = freePort();
    Daemon patroni{};
  };
  std::string file(std::size_t member, const std::string& name) const {
    return folder_ / ("m" + std::to_string(member) + name);
  }
  // The answer of its Patroni; empty for a request that failed.
  std::string ask(std::size_t member, const tn::http::Request& request) const;

  TempFolder folder_{};
  Cluster etcd_{1};
  std::vector<Member> members_{2};
};

#endif
