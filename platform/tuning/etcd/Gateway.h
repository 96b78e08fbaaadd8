// The calls of one etcd cluster through its JSON gateway: logs in when that is needed, tries the
// endpoints in turn, and says what went wrong in the statuses of the tuning interface.
//
// Every request asks for a server that has a leader: one without a quorum then refuses at once,
// before anything is carried out.
#ifndef KNOB_ETCD_GATEWAY_H
#define KNOB_ETCD_GATEWAY_H

#include <optional>
#include <string>

#include "service/TuningInterface.h"
#include "tuning/etcd/Address.h"
#include "tuning/http/Client.h"
#include "tuning/http/Json.h"

namespace tn::etcd {

class Gateway {
 public:
  // Connects to nothing yet. The endpoint to begin with is a random one.
  explicit Gateway(const Address& address);

  // The answer to a call that changes nothing; repeated until there is one or the deadline has
  // passed. Throws TuningError.
  //
  // For a while after no endpoint of the cluster could serve a call, further ones fail at once with
  // the same status: whoever makes many of them is told for each without waiting for each.
  http::Json read(const char* path, const http::Json& request, http::Deadline deadline);
  // The answer to a call that changes something. Nothing when the answer was lost: it may have been
  // carried out, now or even later. Throws TuningError when it was not and will not be.
  std::optional<http::Json> change(const char* path, const http::Json& request,
                                   http::Deadline deadline);

 private:
  struct Reading;

  Reading settle(const char* path, const http::Json& request, bool repeatable,
                 http::Deadline deadline);
  Reading ask(const char* path, const http::Json& request, bool repeatable,
              http::Deadline deadline);
  std::optional<http::Json> call(const char* path, const http::Json& request, bool repeatable,
                                 http::Deadline deadline);
  void logIn(http::Deadline deadline);
  void failAtOnceAfterOutage() const;
  [[noreturn]] void giveUp(TnStatus status);

  std::string user_;
  std::string password_;
  http::Client client_;
  bool loginWanted_;  // by the user, and not known to be useless
  std::string token_{};
  TnStatus outage_ = TN_SUCCESS;
  http::Clock::time_point outageEnd_{};
};

}  // namespace tn::etcd

#endif
