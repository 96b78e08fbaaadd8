#include "service/TuningInterface.h"
#include "tuning/EngineModule.h"
#include "tuning/Guarded.h"
#include "tuning/patroni/PatroniEngine.h"

extern "C" __attribute__((visibility("default"))) TnStatus TnOpenEngine(
    int32_t interfaceVersion, const char* server, const char* user, const char* password,
    tn::Engine** engine) noexcept {
  *engine = nullptr;
  if (interfaceVersion != TN_MODULE_INTERFACE) return TN_MODULE_UNUSABLE;
  return tn::guarded(
      [=] { *engine = tn::patroni::PatroniEngine::open(server, user, password).release(); });
}
