// Where exceptions end: runs an action and tells with a status how it went. The edges of the tuning
// library and of its engines towards each other and towards callers in C are made of this.
#ifndef KNOB_TUNING_GUARDED_H
#define KNOB_TUNING_GUARDED_H

#include <new>

#include "tuning/TuningError.h"

namespace tn {

template <typename Action>
TnStatus guarded(Action&& action) noexcept {
  try {
    action();
    return TN_SUCCESS;
  } catch (const TuningError& error) {
    return error.status();
  } catch (const std::bad_alloc&) {
    return TN_OUT_OF_MEMORY;
  } catch (...) {
    return TN_INTERNAL_ERROR;
  }
}

}  // namespace tn

#endif
