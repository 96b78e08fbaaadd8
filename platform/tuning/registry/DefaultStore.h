// The store of a user who names none: an SQLite file in the user's state folder,
//
//   $XDG_STATE_HOME/knob/settings.db   with that variable, if it holds an absolute path
//   ~/.local/state/knob/settings.db    otherwise; ~ is $HOME, or the home folder of the password
//                                      database when that is not an absolute path
//
// The place is looked for when the store is first used, so a run that needs no value needs no home
// folder. The folders are made, for the user alone, when the first value is written.
#ifndef KNOB_TUNING_REGISTRY_DEFAULT_STORE_H
#define KNOB_TUNING_REGISTRY_DEFAULT_STORE_H

#include <optional>

#include "tuning/registry/SqliteStore.h"
#include "tuning/registry/Store.h"

namespace tn::registry {

class DefaultStore : public Store {
 public:
  // Both throw TuningError with TN_NO_HOME_FOLDER when there is no place for the store.
  std::map<int32_t, std::string> readAll() override;
  void write(int32_t settingId, const std::string& value) override;

 private:
  SqliteStore& file();

  std::string folder_;
  std::optional<SqliteStore> file_;
};

}  // namespace tn::registry

#endif
