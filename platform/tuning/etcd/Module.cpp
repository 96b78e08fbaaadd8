#include <memory>

#include "service/TuningInterface.h"
#include "tuning/EngineModule.h"
#include "tuning/Guarded.h"
#include "tuning/etcd/Address.h"
#include "tuning/etcd/EtcdStore.h"
#include "tuning/registry/LocalEngine.h"

namespace {

std::unique_ptr<tn::etcd::EtcdStore> openStore(const char* server, const char* user,
                                               const char* password) {
  return std::make_unique<tn::etcd::EtcdStore>(tn::etcd::Address::parse(server, user, password));
}

}  // namespace

extern "C" __attribute__((visibility("default"))) TnStatus TnOpenEngine(
    int32_t interfaceVersion, const char* server, const char* user, const char* password,
    tn::Engine** engine) noexcept {
  *engine = nullptr;
  if (interfaceVersion != TN_MODULE_INTERFACE) return TN_MODULE_UNUSABLE;
  return tn::guarded([=] {
    auto opened = std::make_unique<tn::registry::LocalEngine>(openStore(server, user, password));
    *engine = opened.release();
  });
}
