#include "tuning/HandleTable.h"

#include <limits>
#include <utility>

#include "tuning/EngineDirectory.h"
#include "tuning/TuningError.h"

namespace tn {

TnHandle HandleTable::add(std::unique_ptr<Engine> engine) {
  if (lastHandle_ == std::numeric_limits<TnHandle>::max()) throw TuningError(TN_INTERNAL_ERROR);
  engines_.emplace(lastHandle_ + 1, std::move(engine));
  return ++lastHandle_;
}

Engine& HandleTable::engine(TnHandle handle) {
  const auto found = engines_.find(handle);
  if (found != engines_.end()) return *found->second;
  if (handle != TN_LOCAL_HANDLE) throw TuningError(TN_INVALID_HANDLE);
  return *engines_.emplace(handle, EngineDirectory::openLocal()).first->second;
}

Engine& HandleTable::latest() {
  const bool onlyLocal = engines_.empty() || engines_.rbegin()->first == TN_LOCAL_HANDLE;
  return onlyLocal ? engine(TN_LOCAL_HANDLE) : *engines_.rbegin()->second;
}

TnStatus HandleTable::close(TnHandle handle) noexcept {
  const auto found = engines_.find(handle);
  if (found == engines_.end()) return handle == TN_LOCAL_HANDLE ? TN_SUCCESS : TN_INVALID_HANDLE;
  const TnStatus status = found->second->tryLeave();
  engines_.erase(found);
  return status;
}

TnStatus HandleTable::closeAll() noexcept {
  TnStatus first = TN_SUCCESS;
  while (!engines_.empty()) {
    const TnStatus status = close(engines_.begin()->first);
    if (first == TN_SUCCESS) first = status;
  }
  return first;
}

}  // namespace tn
