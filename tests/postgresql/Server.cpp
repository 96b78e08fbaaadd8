#include "postgresql/Server.h"

#include <arpa/inet.h>
#include <cstdlib>
#include <filesystem>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <nlohmann/json.hpp>
#include <pwd.h>
#include <sstream>
#include <sys/socket.h>
#include <unistd.h>

namespace {

constexpr char kInstalled[] = "/usr/lib/postgresql";
// A folder with locales that the tests have made for the server, next to the system's own.
constexpr char kLocaleFolder[] = "/locales";

// The folder of the server's programs: the one that the environment names, or an installed one.
std::string programs() {
  if (const char* const named = std::getenv("KNOB_POSTGRESQL_BIN")) return named;
  std::error_code none;
  for (const auto& version : std::filesystem::directory_iterator(kInstalled, none)) {
    return version.path() / "bin";
  }
  return {};
}

bool canRun(const std::string& path) { return access(path.c_str(), X_OK) == 0; }

std::string freePort() {
  const int probe = socket(AF_INET, SOCK_STREAM, 0);
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  socklen_t size = sizeof address;
  EXPECT_EQ(0, bind(probe, reinterpret_cast<sockaddr*>(&address), size));
  EXPECT_EQ(0, getsockname(probe, reinterpret_cast<sockaddr*>(&address), &size));
  close(probe);
  return std::to_string(ntohs(address.sin_port));
}

}  // namespace

// A server may come without the programs of its clients: any other version's will do.
std::string serverProgram(const std::string& name) {
  std::string path = programs() + "/" + name;
  std::error_code none;
  for (const auto& version : std::filesystem::directory_iterator(kInstalled, none)) {
    if (!canRun(path)) path = version.path() / "bin" / name;
  }
  return path;
}

uid_t serverUser() {
  if (geteuid() != 0) return 0;
  const passwd* const entry = getpwnam("postgres");
  return entry ? entry->pw_uid : kNobody;
}

std::string Server::obstacle() {
  for (std::string const program : {"postgres", "psql"}) {
    if (!canRun(serverProgram(program))) return "there is no " + serverProgram(program);
  }
  return "";
}

Server& Server::shared() {
  static Server server;
  static const bool ready = [] {
    server.sql(
        "CREATE ROLE plain LOGIN\nCREATE ROLE full LOGIN CONNECTION LIMIT 0\n"
        "SET password_encryption = 'scram-sha-256'\nCREATE ROLE secret LOGIN PASSWORD 'right'\n"
        "CREATE DATABASE closed\nREVOKE CONNECT ON DATABASE closed FROM public");
    const std::string rules = server.data("pg_hba.conf");
    writeFile(rules, "host all secret all scram-sha-256\n" + readFile(rules));
    return true;
  }();
  EXPECT_TRUE(ready);
  return server;
}

Server::Server(Server* copyOf) : port_(freePort()) {
  if (serverUser() != 0) {
    EXPECT_EQ(0, chown(folder().c_str(), serverUser(), static_cast<gid_t>(-1)));
  }
  if (copyOf) {
    becomeStandbyOf(*copyOf);
  } else {
    const Outcome made = command("initdb", {"-D", data(""), "-U", "postgres", "-A", "trust",
                                            "--no-sync", "-E", "UTF8", "--locale=C"});
    EXPECT_EQ(0, made.status) << made.err;
  }
  start();
}

// A copy of data at rest is all that a standby needs which follows nobody.
void Server::becomeStandbyOf(Server& other) {
  other.stop();
  const Outcome copied = run({"/bin/cp", "-a", other.data(""), data("")});
  EXPECT_EQ(0, copied.status) << copied.err;
  other.start();
  if (version() < 12) {
    writeFile(data("recovery.conf"), "standby_mode = on\n");
  } else {
    writeFile(data("standby.signal"), "");
  }
}

Server::~Server() { stop("immediate"); }

std::string Server::uri(const std::string& database) const {
  return "postgresql://postgres@/" + database + "?host=" + folder() + "&port=" + port_;
}

int Server::version() const { return std::stoi(readFile(data("PG_VERSION"))); }

std::string Server::written() const {
  std::istringstream file(readFile(data("postgresql.auto.conf")));
  std::string settings;
  for (std::string line; std::getline(file, line);) {
    if (!line.starts_with("#")) settings += line + "\n";
  }
  return settings;
}

void Server::start(const std::string& options) {
  const Outcome run = command(
      "pg_ctl",
      {"-D", data(""), "-l", folder() + "/log", "-w", "-o",
       "-c fsync=off -k " + folder() + " -h 127.0.0.1 -p " + port_ + " " + options, "start"});
  EXPECT_EQ(0, run.status) << run.out << readFile(folder() + "/log");
}

void Server::stop(const std::string& mode) {
  command("pg_ctl", {"-D", data(""), "-m", mode, "-w", "stop"});
}

std::string Server::sql(const std::string& statements, const std::string& database) const {
  std::istringstream lines(statements);
  std::vector<std::string> arguments{"-XAtq", "-v", "ON_ERROR_STOP=1", uri(database)};
  for (std::string line; std::getline(lines, line);) {
    arguments.insert(arguments.end(), {"-c", line});
  }
  const Outcome run = command("psql", arguments);
  EXPECT_EQ(0, run.status) << statements << run.err;
  return run.out.substr(0, run.out.find_last_not_of('\n') + 1);
}

void Server::reset() const { sql("ALTER SYSTEM RESET ALL\nSELECT pg_reload_conf()"); }

Process Server::knob(std::vector<std::string> arguments, const std::string& database) const {
  arguments.insert(arguments.end(), {"-S", uri(database)});
  return ::knob(folder(), std::move(arguments));
}

Outcome Server::set(const std::string& name, const std::string& value) const {
  return knob({id(name), value}).run();
}

std::string Server::value(const std::string& name, std::map<std::string, std::string> environment,
                          const std::string& user) const {
  Process process = knob({id(name), "-JSON", "-U", user});
  process.environment.merge(environment);
  const Outcome run = process.run();
  EXPECT_EQ(0, run.status) << run.out;
  return nlohmann::json::parse(run.out)["value"];
}

std::string Server::id(const std::string& name) const {
  const Outcome run = knob({"-H", name, "-JSON"}).run();
  const auto found = nlohmann::json::parse(run.out)["search_output"];
  for (const auto& entry : found) {
    if (entry.is_object() && entry["Setting"] == name)
      return std::to_string(entry["ID"].get<int>());
  }
  ADD_FAILURE() << "no setting " << name << run.out;
  return "0";
}

Outcome Server::command(const std::string& program, std::vector<std::string> arguments) const {
  arguments.insert(arguments.begin(), serverProgram(program));
  return run(std::move(arguments));
}

Outcome Server::run(std::vector<std::string> arguments) const {
  Process process{std::move(arguments), {{"HOME", folder()}, {"LC_ALL", "C.UTF-8"}}};
  process.environment["LOCPATH"] = folder() + kLocaleFolder;
  process.folder = folder();
  process.user = serverUser();
  return process.run();
}
