// Which status a failed system call on a store's file or folder comes to.
#ifndef KNOB_TUNING_REGISTRY_STORE_STATUS_H
#define KNOB_TUNING_REGISTRY_STORE_STATUS_H

#include "service/TuningInterface.h"

namespace tn::registry {

// `error` is an errno. The two differ only in which right is missing.
TnStatus readFailure(int error);
TnStatus writeFailure(int error);

}  // namespace tn::registry

#endif
