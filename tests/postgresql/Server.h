// A PostgreSQL server that lives as long as the object: its data and its socket in a temporary
// folder, on a free port, as a user that is not root (a server refuses to run as root). The
// server's programs are those of the folder that KNOB_POSTGRESQL_BIN names, or an installed
// version's. It has the roles plain, secret (password "right") and full (no connection left) and a
// database that is closed to them.
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
  // The server that most tests share, started when it is first asked for.
  static Server& shared();

  Server();
  ~Server() { run({"pg_ctl", "-D", data(""), "-m", "immediate", "stop"}); }

  std::string uri(const std::string& database = "postgres") const {
    return "postgresql://postgres@/" + database + "?host=" + folder() + "&port=" + port_;
  }
  const std::string& folder() const { return folder_.path(); }
  const std::string& port() const { return port_; }
  int version() const { return std::stoi(readFile(data("PG_VERSION"))); }  // the major one
  std::string data(const std::string& file) const { return folder_ / ("data/" + file); }
  // What ALTER SYSTEM has written, without its comment.
  std::string written() const;

  // With these lines in its configuration and these options on its command line.
  void restart(const std::string& lines = "", const std::string& options = "") const;
  std::string sql(const std::string& statements) const;
  // Takes every change back that a test has made with statements.
  void reset() const;
  // The output of a program without the line end. It is run as the user that the server runs as,
  // and fails the test when it fails; one of the server's is given by its mere name.
  std::string run(std::vector<std::string> arguments, const std::string& input = "") const;

  // knob on this server. Settings are named in lower case, and told by the lines of an export.
  Process knob(std::vector<std::string> arguments, const std::string& database = "postgres") const;
  using Settings = std::map<std::string, std::map<std::string, std::string>>;
  Settings settings(std::map<std::string, std::string> environment = {},
                    const std::string& user = "postgres") const;
  std::string exported() const { return folder() + "/settings"; }  // the file of the last time
  std::string value(const std::string& name) const { return settings().at(name)["Current Value"]; }
  std::string id(const std::string& name) const { return settings().at(name)["Setting ID"]; }
  Outcome set(const std::string& name, const std::string& value) const {
    return knob({id(name), value}).run();
  }

 private:
  TempFolder folder_;
  std::string port_;
};

#endif
