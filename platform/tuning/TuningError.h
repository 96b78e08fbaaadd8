// The one exception of the tuning library: an operation that failed, with the status that the
// caller of the C interface gets. Thrown by engines, turned back into the bare status at the
// edge of the library.
#ifndef KNOB_TUNING_TUNING_ERROR_H
#define KNOB_TUNING_TUNING_ERROR_H

#include <exception>

#include "service/TuningInterface.h"

namespace tn {

// Visible outside its library: it is thrown in an engine module and caught in the tuning library.
class __attribute__((visibility("default"))) TuningError : public std::exception {
 public:
  explicit TuningError(TnStatus status) noexcept : status_(status) {}

  TnStatus status() const noexcept { return status_; }
  const char* what() const noexcept override { return "tuning interface failure"; }

 private:
  TnStatus status_;
};

}  // namespace tn

#endif
