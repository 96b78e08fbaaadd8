#include "tuning/postgresql/ServerFiles.h"

#include <algorithm>

#include "tuning/TuningError.h"
#include "tuning/postgresql/SettingName.h"

namespace tn::postgresql {
namespace {

// Everything is named with its schema: a role's search_path could put something else before it.
constexpr char kRightsQuery[] =
    "SELECT pg_catalog.has_function_privilege('pg_catalog.pg_reload_conf()', 'EXECUTE')"
    " AND pg_catalog.has_function_privilege('pg_catalog.pg_conf_load_time()', 'EXECUTE'),"
    " pg_catalog.has_table_privilege('pg_catalog.pg_file_settings', 'SELECT')"
    " AND pg_catalog.has_function_privilege('pg_catalog.pg_show_all_file_settings()', 'EXECUTE'),"
    " pg_catalog.has_function_privilege("
    "'pg_catalog.pg_read_file(text,bigint,bigint,boolean)', 'EXECUTE')";

constexpr char kFilesQuery[] =
    "SELECT name, setting, applied, error IS NOT NULL, sourcefile FROM pg_catalog.pg_file_settings";

constexpr std::string_view kWrittenFile = "/postgresql.auto.conf";

constexpr char kOptionsQuery[] =
    "SELECT pg_catalog.pg_read_file('postmaster.opts', 0, 65536, true)";

}  // namespace

ServerFiles::ServerFiles(Connection& connection) {
  readRights(connection);
  if (readable_) readFiles(connection);
}

void ServerFiles::readRights(Connection& connection) {
  if (connection.isSuperuser()) {
    mayReload_ = readable_ = mayReadOptions_ = true;
    return;
  }
  const Result rights = connection.query(kRightsQuery);
  mayReload_ = rights.flag(0, 0);
  readable_ = rights.flag(0, 1);
  mayReadOptions_ = rights.flag(0, 2);
}

void ServerFiles::readFiles(Connection& connection) {
  const Result rows = connection.query(kFilesQuery);
  for (int row = 0; row < rows.rows(); ++row) {
    entries_.push_back({std::string(rows.text(row, 0)), std::string(rows.text(row, 1)),
                        rows.flag(row, 2), rows.flag(row, 3) && !rows.text(row, 4).empty(),
                        rows.text(row, 4).ends_with(kWrittenFile)});
  }
}

// An entry whose value alone is at fault, or that waits for a restart, leaves the others in force;
// one that is not understood, or that names nothing the server knows, keeps all of them out.
bool ServerFiles::blocked(const std::function<bool(std::string_view)>& isKnown) const {
  return std::any_of(entries_.begin(), entries_.end(), [&](const Entry& entry) {
    return entry.failed && (entry.name.empty() || !isKnown(entry.name));
  });
}

// A file that is not there or not readable leaves the command line unknown, which is no reason to
// fail; a lost connection is met again by whatever comes next.
bool ServerFiles::readCommandLine(Connection& connection) {
  if (!mayReadOptions_) return false;
  try {
    const Result options = connection.query(kOptionsQuery);
    commandLine_ = CommandLine(options.text(0, 0));
    return !options.text(0, 0).empty();
  } catch (const TuningError&) {
    return false;
  }
}

template <typename Condition>
std::optional<std::string_view> ServerFiles::last(std::string_view settingName,
                                                  Condition condition) const {
  const auto found = std::find_if(entries_.rbegin(), entries_.rend(), [&](const Entry& entry) {
    return isSameSetting(entry.name, settingName) && condition(entry);
  });
  if (found == entries_.rend()) return std::nullopt;
  return found->value;
}

std::optional<std::string_view> ServerFiles::value(std::string_view settingName) const {
  if (const auto given = commandLine_.value(settingName)) return given;
  return last(settingName, [](const Entry& entry) { return entry.applied; });
}

std::optional<std::string_view> ServerFiles::nextValue(std::string_view settingName) const {
  return last(settingName, [](const Entry&) { return true; });
}

std::optional<std::string_view> ServerFiles::valueAfterReset(std::string_view settingName) const {
  return last(settingName, [](const Entry& entry) { return !entry.written; });
}

}  // namespace tn::postgresql
