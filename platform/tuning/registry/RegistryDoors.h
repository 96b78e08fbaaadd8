// The doors through which the tuning library puts a registry together: one module reads its
// catalogue file, another opens it in etcd. As with the door of an engine module (EngineModule.h),
// `interfaceVersion` is the library's TN_MODULE_INTERFACE, and a module built for another one
// answers TN_MODULE_UNUSABLE.
#ifndef KNOB_TUNING_REGISTRY_DOORS_H
#define KNOB_TUNING_REGISTRY_DOORS_H

#include <memory>
#include <string>

#include "tuning/EngineModule.h"
#include "tuning/registry/Catalogue.h"

extern "C" {

// In libtn-registry.so: reads the catalogue file and tells where the values lie: *store is the path
// of an SQLite file, or a name that begins with etcd:// or etcds://. On failure both are left as
// they are. Throws nothing.
using TnReadCatalogueFunction = TnStatus(int32_t interfaceVersion, const char* file,
                                         std::shared_ptr<const tn::registry::Catalogue>* catalogue,
                                         std::string* store) noexcept;

// In libtn-etcd.so: opens the registry that the server name stands for with the settings of the
// catalogue, which the engine shares. On success the engine is the caller's to delete; on failure
// *engine is null. Throws nothing.
using TnOpenEtcdRegistryFunction = TnStatus(
    int32_t interfaceVersion, const char* server, const char* user, const char* password,
    const std::shared_ptr<const tn::registry::Catalogue>* catalogue, tn::Engine** engine) noexcept;

}  // extern "C"

inline constexpr char TN_READ_CATALOGUE_SYMBOL[] = "TnReadCatalogue";
inline constexpr char TN_OPEN_ETCD_REGISTRY_SYMBOL[] = "TnOpenEtcdRegistry";

#endif
