#include "etcd/Cluster.h"

#include <gtest/gtest.h>
#include <unistd.h>

namespace {

// The folder, the name of the certificate and its subject follow.
constexpr char kCertify[] = R"(exec 2>&1; cd $0; key='-newkey ec -pkeyopt ec_paramgen_curve:P-256'
[ -e ca.pem ] || openssl req -x509 $key -nodes -subj /CN=ca -keyout ca.key -out ca.pem || exit 1
openssl req $key -nodes -subj $2 -keyout $1.key -out request || exit 1
echo subjectAltName=IP:127.0.0.1 >extensions; chmod +r *.key
openssl x509 -req -in request -CA ca.pem -CAkey ca.key -extfile extensions -out $1.pem)";

}  // namespace

std::string Cluster::obstacle() {
  for (std::string const program : {"/usr/bin/etcd", "/usr/bin/etcdctl", "/usr/bin/openssl"}) {
    if (access(program.c_str(), X_OK) != 0) {
      return "there is no " + program + " (etcd-server, etcd-client, openssl)";
    }
  }
  return "";
}

Cluster::Cluster(std::size_t nodes, bool secure) {
  if (secure) ownFiles_ = certificate("server", "/CN=localhost");
  std::filesystem::permissions(folder_.path(), std::filesystem::perms{0777});
  for (std::size_t node = 0; node < nodes; ++node) nodes_.push_back({freePort(), freePort()});
  for (std::size_t node = 0; node < nodes; ++node) start(node);
  await();
}

void Cluster::start(std::size_t node) {
  const std::string name = "n" + std::to_string(node);
  const std::string peer = "http://" + local(nodes_[node].peerPort);
  std::string members;
  for (std::size_t i = 0; i < nodes_.size(); ++i) {
    members += ",n" + std::to_string(i) + "=http://" + local(nodes_[i].peerPort);
  }
  std::string command =
      "exec etcd --unsafe-no-fsync --heartbeat-interval 50 --election-timeout 500 --bcrypt-cost 4 "
      "--log-level error --name " +
      name + " --data-dir " + file(name) + " --listen-client-urls " + url(port(node)) +
      " --advertise-client-urls " + url(port(node)) + " --listen-peer-urls " + peer +
      " --initial-advertise-peer-urls " + peer + " --initial-cluster " + members.substr(1);
  if (!ownFiles_.empty()) {
    command += " --client-cert-auth --trusted-ca-file " + file("ca.pem") + " --cert-file " +
               file("server.pem") + " --key-file " + file("server.key");
  }
  nodes_[node].server.start({"/bin/sh", "-c", command}, {{"PATH", "/bin"}}, kNobody, "/dev/null");
}

std::string Cluster::address(const std::string& prefix) const {
  std::string hosts;
  for (const Node& node : nodes_) hosts += "," + local(node.port);
  return (ownFiles_.empty() ? "etcd://" : "etcds://") + hosts.substr(1) + prefix;
}

Cluster::Variables Cluster::certificate(const std::string& name, const std::string& subject) const {
  const Process openssl{{"/bin/sh", "-c", kCertify, folder_.path(), name, subject},
                        {{"PATH", "/bin"}}};
  const Outcome made = openssl.run();
  EXPECT_EQ(0, made.status) << made.out;
  return {{"ETCDCTL_CACERT", file("ca.pem")},
          {"ETCDCTL_CERT", file(name + ".pem")},
          {"ETCDCTL_KEY", file(name + ".key")}};
}

std::string Cluster::ctl(std::vector<std::string> arguments) const {
  arguments.insert(arguments.begin(), {"/usr/bin/etcdctl", "--endpoints", url(port(0))});
  Process control{std::move(arguments), ownFiles_};
  control.environment["ETCDCTL_API"] = "3";
  const Outcome run = control.run();
  EXPECT_EQ(0, run.status) << run.err;
  return run.out;
}

Process Cluster::knob(const std::string& prefix, std::vector<std::string> arguments) const {
  arguments.insert(arguments.end(), {"-S", address(prefix)});
  return ::knob(folder_.path(), std::move(arguments));
}
