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

void HandleTable::close(TnHandle handle) noexcept { engines_.erase(handle); }

void HandleTable::closeAll() noexcept { engines_.clear(); }

}  // namespace tn
