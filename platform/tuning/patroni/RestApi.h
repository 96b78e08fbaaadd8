// The REST API that every member's Patroni offers: asks one member after the other, and says what
// went wrong in the statuses of the tuning interface.
//
// A member whose Patroni cannot reach its distributed store answers some requests with a failure of
// its own after a while, or not at all, and others as ever: that is how a store that is down is
// told from members that are.
//
// For a while after the configuration could not be had or changed for such a reason, further
// attempts fail at once with the same status: whoever makes many of them is told for each without
// waiting for each.
#ifndef KNOB_PATRONI_REST_API_H
#define KNOB_PATRONI_REST_API_H

#include "service/TuningInterface.h"
#include "tuning/http/Client.h"
#include "tuning/http/Json.h"
#include "tuning/patroni/Address.h"
#include "tuning/patroni/Configuration.h"
#include "tuning/patroni/Member.h"

namespace tn::patroni {

class RestApi {
 public:
  // Connects to nothing yet.
  explicit RestApi(const Address& address);

  // From now on the members are asked as well, those that are reached as securely as the ones that
  // the address names.
  void alsoAsk(const Members& members);

  // Each throws TuningError.
  Members members();
  // TN_PATRONI_CONFIG_NOT_READABLE when the members tell everything but this.
  Configuration configuration();
  // Makes a change to the configuration; the answer is the new one. One that failed was not made,
  // but for TN_PATRONI_OUTCOME_UNKNOWN and TN_PATRONI_STORE_DOWN. Where somebody else changes the
  // configuration at the same time it tries again, 10 s at most.
  Configuration change(const http::Json& change);

 private:
  struct Reply;

  Reply ask(const http::Request& request, http::Deadline deadline);
  http::Json read(const char* path);
  TnStatus statusOf(const Reply& reply);
  TnStatus whyNoAnswer(bool changing);
  Configuration configurationWith(const http::Json& change);
  void failAtOnceDuringOutage() const;
  [[noreturn]] void giveUp(TnStatus status);

  Address address_;
  http::Client client_;
  TnStatus outage_ = TN_SUCCESS;
  http::Clock::time_point outageEnd_{};
};

}  // namespace tn::patroni

#endif
