// What was changed: a durable map from setting id to value. It knows nothing of the settings that
// exist; values are bytes to it. The local engine lays it over the catalogue, so another kind of
// store can serve the same catalogue.
//
// Every operation throws TuningError with a TN_STORE_... status when the store cannot be used, and
// leaves it as it was.
#ifndef KNOB_TUNING_REGISTRY_STORE_H
#define KNOB_TUNING_REGISTRY_STORE_H

#include <cstdint>
#include <map>
#include <string>

namespace tn::registry {

class Store {
 public:
  Store() = default;
  Store(const Store&) = delete;
  Store& operator=(const Store&) = delete;
  virtual ~Store() = default;

  // Every value kept, as it stands now. A store that does not exist yet is empty and stays absent.
  virtual std::map<int32_t, std::string> readAll() = 0;
  // Keeps the value; returns when it is durable. Creates the store when there is none. Changes that
  // other processes make to other settings at the same time are not lost.
  virtual void write(int32_t settingId, const std::string& value) = 0;
};

}  // namespace tn::registry

#endif
