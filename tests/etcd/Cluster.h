// An etcd cluster that lives as long as the object: its data in a temporary folder, on free ports
// of 127.0.0.1, as a user that is not root.
#ifndef KNOB_TESTS_ETCD_CLUSTER_H
#define KNOB_TESTS_ETCD_CLUSTER_H

#include <csignal>
#include <map>
#include <string>
#include <vector>

#include "support/Daemon.h"
#include "support/Process.h"
#include "support/TempFolder.h"

class Cluster {
 public:
  // Why there can be no cluster here; empty when there can.
  static std::string obstacle();
  // The cluster of three that most tests share, started when it is first asked for.
  static Cluster& shared();

  // `secure`: with TLS, which needs certificate() for each client.
  explicit Cluster(std::size_t nodes, bool secure = false);

  void start(std::size_t node);
  void signal(std::size_t node, int number) const { nodes_[node].server.signal(number); }
  void end(std::size_t node) { nodes_[node].server.end(); }

  int port(std::size_t node) const { return nodes_[node].port; }
  // "etcd://HOST:PORT,.../prefix"
  std::string address(const std::string& prefix) const;
  // Makes NAME.pem and NAME.key, signed by ca.pem, in the folder.
  void certificate(const std::string& name, const std::string& subject) const;
  // The variables that give them to a client.
  std::map<std::string, std::string> clientFiles(const std::string& name) const;
  std::string file(const std::string& name) const { return folder_ / name; }

  // The output of etcdctl, which has to succeed.
  std::string ctl(std::vector<std::string> arguments) const;
  void await() const;  // until the cluster answers
  Process knob(const std::string& prefix, std::vector<std::string> arguments) const;

 private:
  struct Node {
    int port;
    int peerPort;
    Daemon server{};
  };

  bool secure_;
  TempFolder folder_{};
  std::vector<Node> nodes_{};
};

#endif
