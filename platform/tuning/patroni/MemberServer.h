// The PostgreSQL server of one member, asked over a connection of its own: whether it can follow a
// change of the cluster's configuration, and whether it has.
#ifndef KNOB_PATRONI_MEMBER_SERVER_H
#define KNOB_PATRONI_MEMBER_SERVER_H

#include <chrono>
#include <optional>
#include <string>
#include <vector>

#include "service/TuningInterface.h"
#include "tuning/patroni/Configuration.h"
#include "tuning/patroni/MemberFiles.h"
#include "tuning/postgresql/Connection.h"
#include "tuning/postgresql/NewValue.h"
#include "tuning/postgresql/Result.h"
#include "tuning/postgresql/Setting.h"

namespace tn::patroni {

// A value that was put into the cluster's configuration.
struct Change {
  const postgresql::Setting* setting;
  postgresql::NewValue value;
  std::string asTold;     // as a server tells it, where one was asked
  http::Json json{};      // what the configuration was given
  http::Json previous{};  // what it had; null for nothing
};

class MemberServer {
 public:
  using Deadline = std::chrono::steady_clock::time_point;

  // What became of a change here.
  enum class Standing {
    notYet,
    unwritten,  // nor does Patroni's file name the setting
    followed,   // in force, or waiting for a restart
    refused     // the server cannot use the value
  };

  // Connects to nothing yet.
  MemberServer(std::string uri, std::string user, std::string password);

  // True: the last time it let nobody in, or gave no answer in time. Asking it again may take as
  // long once more.
  bool isSilent() const { return silent_; }

  // Reads the server's files and values, for has() and hindrance(), as far as it can be reached.
  // Throws TN_PATRONI_SOURCES_HIDDEN.
  void look(Deadline deadline);
  // True when the value was in force or waited for a restart when look() was called, and where
  // nothing is known of the server.
  bool has(const Change& change) const;
  // Why the server would not follow a change of the setting, as the files were when look() was
  // called; TN_SUCCESS when it would, or where only the change can tell.
  TnStatus hindrance(const postgresql::Setting& setting, const Configuration& configuration) const;
  // The same for any member's files.
  static TnStatus hindrance(const MemberFiles& files, bool waitsForRestart,
                            const postgresql::Setting& setting, const Configuration& configuration);

  // In the order of the changes. Everything is notYet when the server does not tell in time, for
  // whatever reason. Throws nothing but std::bad_alloc.
  std::vector<Standing> standings(const std::vector<Change>& changes, Deadline deadline);

 private:
  bool connect();
  std::optional<std::vector<Standing>> ask(const std::vector<Change>& changes, Deadline deadline);

  std::string uri_;
  std::string user_;
  std::string password_;
  std::optional<postgresql::Connection> connection_{};
  std::optional<MemberFiles> files_{};
  std::optional<postgresql::Result> values_{};
  bool silent_ = false;
};

}  // namespace tn::patroni

#endif
