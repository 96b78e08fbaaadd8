// The open connections of this process, by the handles that its callers hold.
//
// TN_LOCAL_HANDLE is always there: the local engine behind it is opened when it is first used. All
// other handles are positive, in the order of opening, and no handle is given out twice.
#ifndef KNOB_TUNING_HANDLE_TABLE_H
#define KNOB_TUNING_HANDLE_TABLE_H

#include <map>
#include <memory>

#include "tuning/Engine.h"

namespace tn {

class HandleTable {
 public:
  // Takes the engine over. Throws TuningError with TN_INTERNAL_ERROR when all handles are used up.
  TnHandle add(std::unique_ptr<Engine> engine);

  // Throws TuningError with TN_INVALID_HANDLE for one that is not open.
  Engine& engine(TnHandle handle);

  // The engine that was added last and is still open, the local engine when there is none.
  Engine& latest();

  // Leaves the engine and closes it; the status is what leaving gave. TN_INVALID_HANDLE for one
  // that is not open, but success for a local engine that was never used.
  TnStatus close(TnHandle handle) noexcept;
  // The first status that is not success.
  TnStatus closeAll() noexcept;

 private:
  std::map<TnHandle, std::unique_ptr<Engine>> engines_;
  TnHandle lastHandle_ = 0;
};

}  // namespace tn

#endif
