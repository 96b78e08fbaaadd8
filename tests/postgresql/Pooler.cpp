#include "postgresql/Pooler.h"

#include <csignal>
#include <gtest/gtest.h>
#include <thread>
#include <unistd.h>

namespace {

constexpr char kProgram[] = "/usr/sbin/pgbouncer";
constexpr char kPort[] = "6432";  // names a socket in the server's folder
constexpr int kProcesses = 3;

}  // namespace

std::string Pooler::obstacle() {
  return access(kProgram, X_OK) == 0 ? "" : "there is no " + std::string(kProgram) + " (pgbouncer)";
}

Pooler::Pooler(Server const& server) : server_(server) {
  writeFile(file("users"), "\"postgres\" \"\"\n");
  writeFile(file("pooler.ini"),
            "[databases]\n* = host=" + server.folder() + " port=" + server.port() +
                "\n[pgbouncer]\nauth_type = trust\npool_mode = transaction\n"
                "server_round_robin = 1\nlisten_addr =\nlisten_port = " +
                kPort + "\nunix_socket_dir = " + server.folder() +
                "\nauth_file = " + file("users") + "\npidfile = " + file("pooler.pid") +
                "\nlogfile = " + file("pooler.log") + "\n");
  const Outcome run = server.run({kProgram, "-d", "-q", file("pooler.ini")});
  EXPECT_EQ(0, run.status) << run.err;
  openServerProcesses();
}

Pooler::~Pooler() { kill(std::stoi(readFile(file("pooler.pid"))), SIGKILL); }

std::string Pooler::uri() const {
  return "postgresql://postgres@/postgres?host=" + server_.folder() + "&port=" + kPort;
}

// As many as there are sessions at one time.
void Pooler::openServerProcesses() const {
  std::vector<std::thread> sessions;
  for (int i = 0; i < kProcesses; ++i) {
    sessions.emplace_back([this] {
      const Outcome run = server_.run({"/usr/bin/psql", "-XAtqc", "SELECT pg_sleep(0.5)", uri()});
      EXPECT_EQ(0, run.status) << run.err;
    });
  }
  for (std::thread& session : sessions) session.join();
}
