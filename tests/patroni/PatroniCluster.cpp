#include "patroni/PatroniCluster.h"

#include <chrono>
#include <gtest/gtest.h>
#include <thread>
#include <unistd.h>

#include "http/HttpDouble.h"
#include "postgresql/Server.h"
#include "tuning/postgresql/KnownSettings.h"

namespace http = tn::http;

namespace {

constexpr char kPatroni[] = "/usr/bin/patroni";
constexpr char kControl[] = "/usr/bin/patronictl";

template <typename Condition>
void await(const Condition& holds, const char* what) {
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(60);
  while (!holds()) {
    ASSERT_LT(std::chrono::steady_clock::now(), deadline) << what;
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
  }
}

}  // namespace

std::string PatroniCluster::obstacle() {
  for (const char* const program : {kPatroni, kControl}) {
    if (access(program, X_OK) != 0) {
      return std::string("there is no ") + program + " (patroni, python3-etcd)";
    }
  }
  const std::string etcd = Cluster::obstacle();
  return etcd.empty() ? Server::obstacle() : etcd;
}

PatroniCluster& PatroniCluster::shared() {
  static PatroniCluster cluster;
  return cluster;
}

PatroniCluster::PatroniCluster() {
  std::filesystem::permissions(folder_.path(), std::filesystem::perms{0777});
  for (std::size_t member = 0; member < kMembers; ++member) {
    members_.push_back({freePort(), freePort()});
    configureMember(member);
  }
  start(0);
  leader();
  start(1);
  awaitMembers();
}

PatroniCluster::~PatroniCluster() {
  for (std::size_t member = 0; member < kMembers; ++member) kill(member);
}

std::string PatroniCluster::file(std::size_t member, const std::string& name) const {
  return folder_ / ("m" + std::to_string(member) + name);
}

void PatroniCluster::configureMember(std::size_t member) const {
  const Node& node = members_[member];
  const auto addresses = [](int port) {
    return "  listen: " + local(port) + "\n  connect_address: " + local(port) + "\n";
  };
  writeFile(file(member, ".yml"),
            "scope: knob\nname: m" + std::to_string(member) + "\netcd3:\n  host: " +
                local(etcd_.port(0)) + "\nrestapi:\n" + addresses(node.apiPort) +
                "  authentication: {username: admin, password: right}\n"
                "bootstrap:\n"
                "  dcs: {ttl: 20, loop_wait: 1, retry_timeout: 3, postgresql: {use_pg_rewind: "
                "true}}\n"
                "  initdb: [{encoding: UTF8}, {locale: C.UTF-8}, data-checksums]\n"
                "  pg_hba: [host all all 127.0.0.1/32 trust, "
                "host replication all 127.0.0.1/32 trust]\n"
                "postgresql:\n" +
                addresses(node.serverPort) + "  data_dir: " + file(member, "") +
                "\n  pgpass: " + file(member, ".pass") + "\n  bin_dir: " +
                std::filesystem::path(serverProgram("postgres")).parent_path().string() +
                "\n  authentication:\n    superuser: {username: postgres, password: x}\n"
                "    replication: {username: replicator, password: x}\n"
                "    rewind: {username: rewinder, password: x}\n"
                "  parameters: {fsync: 'off', unix_socket_directories: ''}\n");
}

void PatroniCluster::start(std::size_t member) {
  members_[member].patroni.start(
      {kPatroni, file(member, ".yml")},
      {{"PATH", "/usr/bin:/bin"}, {"HOME", folder_.path()}, {"LC_ALL", "C.UTF-8"}}, serverUser(),
      file(member, ".log"));
}

// The first line of the file of a running server is its process.
pid_t PatroniCluster::server(std::size_t member) const {
  const std::string pid = readFile(file(member, "/postmaster.pid"));
  return pid.empty() ? 0 : std::stoi(pid);
}

void PatroniCluster::kill(std::size_t member) {
  members_[member].patroni.end();
  const pid_t process = server(member);
  if (process <= 0) return;
  ::kill(process, SIGKILL);
  await([&] { return ::kill(process, 0) != 0; }, "a server does not end");
}

http::Answer PatroniCluster::ask(std::size_t member, const http::Request& request) const {
  http::Client client({endpoint(member)}, {{}, "admin", "right"});
  return client.send(request, http::Clock::now() + std::chrono::seconds(5));
}

std::size_t PatroniCluster::leader() const {
  std::size_t found = kMembers;
  await(
      [&] {
        for (std::size_t member = 0; member < kMembers; ++member) {
          if (ask(member, {http::Method::get, "/leader"}).status == 200) found = member;
        }
        return found != kMembers;
      },
      "no leader");
  return found;
}

void PatroniCluster::awaitMembers() const {
  const std::string running = "\"running\"";
  for (std::size_t member = 0; member < kMembers; ++member) {
    await(
        [&] {
          const std::string told = ask(member, {http::Method::get, "/cluster"}).body;
          return told.find(running) != told.rfind(running);
        },
        "a member does not run");
  }
}

void PatroniCluster::restart() const {
  const Outcome restarted = run({kControl, "-c", file(0, ".yml"), "restart", "knob", "--force"});
  EXPECT_EQ(0, restarted.status) << restarted.out << restarted.err;
  awaitMembers();
}

std::string PatroniCluster::address(std::size_t member) const {
  return "patroni://postgres@" + local(members_[member].apiPort) + "/postgres";
}

std::string PatroniCluster::endpoint(std::size_t member) const {
  return "http://" + local(members_[member].apiPort);
}

Outcome PatroniCluster::run(std::vector<std::string> arguments) const {
  return Process{std::move(arguments), {{"HOME", folder_.path()}, {"LC_ALL", "C.UTF-8"}}}.run();
}

std::string PatroniCluster::sql(std::size_t member, const std::string& statement) const {
  const Outcome asked =
      run({serverProgram("psql"), "-XAtq", "-c", statement,
           "postgresql://postgres@" + local(members_[member].serverPort) + "/postgres"});
  EXPECT_EQ(0, asked.status) << statement << asked.err;
  return asked.out.substr(0, asked.out.find_last_not_of('\n') + 1);
}

std::string PatroniCluster::value(std::size_t member, const std::string& setting) const {
  return sql(member, "SELECT setting FROM pg_settings WHERE name = '" + setting + "'");
}

nlohmann::json PatroniCluster::configuration() const {
  return nlohmann::json::parse(etcd_.ctl({"get", "--print-value-only", "/service/knob/config"}));
}

void PatroniCluster::configure(const std::string& patch) const {
  EXPECT_EQ(200, ask(0, {http::Method::patch, "/config", patch}).status) << patch;
}

Process PatroniCluster::knob(std::size_t member, std::vector<std::string> arguments) const {
  arguments.insert(arguments.end(), {"-S", address(member)});
  Process process = ::knob(folder_.path(), std::move(arguments));
  process.environment["PATRONI_RESTAPI_USERNAME"] = "admin";
  process.environment["PATRONI_RESTAPI_PASSWORD"] = "right";
  return process;
}

std::string PatroniCluster::id(const std::string& setting) {
  return std::to_string(tn::postgresql::KnownSettings::find(setting)->id);
}

Outcome PatroniCluster::set(std::size_t member, const std::string& setting,
                            const std::vector<std::string>& words) const {
  std::vector<std::string> arguments{id(setting)};
  arguments.insert(arguments.end(), words.begin(), words.end());
  return knob(member, arguments).run();
}
