// The door of an engine module: a shared object in <prefix>/lib/knob that the tuning library loads
// the first time a server name of its kind is opened, so that a program that never meets such an
// engine never loads the engine's client library.
//
// A module defines the function below, or a door of registry/RegistryDoors.h, and hides everything
// else. It may have a C++ runtime of its own, but it has to be built with the same compiler and
// standard library as the tuning library, and share its memory allocator.
#ifndef KNOB_TUNING_ENGINE_MODULE_H
#define KNOB_TUNING_ENGINE_MODULE_H

#include "tuning/Engine.h"

// Raised with every change of Engine.h, TuningError.h, registry/Catalogue.h or a door that a module
// can notice.
inline constexpr int32_t TN_MODULE_INTERFACE = 2;

extern "C" {

// Opens the engine that the server name stands for. `interfaceVersion` is the library's
// TN_MODULE_INTERFACE; a module built for another one answers TN_MODULE_UNUSABLE.
// On success the engine is the caller's to delete; on failure *engine is null. Throws nothing.
using TnOpenEngineFunction = TnStatus(int32_t interfaceVersion, const char* server,
                                      const char* user, const char* password,
                                      tn::Engine** engine) noexcept;
}

inline constexpr char TN_OPEN_ENGINE_SYMBOL[] = "TnOpenEngine";

#endif
