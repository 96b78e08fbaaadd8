// An etcd cluster that lives as long as the object: its data in a temporary folder, on free ports
// of 127.0.0.1, as a user that is not root.
#ifndef KNOB_TESTS_ETCD_CLUSTER_H
#define KNOB_TESTS_ETCD_CLUSTER_H

#include <string>
#include <vector>

#include "http/HttpDouble.h"
#include "support/Daemon.h"
#include "support/TempFolder.h"

class Cluster {
 public:
  // Why there can be no cluster here; empty when there can.
  static std::string obstacle();

  // `secure`: with TLS. Each node makes a certificate of its own.
  explicit Cluster(std::size_t nodes, bool secure = false);

  void start(std::size_t node);
  void signal(std::size_t node, int number) const { nodes_[node].server.signal(number); }
  void end(std::size_t node) { nodes_[node].server.end(); }
  // Until the cluster answers.
  void await() const { ctl({"--dial-timeout=20s", "--command-timeout=20s", "get", "/"}); }

  int port(std::size_t node) const { return nodes_[node].port; }
  // "etcd://HOST:PORT,.../prefix"
  std::string address(const std::string& prefix) const;
  std::string file(const std::string& name) const { return folder_ / name; }

  // The output of etcdctl, which has to succeed.
  std::string ctl(std::vector<std::string> arguments) const;

 private:
  struct Node {
    int port = freePort();
    std::string peer = "http://" + local(freePort());
    Daemon server{};
  };

  std::string url(std::size_t node) const {
    return (secure_ ? "https://" : "http://") + local(port(node));
  }

  TempFolder folder_{};
  bool secure_;
  std::vector<Node> nodes_;
};

#endif
