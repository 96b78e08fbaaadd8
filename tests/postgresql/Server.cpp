#include "postgresql/Server.h"

#include <algorithm>
#include <cstdlib>
#include <gtest/gtest.h>
#include <pwd.h>
#include <sstream>
#include <unistd.h>

#include "http/HttpDouble.h"

namespace {

bool canRun(const std::string& path) { return access(path.c_str(), X_OK) == 0; }

}  // namespace

// A server may come without the programs of its clients: any other version's will do.
std::string serverProgram(const std::string& name) {
  const char* const named = std::getenv("KNOB_POSTGRESQL_BIN");
  std::string path = (named ? named : "") + ("/" + name);
  std::error_code none;
  for (const auto& version : std::filesystem::directory_iterator("/usr/lib/postgresql", none)) {
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
  return server;
}

Server::Server() : port_(std::to_string(freePort())) {
  if (serverUser() != 0) {
    EXPECT_EQ(0, chown(folder().c_str(), serverUser(), static_cast<gid_t>(-1)));
  }
  run({"initdb", "-D", data(""), "-U", "postgres", "-A", "trust", "--no-sync", "-E", "UTF8",
       "--locale=C"});
  std::ofstream(data("postgresql.conf"), std::ios::app) << "include 'test.conf'\n";
  const std::string rules = data("pg_hba.conf");
  writeFile(rules, "host all secret all scram-sha-256\n" + readFile(rules));
  restart();
  sql("CREATE ROLE plain LOGIN; CREATE ROLE full LOGIN CONNECTION LIMIT 0;"
      "SET password_encryption = 'scram-sha-256'; CREATE ROLE secret LOGIN PASSWORD 'right';"
      "CREATE DATABASE closed; REVOKE CONNECT ON DATABASE closed FROM public");
}

std::string Server::written() const {
  const std::string file = readFile(data("postgresql.auto.conf"));
  return file.substr(file.find('\n', file.find('\n') + 1) + 1);
}

void Server::restart(const std::string& lines, const std::string& options) const {
  writeFile(data("test.conf"), lines);
  const std::string own = "-c fsync=off -k " + folder() + " -h 127.0.0.1 -p " + port_ + " ";
  run({"pg_ctl", "-D", data(""), "-m", "fast", "-o", own + options, "restart"});
}

std::string Server::sql(const std::string& statements) const {
  return run({"psql", "-XAtq", "-v", "ON_ERROR_STOP=1", uri()}, statements);
}

void Server::reset() const {
  sql("ALTER SYSTEM RESET ALL; SELECT pg_reload_conf(); ALTER ROLE ALL RESET ALL;"
      "ALTER ROLE postgres RESET ALL; ALTER DATABASE postgres RESET ALL;"
      "ALTER ROLE postgres IN DATABASE postgres RESET ALL");
}

std::string Server::run(std::vector<std::string> arguments, const std::string& input) const {
  if (arguments[0].find('/') == std::string::npos) arguments[0] = serverProgram(arguments[0]);
  Process process{std::move(arguments), {{"HOME", folder()}, {"LC_ALL", "C.UTF-8"}}, input};
  process.folder = folder();
  process.user = serverUser();
  const Outcome done = process.run();
  EXPECT_EQ(0, done.status) << process.arguments[0] << input << done.out << done.err;
  return done.out.substr(0, done.out.find_last_not_of('\n') + 1);
}

Process Server::knob(std::vector<std::string> arguments, const std::string& database) const {
  arguments.insert(arguments.end(), {"-S", uri(database)});
  return ::knob(folder(), std::move(arguments));
}

Server::Settings Server::settings(std::map<std::string, std::string> environment,
                                  const std::string& user) const {
  Process process = knob({"-O", exported(), "-F", "-U", user});
  process.environment.merge(environment);
  const Outcome run = process.run();
  EXPECT_EQ("", run.err);
  Settings all;
  std::string name;
  std::istringstream lines(readFile(exported()));
  for (std::string line; std::getline(lines, line);) {
    const std::size_t colon = line.find(": ");
    if (line[0] != '\t' && line[0] != '=') {
      name = line;
      std::ranges::transform(line, name.begin(), tolower);
    } else if (colon != std::string::npos) {
      all[name][line.substr(1, colon - 1)] = line.substr(colon + 2);
    }
  }
  return all;
}
