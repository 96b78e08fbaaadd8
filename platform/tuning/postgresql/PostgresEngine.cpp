#include "tuning/postgresql/PostgresEngine.h"

#include <algorithm>
#include <string_view>
#include <utility>
#include <vector>

#include "tuning/Characters.h"
#include "tuning/TuningError.h"
#include "tuning/postgresql/AlterSystem.h"
#include "tuning/postgresql/Reload.h"

namespace tn::postgresql {
namespace {

constexpr int kGrantsSettings = 150000;  // rights on single settings

bool isWritten(const Setting& setting, std::string_view text) {
  return text == *setting.written || Snapshot::means(text, *setting.written, setting);
}

Reload::Names namesOf(const std::vector<Setting*>& settings) {
  Reload::Names names;
  for (const Setting* const setting : settings) names.push_back(setting->name);
  return names;
}

// -1 when the rows hold none of the setting.
int rowOf(const Result& rows, const Setting& setting) {
  for (int row = 0; row < rows.rows(); ++row) {
    if (rows.text(row, Reload::kName) == setting.name) return row;
  }
  return -1;
}

}  // namespace

PostgresEngine::PostgresEngine(const char* server, const char* user, const char* password)
    : PostgresReader(server, user, password) {}

// Whatever was lost, the changes are stored: the server has only to be told.
void PostgresEngine::leave() {
  if (unloaded_.empty()) return;
  try {
    takeEffect();
  } catch (const TuningError& error) {
    if (error.status() != TN_CONNECTION_LOST) throw;
    takeEffectOverNewConnection();
  }
}

void PostgresEngine::takeEffectOverNewConnection() {
  try {
    connection().reopen();
    takeEffect();
  } catch (const TuningError& error) {
    throw TuningError(error.status() == TN_CHANGE_NOT_IN_FORCE ? TN_CHANGE_NOT_IN_FORCE
                                                               : TN_CHANGES_NOT_LOADED);
  }
}

void PostgresEngine::beforeReading() {
  if (!stale_) return;
  if (!unloaded_.empty()) takeEffect();
  readAgain();
  files_.reset();
  stale_ = false;
}

// True when setting the value would change nothing: neither what is in force nor what is stored and
// waits for a restart or only for the server to read its files again.
bool PostgresEngine::isCurrent(const Setting& setting, const std::string& wanted) {
  if (setting.written) return Snapshot::same(*setting.written, wanted, setting);
  if (setting.ofCommandLine) return Snapshot::same(setting.current, wanted, setting);
  if (!setting.currentIsKnown || setting.changeMayWait ||
      !Snapshot::same(setting.current, wanted, setting)) {
    return false;
  }
  const auto next = files().nextValue(setting.name);
  // The server tells some texts in letters of another case: "iso, mdy", "utf8".
  return !next || Snapshot::means(*next, wanted, setting) || isSameIgnoringCase(*next, wanted);
}

ServerFiles& PostgresEngine::files() {
  if (!files_) files_.emplace(connection());
  return *files_;
}

// The first change of a run is in force when this returns, and so tells that the others, which wait
// for the end of the run, will be.
void PostgresEngine::store(Setting& setting, const NewValue& value) {
  if (connection().isLost()) throw TuningError(TN_CONNECTION_LOST_BEFORE);
  if (isCurrent(setting, value.shown())) return;
  checkChangeable(setting);
  write(setting, statement(setting, value));
  setting.written = value.shown();
  unloaded_.push_back(&setting);
  stale_ = true;
  if (!std::exchange(begun_, true)) takeEffect();
}

void PostgresEngine::write(const Setting& setting, const std::string& statement) {
  try {
    connection().query(statement, SqlState::ofAlterSystem);
  } catch (const TuningError& error) {
    if (error.status() != TN_NOT_PERMITTED || !mayChange(setting)) throw;
    throw TuningError(TN_CONFIGURATION_LOCKED);
  }
}

// The server gives one code for a user without the right and for a file that it may not write
// itself.
bool PostgresEngine::mayChange(const Setting& setting) {
  if (connection().isSuperuser()) return true;
  if (connection().version() < kGrantsSettings) return false;
  return connection()
      .query("SELECT pg_catalog.has_parameter_privilege(" +
             connection().literal(std::string(setting.name)) + ", 'ALTER SYSTEM')")
      .flag(0, 0);
}

std::string PostgresEngine::statement(const Setting& setting, const NewValue& value) {
  if (value.isEmptyList()) {
    if (!resetLeavesItEmpty(setting)) throw TuningError(TN_EMPTY_LIST_REFUSED);
    return AlterSystem::reset(setting.name);
  }
  if (resetGivesBackWhatRuns(setting, value)) return AlterSystem::reset(setting.name);
  std::vector<std::string> literals;
  for (const std::string& part : value.parts()) literals.push_back(connection().literal(part));
  return AlterSystem::set(setting.name, literals);
}

// The server would store an empty list as a list with one empty name. So what was set before is
// taken away, and only where that leaves the list empty.
bool PostgresEngine::resetLeavesItEmpty(const Setting& setting) {
  if (!files().readable()) return false;
  const auto text = files().valueAfterReset(setting.name);
  return text ? text->empty() : setting.fallback.empty();
}

// The server compares the texts of a list: the same names with other blanks or quotes wait for a
// restart, and ALTER SYSTEM has its own way to write them.
bool PostgresEngine::resetGivesBackWhatRuns(const Setting& setting, const NewValue& value) {
  if (setting.list == NameList::Kind::none || !setting.needsRestart) return false;
  if (value.shown() != setting.current || value.text() == setting.running) return false;
  return files().readable() && files().valueAfterReset(setting.name) == setting.running;
}

// A change that could not take effect is not made at all.
void PostgresEngine::checkChangeable(const Setting& setting) {
  if (isReadOnly(setting)) throw TuningError(TN_SETTING_READ_ONLY);
  if (setting.ofCommandLine) {
    throw TuningError(snapshot().isOfPatroni() ? TN_SET_BY_PATRONI : TN_SET_ON_COMMAND_LINE);
  }
  if (snapshot().alterSystemIsOff()) throw TuningError(TN_ALTER_SYSTEM_OFF);
  if (!files().mayReload()) throw TuningError(TN_RELOAD_NOT_PERMITTED);
  const auto isKnown = [this](std::string_view name) { return snapshot().hasName(name); };
  if (files().blocked(isKnown)) throw TuningError(TN_CONFIGURATION_FILE_ERRORS);
}

// What a lost connection leaves open stays to be loaded. After any other failure the changes are
// stored all the same.
void PostgresEngine::takeEffect() {
  bool inForce = false;
  try {
    inForce = load();
  } catch (const TuningError& error) {
    if (error.status() == TN_CONNECTION_LOST) throw;
  }
  const auto open = std::exchange(unloaded_, {});
  if (inForce) return;
  for (Setting* const setting : open) setting->written.reset();
  throw TuningError(TN_CHANGE_NOT_IN_FORCE);
}

// False when not everything is in force then. For a superuser the values are looked at first, and
// whole rows only of what they leave open.
bool PostgresEngine::load() {
  const bool quick = connection().isSuperuser();
  auto rows = quick ? Reload::values(connection(), namesOf(unloaded_))
                    : Reload::rows(connection(), namesOf(unloaded_));
  if (rows && quick) {
    std::erase_if(unloaded_, [&](const Setting* setting) {
      const int row = rowOf(*rows, *setting);
      return row >= 0 && setting->currentIsKnown &&
             isWritten(*setting, rows->text(row, Reload::kConfigured));
    });
    if (unloaded_.empty()) return true;
    rows = Reload::rowsNow(connection(), namesOf(unloaded_));
  }
  return rows && std::all_of(unloaded_.begin(), unloaded_.end(),
                             [&](const Setting* setting) { return isInForce(*setting, *rows); });
}

// A value that a session's own hides is in force when the files give it and the command line does
// not give another.
bool PostgresEngine::isInForce(const Setting& setting, const Result& rows) {
  const int row = rowOf(rows, setting);
  if (row < 0 || setting.ofNewSessions) return true;
  const bool hidden = Snapshot::isOfSession(rows.text(row, Reload::kSource));
  if (!hidden) {
    if (setting.needsRestart && rows.flag(row, Reload::kPendingRestart)) return true;
    if (isWritten(setting, rows.text(row, Reload::kConfigured))) return true;
  }
  // The server writes some values in another way than they were given.
  ServerFiles now(connection());
  if (!now.readable()) return !hidden;
  if (hidden && !now.readCommandLine(connection())) return false;
  const auto given = now.value(setting.name);
  return given ? isWritten(setting, *given) : hidden && setting.fallback == *setting.written;
}

}  // namespace tn::postgresql
