// A PostgreSQL server that lives as long as the object: its data and its socket in a temporary
// folder, on a free port, as a user that is not root (a server refuses to run as root). The
// server's programs are those of the folder that KNOB_POSTGRESQL_BIN names, or an installed
// version's.
#ifndef KNOB_TESTS_POSTGRESQL_SERVER_H
#define KNOB_TESTS_POSTGRESQL_SERVER_H

#include <map>
#include <string>
#include <sys/types.h>
#include <vector>

#include "support/Process.h"
#include "support/TempFolder.h"

// The path of one of the programs that come with a server.
std::string serverProgram(const std::string& name);
// Whom a server runs as when the test runs as root; 0 when it does not.
uid_t serverUser();

class Server {
 public:
  // Why there can be no server here; empty when there can.
  static std::string obstacle();
  // The server that most tests share, started when it is first asked for. It has the roles plain,
  // secret (password "right") and full (no connection left) and a database that is closed to them.
  static Server& shared();

  // `copyOf`: the new server is a standby with the data of that one, which is restarted for it.
  explicit Server(Server* copyOf = nullptr);
  ~Server();

  std::string uri(const std::string& database = "postgres") const;
  const std::string& folder() const { return folder_.path(); }
  const std::string& port() const { return port_; }
  int version() const;  // the major one
  std::string data(const std::string& file) const { return folder_ / ("data/" + file); }
  // What ALTER SYSTEM has written, without its comment.
  std::string written() const;

  void start(const std::string& options = "");
  void stop(const std::string& mode = "fast");
  void restart() { stop(), start(); }
  // The output of the statements, without the line end. Fails the test when one fails.
  std::string sql(const std::string& statements, const std::string& database = "postgres") const;
  // Takes every change back that a test has made to the configuration.
  void reset() const;

  // Runs a program as the user that the server runs as.
  Outcome run(std::vector<std::string> arguments) const;
  // knob on this server.
  Process knob(std::vector<std::string> arguments, const std::string& database = "postgres") const;
  // Settings are named here, not numbered.
  Outcome set(const std::string& name, const std::string& value) const;
  std::string value(const std::string& name, std::map<std::string, std::string> environment = {},
                    const std::string& user = "postgres") const;
  std::string id(const std::string& name) const;

 private:
  void becomeStandbyOf(Server& other);
  Outcome command(const std::string& program, std::vector<std::string> arguments) const;

  TempFolder folder_;
  std::string port_;
};

#endif
