// The status that a piece of an engine ends with.
#ifndef KNOB_TESTS_SUPPORT_STATUS_OF_H
#define KNOB_TESTS_SUPPORT_STATUS_OF_H

#include "tuning/TuningError.h"

template <typename Action>
TnStatus statusOf(const Action& action) {
  try {
    action();
    return TN_SUCCESS;
  } catch (const tn::TuningError& error) {
    return error.status();
  }
}

#endif
