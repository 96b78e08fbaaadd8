#include "tuning/EngineDirectory.h"

#include <cerrno>
#include <dlfcn.h>
#include <string_view>
#include <strings.h>
#include <unistd.h>

#include "tuning/EngineModule.h"
#include "tuning/TuningError.h"
#include "tuning/registry/DefaultStore.h"
#include "tuning/registry/LocalEngine.h"
#include "tuning/registry/SqliteStore.h"

namespace tn {
namespace {

constexpr std::string_view kFilePrefix = "file:";

struct ServerForm {
  bool (*matches)(const std::string& server);
  std::unique_ptr<Engine> (*open)(const Login& login);
};

bool isThisMachine(const std::string& server) {
  char hostName[1025] = {};
  return server.empty() || strcasecmp(server.c_str(), "localhost") == 0 ||
         (gethostname(hostName, sizeof hostName - 1) == 0 &&
          strcasecmp(server.c_str(), hostName) == 0);
}

void refuseUsers(const Login& login) {
  if (!login.user.empty() || !login.password.empty()) {
    throw TuningError(TN_LOCAL_ENGINE_HAS_NO_USERS);
  }
}

std::unique_ptr<Engine> openDefaultStore(const Login& login) {
  refuseUsers(login);
  return EngineDirectory::openLocal();
}

std::unique_ptr<Engine> openStoreFile(const Login& login) {
  refuseUsers(login);
  return std::make_unique<registry::LocalEngine>(
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

// Never closed again: what the module's client library leaves behind at exit stays callable.
void* loadModule(const char* fileName) {
  const std::string path = libraryFolder() + "/knob/" + fileName;
  void* module = dlopen(path.c_str(), RTLD_LAZY | RTLD_LOCAL);
  if (module == nullptr) {
    const bool absent = access(path.c_str(), F_OK) != 0 && errno == ENOENT;
    throw TuningError(absent ? TN_MODULE_NOT_INSTALLED : TN_MODULE_UNUSABLE);
  }
  return module;
}

std::unique_ptr<Engine> openModule(const char* fileName, const Login& login) {
  void* symbol = dlsym(loadModule(fileName), TN_OPEN_ENGINE_SYMBOL);
  if (symbol == nullptr) throw TuningError(TN_MODULE_UNUSABLE);
  auto* openEngine = reinterpret_cast<TnOpenEngineFunction*>(symbol);

  Engine* opened = nullptr;
  const TnStatus status = openEngine(TN_MODULE_INTERFACE, login.server.c_str(), login.user.c_str(),
                                     login.password.c_str(), &opened);
  std::unique_ptr<Engine> engine(opened);
  if (status != TN_SUCCESS) throw TuningError(status);
  if (engine == nullptr) throw TuningError(TN_MODULE_UNUSABLE);
  return engine;
}

// The first row that matches counts.
constexpr ServerForm kServerForms[] = {
    {isThisMachine, openDefaultStore},
    {[](const std::string& server) {
       return server.starts_with(kFilePrefix) && server.size() > kFilePrefix.size();
     },
     openStoreFile},
    {[](const std::string& server) {
       return server.starts_with("postgresql://") || server.starts_with("postgres://");
     },
     [](const Login& login) { return openModule("libtn-postgresql.so", login); }},
    {[](const std::string& server) {
       return server.starts_with("etcd://") || server.starts_with("etcds://");
     },
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
  return std::make_unique<registry::LocalEngine>(std::make_unique<registry::DefaultStore>());
}

}  // namespace tn
