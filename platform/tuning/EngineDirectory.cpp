#include "tuning/EngineDirectory.h"

#include <cerrno>
#include <dlfcn.h>
#include <string_view>
#include <unistd.h>
#include <utility>

#include "tuning/Characters.h"
#include "tuning/EngineModule.h"
#include "tuning/EtcdName.h"
#include "tuning/TuningError.h"
#include "tuning/registry/LocalEngine.h"
#include "tuning/registry/RegistryDoors.h"
#include "tuning/registry/SqliteStore.h"

namespace tn {
namespace {

constexpr std::string_view kFilePrefix = "file:";
constexpr std::string_view kRegistryPrefix = "registry:";

struct ServerForm {
  bool (*matches)(const std::string& server);
  std::unique_ptr<Engine> (*open)(const Login& login);
};

bool isThisMachine(const std::string& server) {
  char hostName[1025] = {};
  return server.empty() || isSameIgnoringCase(server, "localhost") ||
         (gethostname(hostName, sizeof hostName - 1) == 0 && isSameIgnoringCase(server, hostName));
}

std::unique_ptr<Engine> connectLocal(const Login& login,
                                     std::shared_ptr<const registry::Catalogue> catalogue,
                                     std::unique_ptr<registry::SqliteStore> store) {
  if (!login.user.empty() || !login.password.empty()) {
    throw TuningError(TN_LOCAL_ENGINE_HAS_NO_USERS);
  }
  auto engine = std::make_unique<registry::LocalEngine>(std::move(catalogue), std::move(store));
  engine->connect();
  return engine;
}

std::unique_ptr<Engine> openDefaultStore(const Login& login) {
  return connectLocal(login, registry::Catalogue::compiledIn(),
                      std::make_unique<registry::SqliteStore>());
}

std::unique_ptr<Engine> openStoreFile(const Login& login) {
  return connectLocal(
      login, registry::Catalogue::compiledIn(),
      std::make_unique<registry::SqliteStore>(login.server.substr(kFilePrefix.size())));
}

// The folder as the dynamic linker found it, so that a tree can be moved as a whole.
std::string libraryFolder() {
  static const char anchor = 0;
  Dl_info info{};
  if (dladdr(&anchor, &info) == 0 || info.dli_fname == nullptr) {
    throw TuningError(TN_INTERNAL_ERROR);
  }
  const std::string_view file = info.dli_fname;
  const size_t slash = file.rfind('/');
  return slash == std::string_view::npos ? "." : std::string(file.substr(0, slash));
}

// The folder of the modules as CMake lays out both trees, seen from this library's.
std::string modulePath(const char* fileName) {
  return libraryFolder() + "/" KNOB_MODULE_PATH "/" + fileName;
}

// Never closed again: what the module's client library leaves behind at exit stays callable.
void* loadModule(const char* fileName) {
  const std::string path = modulePath(fileName);
  void* module = dlopen(path.c_str(), RTLD_LAZY | RTLD_LOCAL);
  if (module == nullptr) {
    const bool absent = access(path.c_str(), F_OK) != 0 && errno == ENOENT;
    throw TuningError(absent ? TN_MODULE_NOT_INSTALLED : TN_MODULE_UNUSABLE);
  }
  return module;
}

template <typename Function>
Function* findDoor(const char* fileName, const char* symbol) {
  void* door = dlsym(loadModule(fileName), symbol);
  if (door == nullptr) throw TuningError(TN_MODULE_UNUSABLE);
  return reinterpret_cast<Function*>(door);
}

// What a module's door gave.
std::unique_ptr<Engine> opened(TnStatus status, Engine* given) {
  std::unique_ptr<Engine> engine(given);
  if (status != TN_SUCCESS) throw TuningError(status);
  if (engine == nullptr) throw TuningError(TN_MODULE_UNUSABLE);
  return engine;
}

std::unique_ptr<Engine> openModule(const char* fileName, const Login& login) {
  auto* open = findDoor<TnOpenEngineFunction>(fileName, TN_OPEN_ENGINE_SYMBOL);
  Engine* engine = nullptr;
  const TnStatus status = open(TN_MODULE_INTERFACE, login.server.c_str(), login.user.c_str(),
                               login.password.c_str(), &engine);
  return opened(status, engine);
}

std::unique_ptr<Engine> openRegistry(const Login& login) {
  auto* read = findDoor<TnReadCatalogueFunction>("libtn-registry.so", TN_READ_CATALOGUE_SYMBOL);
  std::shared_ptr<const registry::Catalogue> catalogue;
  std::string store;
  const TnStatus status =
      read(TN_MODULE_INTERFACE, login.server.c_str() + kRegistryPrefix.size(), &catalogue, &store);
  if (status != TN_SUCCESS) throw TuningError(status);

  if (!EtcdName::begins(store)) {
    return connectLocal(login, std::move(catalogue),
                        std::make_unique<registry::SqliteStore>(store));
  }
  auto* open = findDoor<TnOpenEtcdRegistryFunction>("libtn-etcd.so", TN_OPEN_ETCD_REGISTRY_SYMBOL);
  Engine* engine = nullptr;
  const TnStatus openStatus = open(TN_MODULE_INTERFACE, store.c_str(), login.user.c_str(),
                                   login.password.c_str(), &catalogue, &engine);
  return opened(openStatus, engine);
}

// The prefix alone stands for nothing.
bool hasPrefix(const std::string& server, std::string_view prefix) {
  return server.starts_with(prefix) && server.size() > prefix.size();
}

// The first row that matches counts.
constexpr ServerForm kServerForms[] = {
    {isThisMachine, openDefaultStore},
    {[](const std::string& server) { return hasPrefix(server, kFilePrefix); }, openStoreFile},
    {[](const std::string& server) { return hasPrefix(server, kRegistryPrefix); }, openRegistry},
    {[](const std::string& server) {
       return server.starts_with("postgresql://") || server.starts_with("postgres://");
     },
     [](const Login& login) { return openModule("libtn-postgresql.so", login); }},
    {[](const std::string& server) {
       return server.starts_with("patroni://") || server.starts_with("patronis://");
     },
     [](const Login& login) { return openModule("libtn-patroni.so", login); }},
    {[](const std::string& server) { return EtcdName::begins(server); },
     [](const Login& login) { return openModule("libtn-etcd.so", login); }},
};

}  // namespace

std::unique_ptr<Engine> EngineDirectory::open(const Login& login) {
  for (const ServerForm& form : kServerForms) {
    if (form.matches(login.server)) return form.open(login);
  }
  throw TuningError(TN_UNKNOWN_SERVER_FORM);
}

std::unique_ptr<Engine> EngineDirectory::openLocal() {
  return std::make_unique<registry::LocalEngine>(registry::Catalogue::compiledIn(),
                                                 std::make_unique<registry::SqliteStore>());
}

}  // namespace tn
