#include "tuning/patroni/MemberFiles.h"

#include <algorithm>

#include "tuning/Characters.h"
#include "tuning/TuningError.h"

namespace tn::patroni {
namespace {

// Patroni makes the server's main file its own, and has it include the one that was there before.
// Everything is named with its schema: a role's search_path could put something else before it.
constexpr char kQuery[] =
    "SELECT name, setting, error IS NOT NULL, sourcefile,"
    " pg_catalog.current_setting('config_file') FROM pg_catalog.pg_file_settings";

enum Column : int { kName, kSetting, kFailed, kFile, kMainFile };

constexpr std::string_view kOverridingFile = "/postgresql.auto.conf";

}  // namespace

std::optional<MemberFiles> MemberFiles::read(postgresql::Connection& connection,
                                             std::chrono::steady_clock::time_point deadline) {
  try {
    const auto rows = connection.queryUntil(kQuery, deadline);
    if (!rows) return std::nullopt;
    return MemberFiles(*rows);
  } catch (const TuningError& error) {
    if (error.status() == TN_NOT_PERMITTED) throw TuningError(TN_PATRONI_SOURCES_HIDDEN);
    throw;
  }
}

MemberFiles::MemberFiles(const postgresql::Result& rows) {
  for (int row = 0; row < rows.rows(); ++row) {
    const std::string_view file = rows.text(row, kFile);
    entries_.push_back({std::string(rows.text(row, kName)), std::string(rows.text(row, kSetting)),
                        rows.flag(row, kFailed), file == rows.text(row, kMainFile),
                        file.ends_with(kOverridingFile)});
  }
}

// Of several entries for one setting the last counts.
template <typename Condition>
const MemberFiles::Entry* MemberFiles::last(std::string_view settingName,
                                            Condition condition) const {
  const auto found = std::find_if(entries_.rbegin(), entries_.rend(), [&](const Entry& entry) {
    return isSameIgnoringCase(entry.name, settingName) && condition(entry);
  });
  return found == entries_.rend() ? nullptr : &*found;
}

const MemberFiles::Entry* MemberFiles::byPatroni(std::string_view settingName) const {
  return last(settingName, [](const Entry& entry) { return entry.ofPatroni; });
}

const MemberFiles::Entry* MemberFiles::lastOf(std::string_view settingName) const {
  return last(settingName, [](const Entry&) { return true; });
}

bool MemberFiles::isOverridden(std::string_view settingName) const {
  return last(settingName, [](const Entry& entry) { return entry.overriding; }) != nullptr;
}

}  // namespace tn::patroni
