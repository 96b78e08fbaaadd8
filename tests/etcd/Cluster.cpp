#include "etcd/Cluster.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include "http/HttpDouble.h"

namespace {

constexpr char kServer[] = "/usr/bin/etcd";
constexpr char kControl[] = "/usr/bin/etcdctl";
constexpr char kOpenssl[] = "/usr/bin/openssl";

std::string url(const std::string& scheme, int port) {
  return scheme + "://127.0.0.1:" + std::to_string(port);
}

}  // namespace

std::string Cluster::obstacle() {
  for (std::string const program : {kServer, kControl, kOpenssl}) {
    if (access(program.c_str(), X_OK) != 0) {
      return "there is no " + program + " (etcd-server, etcd-client, openssl)";
    }
  }
  return "";
}

Cluster& Cluster::shared() {
  static Cluster cluster(3);
  return cluster;
}

Cluster::Cluster(std::size_t nodes, bool secure) : secure_(secure) {
  if (secure) certificate("server", "/CN=localhost");
  std::filesystem::permissions(folder_.path(), std::filesystem::perms{0777});
  for (std::size_t node = 0; node < nodes; ++node) nodes_.push_back({freePort(), freePort()});
  for (std::size_t node = 0; node < nodes; ++node) start(node);
  await();
}

void Cluster::start(std::size_t node) {
  const std::string client = url(secure_ ? "https" : "http", port(node));
  std::string members;
  for (std::size_t i = 0; i < nodes_.size(); ++i) {
    members += ",n" + std::to_string(i) + "=" + url("http", nodes_[i].peerPort);
  }
  const std::string peer = url("http", nodes_[node].peerPort);
  std::vector<std::string> words{kServer,
                                 "--name",
                                 "n" + std::to_string(node),
                                 "--data-dir",
                                 file("n" + std::to_string(node)),
                                 "--listen-client-urls",
                                 client,
                                 "--advertise-client-urls",
                                 client,
                                 "--listen-peer-urls",
                                 peer,
                                 "--initial-advertise-peer-urls",
                                 peer,
                                 "--initial-cluster",
                                 members.substr(1),
                                 "--unsafe-no-fsync",
                                 "--heartbeat-interval",
                                 "50",
                                 "--election-timeout",
                                 "500",
                                 "--bcrypt-cost",
                                 "4",
                                 "--log-level",
                                 "error"};
  if (secure_) {
    words.insert(words.end(), {"--cert-file", file("server.pem"), "--key-file", file("server.key"),
                               "--client-cert-auth", "--trusted-ca-file", file("ca.pem")});
  }
  nodes_[node].server.start(std::move(words), {}, kNobody, "/dev/null");
}

std::string Cluster::address(const std::string& prefix) const {
  std::string hosts;
  for (const Node& node : nodes_) hosts += ",127.0.0.1:" + std::to_string(node.port);
  return (secure_ ? "etcds://" : "etcd://") + hosts.substr(1) + prefix;
}

void Cluster::certificate(const std::string& name, const std::string& subject) const {
  const std::string script =
      "exec 2>&1; cd " + folder_.path() +
      "; key='-newkey ec -pkeyopt ec_paramgen_curve:P-256 -nodes'\n"
      "[ -e ca.pem ] || openssl req -x509 $key -subj /CN=ca -keyout ca.key -out ca.pem || exit 1\n"
      "openssl req $key -subj '" +
      subject + "' -keyout " + name +
      ".key -out request &&\n"
      "echo subjectAltName=IP:127.0.0.1 >extensions && openssl x509 -req -in request -CA ca.pem "
      "-CAkey ca.key -CAcreateserial -extfile extensions -out " +
      name + ".pem && chmod +r *.key";
  const Outcome made = Process{{"/bin/sh", "-c", script}, {{"PATH", "/usr/bin:/bin"}}}.run();
  EXPECT_EQ(0, made.status) << made.out;
}

std::string Cluster::ctl(std::vector<std::string> arguments) const {
  arguments.insert(arguments.begin(), {kControl, "--endpoints", url("http", port(0))});
  Process control{arguments, {{"ETCDCTL_API", "3"}}};
  if (secure_) {
    control.arguments[2] = url("https", port(0));
    control.environment.merge(clientFiles("server"));
  }
  const Outcome run = control.run();
  EXPECT_EQ(0, run.status) << run.err;
  return run.out;
}

std::map<std::string, std::string> Cluster::clientFiles(const std::string& name) const {
  return {{"ETCDCTL_CACERT", file("ca.pem")},
          {"ETCDCTL_CERT", file(name + ".pem")},
          {"ETCDCTL_KEY", file(name + ".key")}};
}

void Cluster::await() const { ctl({"--dial-timeout=20s", "--command-timeout=20s", "get", "/"}); }

Process Cluster::knob(const std::string& prefix, std::vector<std::string> arguments) const {
  arguments.insert(arguments.end(), {"-S", address(prefix)});
  return ::knob(folder_.path(), std::move(arguments));
}
