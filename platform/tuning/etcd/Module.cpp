#include <memory>
#include <utility>

#include "service/TuningInterface.h"
#include "tuning/EngineModule.h"
#include "tuning/Guarded.h"
#include "tuning/etcd/Address.h"
#include "tuning/etcd/EtcdStore.h"
#include "tuning/registry/LocalEngine.h"
#include "tuning/registry/RegistryDoors.h"

namespace {

using tn::registry::Catalogue;

TnStatus openRegistry(int32_t interfaceVersion, const char* server, const char* user,
                      const char* password, std::shared_ptr<const Catalogue> catalogue,
                      tn::Engine** engine) noexcept {
  *engine = nullptr;
  if (interfaceVersion != TN_MODULE_INTERFACE) return TN_MODULE_UNUSABLE;
  return tn::guarded([&] {
    auto opened = std::make_unique<tn::registry::LocalEngine>(
        std::move(catalogue),
        std::make_unique<tn::etcd::EtcdStore>(tn::etcd::Address::parse(server, user, password)));
    opened->connect();
    *engine = opened.release();
  });
}

}  // namespace

extern "C" {

__attribute__((visibility("default"))) TnStatus TnOpenEngine(int32_t interfaceVersion,
                                                             const char* server, const char* user,
                                                             const char* password,
                                                             tn::Engine** engine) noexcept {
  return openRegistry(interfaceVersion, server, user, password, Catalogue::compiledIn(), engine);
}

__attribute__((visibility("default"))) TnStatus TnOpenEtcdRegistry(
    int32_t interfaceVersion, const char* server, const char* user, const char* password,
    const std::shared_ptr<const Catalogue>* catalogue, tn::Engine** engine) noexcept {
  return openRegistry(interfaceVersion, server, user, password, *catalogue, engine);
}
}
