// A pgbouncer in front of a server, in transaction mode, which gives every statement to the next of
// its server processes. It lives as long as the object.
#ifndef KNOB_TESTS_POSTGRESQL_POOLER_H
#define KNOB_TESTS_POSTGRESQL_POOLER_H

#include <string>

#include "postgresql/Server.h"

class Pooler {
 public:
  // Why there can be no pooler here; empty when there can.
  static std::string obstacle();

  explicit Pooler(Server const& server);
  ~Pooler();

  std::string uri() const;

 private:
  std::string file(std::string const& name) const { return server_.folder() + "/" + name; }
  void openServerProcesses() const;

  Server const& server_;
};

#endif
