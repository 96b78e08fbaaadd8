#include "tuning/postgresql/PostgresEngine.h"

#include <algorithm>
#include <chrono>
#include <string_view>
#include <thread>

#include "tuning/TuningError.h"
#include "tuning/postgresql/AlterSystem.h"
#include "tuning/postgresql/KnownSettings.h"

namespace tn::postgresql {
namespace {

constexpr std::chrono::seconds kReloadPatience{5};
constexpr std::chrono::microseconds kFirstReloadPause{200};
constexpr std::chrono::microseconds kLongestReloadPause{50000};

// Where the server keeps its own files is not for carrying to another server.
bool isReadOnly(const Setting& setting) {
  const KnownSetting* const known = KnownSettings::find(setting.name);
  return setting.preset || !AlterSystem::canName(setting.name) ||
         (known && known->category == Category::fileLocations);
}

}  // namespace

PostgresEngine::PostgresEngine(const char* server, const char* user, const char* password)
    : PostgresReader(server, user, password) {}

void PostgresEngine::leave() {
  if (changed_) takeEffect();
}

void PostgresEngine::beforeReading() {
  if (!changed_) return;
  takeEffect();
  readAgain();
  files_.reset();  // they were read before what this run has written
}

// True when setting the value would change nothing: neither what is in force nor what is stored and
// waits for a restart or only for the server to read its files again.
bool PostgresEngine::isCurrent(const Setting& setting, const std::string& wanted) {
  if (setting.written) return Snapshot::same(*setting.written, wanted, setting);
  if (!setting.currentIsKnown || setting.changeMayWait ||
      !Snapshot::same(setting.current, wanted, setting)) {
    return false;
  }
  const auto stored = setting.ofCommandLine ? std::nullopt : files().storedValue(setting.name);
  return !stored || Snapshot::same(Snapshot::shown(*stored, setting), wanted, setting);
}

ServerFiles& PostgresEngine::files() {
  if (!files_) files_.emplace(connection());
  return *files_;
}

bool PostgresEngine::resetLeavesItEmpty(const Setting& setting) {
  if (!files().readable() || setting.ofCommandLine) return false;
  const auto text = files().valueAfterReset(setting.name);
  return text ? text->empty() : setting.fallback.empty();
}

void PostgresEngine::store(Setting& setting, const NewValue& value) {
  if (isCurrent(setting, value.shown())) return;
  checkChangeable(setting);
  connection().query(statement(setting, value));
  setting.written = value.shown();
  changed_ = true;
}

// The server would store an empty list as a list with one empty name. So what was set before is
// taken away, and only where that leaves the list empty.
std::string PostgresEngine::statement(const Setting& setting, const NewValue& value) {
  if (value.isEmptyList()) {
    if (!resetLeavesItEmpty(setting)) throw TuningError(TN_EMPTY_LIST_REFUSED);
    return AlterSystem::reset(setting.name);
  }
  std::vector<std::string> literals;
  for (const std::string& part : value.parts()) literals.push_back(connection().literal(part));
  return AlterSystem::set(setting.name, literals);
}

// A change that could not take effect is not made at all: leaving the engine reports nothing.
void PostgresEngine::checkChangeable(const Setting& setting) {
  if (isReadOnly(setting)) throw TuningError(TN_SETTING_READ_ONLY);
  if (!files().mayReload()) throw TuningError(TN_RELOAD_NOT_PERMITTED);
  const auto isKnown = [this](std::string_view name) { return snapshot().hasName(name); };
  if (files().blocked(isKnown)) throw TuningError(TN_CONFIGURATION_FILE_ERRORS);
}

// The moment at which this session last loaded the configuration moves when it has done so again;
// the server hands a new configuration to its sessions only after it has loaded it itself. A server
// that does not answer in time is left alone: the result of leaving cannot be told anyway.
void PostgresEngine::takeEffect() {
  const auto deadline = std::chrono::steady_clock::now() + kReloadPatience;
  const auto reload = connection().queryUntil(
      "SELECT pg_catalog.pg_conf_load_time(), pg_catalog.pg_reload_conf()", deadline);
  changed_ = false;
  auto pause = kFirstReloadPause;
  while (reload && std::chrono::steady_clock::now() < deadline) {
    const auto now = connection().queryUntil("SELECT pg_catalog.pg_conf_load_time()", deadline);
    if (!now || now->text(0, 0) != reload->text(0, 0)) return;
    std::this_thread::sleep_for(pause);
    pause = std::min(pause * 2, kLongestReloadPause);
  }
}

}  // namespace tn::postgresql
