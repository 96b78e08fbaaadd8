#include "tuning/patroni/MemberServer.h"

#include <algorithm>
#include <utility>

#include "tuning/TuningError.h"
#include "tuning/patroni/Rules.h"
#include "tuning/postgresql/Snapshot.h"

namespace tn::patroni {
namespace {

using postgresql::Result;
using postgresql::Setting;
using postgresql::Snapshot;

// Everything is named with its schema: a role's search_path could put something else before it.
constexpr char kQuery[] =
    "SELECT name, reset_val, source, pending_restart FROM pg_catalog.pg_settings";
constexpr char kOfThese[] = " WHERE name OPERATOR(pg_catalog.=) ANY (ARRAY[";

enum Column : int { kName, kConfigured, kSource, kPendingRestart };

bool means(std::string_view text, const std::string& wanted, const Setting& setting) {
  return text == wanted || Snapshot::means(text, wanted, setting);
}

bool isWanted(std::string_view text, const Change& change) {
  return means(text, change.value.shown(), *change.setting) ||
         (!change.asTold.empty() && text == change.asTold);
}

// A session may keep the encoding that it began with.
bool isOfSession(const Setting& setting, std::string_view source) {
  return setting.name == "client_encoding" || Snapshot::isOfSession(source);
}

// A setting that this server does not have stands in no row.
int rowOf(const Result& rows, std::string_view name) {
  int row = 0;
  while (row < rows.rows() && rows.text(row, kName) != name) ++row;
  return row;
}

MemberServer::Standing standing(const Change& change, const Result& rows,
                                const MemberFiles& files) {
  using enum MemberServer::Standing;
  const Setting& setting = *change.setting;
  const int row = rowOf(rows, setting.name);
  if (row == rows.rows()) return notYet;
  const bool ofSession = isOfSession(setting, rows.text(row, kSource));
  if (!ofSession && isWanted(rows.text(row, kConfigured), change)) return followed;
  const MemberFiles::Entry* const written = files.byPatroni(setting.name);
  if (!written) return unwritten;
  if (!isWanted(written->text, change)) return notYet;
  // A server tells no error of its own from a value that waits for a restart but by this.
  if (setting.needsRestart && rows.flag(row, kPendingRestart)) return followed;
  if (written->failed) return refused;
  // Written, and the server can use it, which this session cannot see or sees as another text.
  if (ofSession || setting.ofNewSessions) return followed;
  const bool changed = rows.text(row, kConfigured) != setting.running;
  return setting.type == TN_TYPE_STRING && change.asTold.empty() && changed ? followed : notYet;
}

}  // namespace

MemberServer::MemberServer(std::string uri, std::string user, std::string password)
    : uri_(std::move(uri)), user_(std::move(user)), password_(std::move(password)) {}

bool MemberServer::connect() {
  if (connection_) return true;
  try {
    connection_.emplace(uri_.c_str(), user_.c_str(), password_.c_str());
  } catch (const TuningError&) {
    silent_ = true;
    return false;
  }
  return true;
}

void MemberServer::look(Deadline deadline) {
  if (!connect()) return;
  try {
    files_ = MemberFiles::read(*connection_, deadline);
    values_ = files_ ? connection_->queryUntil(kQuery, deadline) : std::nullopt;
    silent_ = !values_;
    if (values_) return;
  } catch (const TuningError& error) {
    if (error.status() != TN_CONNECTION_LOST) throw;
  }
  connection_.reset();
}

bool MemberServer::has(const Change& change) const {
  if (!values_) return true;
  const Setting& setting = *change.setting;
  const int row = rowOf(*values_, setting.name);
  if (row == values_->rows()) return false;
  const MemberFiles::Entry* const written = files_->lastOf(setting.name);
  const bool fileHasIt = written && isWanted(written->text, change);
  if (written && written->overriding && !fileHasIt) return false;
  const bool ofSession = isOfSession(setting, values_->text(row, kSource));
  if (!ofSession && isWanted(values_->text(row, kConfigured), change)) return true;
  // The session's own hides the value, or the server tells it in other words, or it waits.
  if (!written) return ofSession && means(setting.fallback, change.value.shown(), setting);
  return fileHasIt && (!written->failed || values_->flag(row, kPendingRestart));
}

TnStatus MemberServer::hindrance(const Setting& setting, const Configuration& configuration) const {
  if (!values_) return TN_SUCCESS;
  const int row = rowOf(*values_, setting.name);
  const bool waits = row != values_->rows() && values_->flag(row, kPendingRestart);
  return hindrance(*files_, waits, setting, configuration);
}

// What waits for a restart may stand in the file from before the cluster's configuration was
// changed back: Patroni writes the file only when what runs would change. Where the configuration
// names the setting, its Patroni may just be behind.
TnStatus MemberServer::hindrance(const MemberFiles& files, bool waitsForRestart,
                                 const Setting& setting, const Configuration& configuration) {
  if (files.isOverridden(setting.name)) return TN_PATRONI_OVERRIDDEN;
  const bool ofMember = files.byPatroni(setting.name) && !waitsForRestart &&
                        !Rules::isOfClusterAlone(setting.name) &&
                        !configuration.parameter(setting.name);
  if (ofMember) return TN_PATRONI_SET_BY_MEMBER;
  return TN_SUCCESS;
}

std::vector<MemberServer::Standing> MemberServer::standings(const std::vector<Change>& changes,
                                                            Deadline deadline) {
  std::vector<Standing> unknown(changes.size(), Standing::notYet);
  if (!connect()) return unknown;
  try {
    auto found = ask(changes, deadline);
    silent_ = !found;
    if (found) return *std::move(found);
  } catch (const TuningError&) {  // asked again over a new connection
  }
  connection_.reset();
  return unknown;
}

// The files first: reading them is what tells a session whether a value waits for a restart.
std::optional<std::vector<MemberServer::Standing>> MemberServer::ask(
    const std::vector<Change>& changes, Deadline deadline) {
  const auto files = MemberFiles::read(*connection_, deadline);
  if (!files) return std::nullopt;
  std::string query = std::string(kQuery) + kOfThese;
  for (const Change& change : changes) {
    if (&change != &changes.front()) query += ", ";
    query += connection_->literal(std::string(change.setting->name));
  }
  const auto rows = connection_->queryUntil(query + "]::pg_catalog.text[])", deadline);
  if (!rows) return std::nullopt;
  std::vector<Standing> found;
  found.reserve(changes.size());
  for (const Change& change : changes) found.push_back(standing(change, *rows, *files));
  return found;
}

}  // namespace tn::patroni
