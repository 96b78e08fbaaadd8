// Which engine a server name stands for. The one place that knows all kinds of engines: the table
// of server-name forms in the source file has a row for each, and a new kind is a new row.
//
//   ""  localhost  the machine's own host name   the local engine on the user's default store
//   file:PATH                                    the local engine on the store file PATH
//   registry:FILE                                the settings that the catalogue FILE describes,
//                                                with their values where it says
//   postgresql://...  postgres://...             a PostgreSQL server, through an engine module
//   patroni://...  patronis://...                a PostgreSQL cluster under Patroni, through an
//                                                engine module
//   etcd://...  etcds://...                      the local engine's settings, kept in etcd for many
//                                                machines, through an engine module
//
// Host names are compared without regard to case, prefixes exactly. Engine modules lie in the
// folder `knob` next to this library, or beside it where its own folder has that name, and stay
// loaded once they are.
#ifndef KNOB_TUNING_ENGINE_DIRECTORY_H
#define KNOB_TUNING_ENGINE_DIRECTORY_H

#include <memory>
#include <string>

#include "tuning/Engine.h"

namespace tn {

// What a caller says about the engine that it wants; each text may be empty.
struct Login {
  std::string server;
  std::string user;
  std::string password;
};

class EngineDirectory {
 public:
  // The local engine has read its store by then; one that does not exist is empty.
  // Throws TuningError: TN_UNKNOWN_SERVER_FORM for a name of no known form,
  // TN_LOCAL_ENGINE_HAS_NO_USERS for a user name or password that nobody checks: values in a file,
  // TN_MODULE_NOT_INSTALLED or TN_MODULE_UNUSABLE, or what the engine itself has to say.
  static std::unique_ptr<Engine> open(const Login& login);

  // The local engine on the default store, which it does not read before its first value is used.
  static std::unique_ptr<Engine> openLocal();
};

}  // namespace tn

#endif
