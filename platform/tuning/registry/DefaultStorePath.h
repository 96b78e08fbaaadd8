// Where the store of a user who names none lies:
//
//   $XDG_STATE_HOME/knob/settings.db   with that variable, if it holds an absolute path
//   ~/.local/state/knob/settings.db    otherwise; ~ is $HOME, or the home folder of the password
//                                      database when that is not an absolute path
#ifndef KNOB_TUNING_REGISTRY_DEFAULT_STORE_PATH_H
#define KNOB_TUNING_REGISTRY_DEFAULT_STORE_PATH_H

#include <string>

namespace tn::registry {

// Throws TuningError with TN_NO_HOME_FOLDER when there is no place for the store.
std::string defaultStorePath();

// Makes the folder of the file `path` and those above it, durably and for the user alone. Throws
// TuningError with a TN_STORE_... status.
void makeFolderOf(const std::string& path);

}  // namespace tn::registry

#endif
