// The one exception of the tuning library: an operation that failed, with the status that the
// caller of the C interface gets. Thrown and caught within one library: the tuning library and each
// engine module turn it into the bare status at their edges (see Guarded.h).
#ifndef KNOB_TUNING_TUNING_ERROR_H
#define KNOB_TUNING_TUNING_ERROR_H

#include <exception>

#include "service/TuningInterface.h"

namespace tn {

class TuningError : public std::exception {
 public:
  explicit TuningError(TnStatus status) noexcept : status_(status) {}

  TnStatus status() const noexcept { return status_; }
  const char* what() const noexcept override { return "tuning interface failure"; }

 private:
  TnStatus status_;
};

}  // namespace tn

#endif
