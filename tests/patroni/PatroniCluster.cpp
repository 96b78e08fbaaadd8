#include "patroni/PatroniCluster.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include "postgresql/Server.h"
#include "tuning/postgresql/KnownSettings.h"

namespace http = tn::http;

namespace {

constexpr char kPatroni[] = "/usr/bin/patroni";
constexpr std::chrono::seconds kPatience(60);

constexpr useconds_t kPause = 50'000;  // the limit to all waiting is that of the test

}  // namespace

std::string PatroniCluster::obstacle() {
  if (access(kPatroni, X_OK) != 0) return "there is no patroni (patroni, python3-etcd)";
  const std::string etcd = Cluster::obstacle();
  return etcd.empty() ? Server::obstacle() : etcd;
}

PatroniCluster::PatroniCluster() {
  std::filesystem::permissions(folder_.path(), std::filesystem::perms{0777});
  for (const std::size_t member : {0U, 1U}) start(member);
  awaitMembers();
}

PatroniCluster::~PatroniCluster() {
  // SIGKILL would leave the servers' shared memory behind.
  for (const std::size_t member : {0U, 1U}) kill(member, SIGQUIT);
}

void PatroniCluster::start(std::size_t member) {
  Member& started = members_[member];
  const std::filesystem::path server = serverProgram("postgres");
  const std::string configuration =
      "scope: knob\nname: m" + std::to_string(member) + "\netcd3: {host: '" + local(etcd_.port(0)) +
      "'}\nrestapi:\n  listen: " + local(started.apiPort) +
      "\n  authentication: {username: admin, password: right}\n"
      "bootstrap:\n"
      "  dcs: {ttl: 20, loop_wait: 1, retry_timeout: 3, postgresql: {use_pg_rewind: true}}\n"
      "  initdb: [{encoding: UTF8}, {locale: C.UTF-8}, data-checksums]\n"
      "  pg_hba: [host all all 127.0.0.1/32 trust, host replication all 127.0.0.1/32 trust]\n"
      "postgresql:\n  listen: " +
      local(started.serverPort) + "\n  data_dir: " + file(member, "") +
      "\n  pgpass: " + file(member, ".pass") + "\n  bin_dir: " + server.parent_path().string() +
      "\n  authentication:\n    superuser: &role {username: postgres, password: x}\n"
      "    replication: *role\n  parameters: {fsync: 'off', unix_socket_directories: ''}\n";
  started.patroni.start(
      {kPatroni},
      {{"PATH", "/usr/bin:/bin"}, {"LC_ALL", "C.UTF-8"}, {"PATRONI_CONFIGURATION", configuration}},
      serverUser(), file(member, ".log"));
}

// The first line of the file of a running server is its process.
void PatroniCluster::kill(std::size_t member, int number) {
  members_[member].patroni.end();
  const std::string pid = readFile(file(member, "/postmaster.pid"));
  if (pid.empty()) return;
  while (::kill(std::stoi(pid), number) == 0) usleep(kPause);
}

std::string PatroniCluster::ask(std::size_t member, const http::Request& request) const {
  http::Client client({"http://" + local(port(member))},
                      {.user = "admin", .password = "right", .requestTime = kPatience});
  const http::Answer answer = client.send(request, http::Clock::now() + kPatience);
  return answer.status == 200 ? answer.body : "";
}

std::size_t PatroniCluster::leader() const {
  std::size_t member = 0;
  for (; ask(member, {http::Method::get, "/leader"}).empty(); usleep(kPause)) member = 1 - member;
  return member;
}

void PatroniCluster::awaitMembers() const {
  const std::string running = "\"running\"";
  for (std::string told; told.find(running) == told.rfind(running); usleep(kPause)) {
    told = ask(0, {http::Method::get, "/cluster"});
  }
}

void PatroniCluster::restart() const {
  for (const std::size_t member : {0U, 1U}) {
    EXPECT_NE("", ask(member, {http::Method::post, "/restart", "{}"}));
  }
  awaitMembers();
}

std::string PatroniCluster::sql(std::size_t member, const std::string& statement) const {
  const std::string server = "postgresql://postgres@" + local(members_[member].serverPort);
  const Outcome asked =
      Process{{serverProgram("psql"), "-XAtq", "-c", statement, server}, {}}.run();
  EXPECT_EQ(0, asked.status) << statement << asked.err;
  return asked.out.substr(0, asked.out.find_last_not_of('\n') + 1);
}

void PatroniCluster::configure(const std::string& patch) const {
  EXPECT_NE("", ask(0, {http::Method::patch, "/config", patch})) << patch;
}

Outcome PatroniCluster::knob(std::size_t member, std::vector<std::string> arguments) const {
  const std::string server = "patroni://postgres@" + local(port(member)) + "/postgres";
  arguments.insert(arguments.end(), {"-S", server});
  Process process = ::knob(folder_.path(), std::move(arguments));
  process.environment["PATRONI_RESTAPI_USERNAME"] = "admin";
  process.environment["PATRONI_RESTAPI_PASSWORD"] = "right";
  return process.run();
}

std::string PatroniCluster::id(const std::string& setting) {
  return std::to_string(tn::postgresql::KnownSettings::find(setting)->id);
}
