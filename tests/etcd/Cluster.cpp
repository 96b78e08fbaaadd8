#include "etcd/Cluster.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include "support/Process.h"

std::string Cluster::obstacle() {
  const bool found = access("/usr/bin/etcd", X_OK) == 0 && access("/usr/bin/etcdctl", X_OK) == 0;
  return found ? "" : "there is no /usr/bin/etcd or etcdctl (etcd-server, etcd-client)";
}

Cluster::Cluster(std::size_t nodes, bool secure) : secure_(secure), nodes_(nodes) {
  std::filesystem::permissions(folder_.path(), std::filesystem::perms{0777});
  for (std::size_t node = 0; node < nodes; ++node) start(node);
  await();
}

void Cluster::start(std::size_t node) {
  const std::string name = "n" + std::to_string(node), peer = nodes_[node].peer;
  std::string members;
  for (std::size_t i = 0; i < nodes_.size(); ++i) {
    members += ",n" + std::to_string(i) + "=" + nodes_[i].peer;
  }
  const std::string command =
      "exec etcd --unsafe-no-fsync --heartbeat-interval 50 --election-timeout 500 --bcrypt-cost 4 "
      "--auto-tls --log-level error --name " +
      name + " --data-dir " + file(name) + " --listen-client-urls " + url(node) +
      " --advertise-client-urls " + url(node) + " --listen-peer-urls " + peer +
      " --initial-advertise-peer-urls " + peer + " --initial-cluster " + members.substr(1);
  nodes_[node].server.start({"/bin/sh", "-c", command}, {{"PATH", "/bin"}}, kNobody, "/dev/null");
}

std::string Cluster::address(const std::string& prefix) const {
  std::string hosts;
  for (const Node& node : nodes_) hosts += "," + local(node.port);
  return (secure_ ? "etcds://" : "etcd://") + hosts.substr(1) + prefix;
}

std::string Cluster::ctl(std::vector<std::string> arguments) const {
  arguments.insert(arguments.begin(), {"/usr/bin/etcdctl", "--insecure-transport=false",
                                       "--insecure-skip-tls-verify", "--endpoints", url(0)});
  const Outcome run = Process{std::move(arguments), {{"ETCDCTL_API", "3"}}}.run();
  EXPECT_EQ(0, run.status) << run.err;
  return run.out;
}
