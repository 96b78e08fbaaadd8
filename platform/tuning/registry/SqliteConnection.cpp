#include "tuning/registry/SqliteConnection.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <unistd.h>
#include <vector>

#include "tuning/TuningError.h"
#include "tuning/registry/StoreStatus.h"

namespace tn::registry {
namespace {

// Without the details that SQLite adds to a result in its higher bits.
int primary(int result) { return result & 0xff; }

// Keeps SQLite from giving names like ":memory:" and "file:x" a meaning of their own.
std::string plainName(const std::string& path) {
  return path.starts_with('/') ? path : "./" + path;
}

// Why no file can be made beside the one with the name, as an errno; 0 if one can.
int refusalOfNewFile(std::string name) {
  name += "-XXXXXX";
  const int file = mkostemp(name.data(), O_CLOEXEC);
  if (file < 0) return errno;
  unlink(name.c_str());
  close(file);
  return 0;
}

}  // namespace

void SqliteConnection::checkPath(const std::string& path) {
  constexpr size_t kJournalSuffix = 8;
  if (sqlite3_initialize() != SQLITE_OK) throw TuningError(TN_OUT_OF_MEMORY);
  sqlite3_vfs* const system = sqlite3_vfs_find(nullptr);
  std::vector<char> full(static_cast<size_t>(system->mxPathname) + 1);
  const int result = system->xFullPathname(system, plainName(path).c_str(),
                                           static_cast<int>(full.size()), full.data());
  if (primary(result) != SQLITE_OK || strlen(full.data()) + kJournalSuffix >= full.size()) {
    throw TuningError(TN_STORE_PATH_UNUSABLE);
  }
}

SqliteConnection::SqliteConnection(const std::string& path, std::chrono::milliseconds patience) {
  constexpr int kFlags = SQLITE_OPEN_READWRITE | SQLITE_OPEN_NOMUTEX | SQLITE_OPEN_EXRESCODE;
  sqlite3* opened = nullptr;
  errno = 0;
  const int result = sqlite3_open_v2(plainName(path).c_str(), &opened, kFlags, nullptr);
  database_.reset(opened);
  check(result);
  setPatience(patience);
}

void SqliteConnection::setPatience(std::chrono::milliseconds patience) noexcept {
  sqlite3_busy_timeout(database_.get(), static_cast<int>(patience.count()));
}

void SqliteConnection::execute(const char* sql) {
  errno = 0;
  check(sqlite3_exec(database_.get(), sql, nullptr, nullptr, nullptr));
}

void SqliteConnection::commit() {
  errno = 0;
  const int result = sqlite3_exec(database_.get(), "COMMIT", nullptr, nullptr, nullptr);
  // SQLite minds a folder that cannot be synced only after it has removed the journal, which is
  // what commits.
  if (result == SQLITE_IOERR_DIR_FSYNC) throw TuningError(TN_STORE_UNSYNCED);
  check(result);
}

int64_t SqliteConnection::number(std::string_view sql) {
  const Statement row = prepare(sql);
  if (!step(row)) throw TuningError(TN_STORE_DAMAGED);
  return sqlite3_column_int64(row.get(), 0);
}

SqliteConnection::Statement SqliteConnection::prepare(std::string_view sql) {
  sqlite3_stmt* statement = nullptr;
  errno = 0;
  check(sqlite3_prepare_v2(database_.get(), sql.data(), static_cast<int>(sql.size()), &statement,
                           nullptr));
  return Statement(statement);
}

bool SqliteConnection::step(const Statement& statement) {
  errno = 0;
  const int result = sqlite3_step(statement.get());
  if (result != SQLITE_ROW && result != SQLITE_DONE) check(result);
  return result == SQLITE_ROW;
}

void SqliteConnection::check(int result) {
  if (result != SQLITE_OK) throw TuningError(statusOf(result));
}

int64_t SqliteConnection::fileSize() {
  sqlite3_file* file = nullptr;
  sqlite3_int64 size = 0;
  check(sqlite3_file_control(database_.get(), "main", SQLITE_FCNTL_FILE_POINTER, &file));
  check(file->pMethods->xFileSize(file, &size));
  return size;
}

TnStatus SqliteConnection::statusOf(int result) {
  if (result == SQLITE_IOERR_NOMEM) return TN_OUT_OF_MEMORY;
  switch (primary(result)) {
    case SQLITE_BUSY:
    case SQLITE_LOCKED:
    case SQLITE_PROTOCOL:
      return TN_STORE_BUSY;
    case SQLITE_READONLY:
      return TN_STORE_NOT_WRITABLE;
    case SQLITE_FULL:
      return TN_STORE_FULL;
    case SQLITE_NOMEM:
      return TN_OUT_OF_MEMORY;
    case SQLITE_CANTOPEN:
    case SQLITE_IOERR:
      return systemFailure(primary(result));
    default:  // a page that makes no sense, a table that is not there or looks different
      return TN_STORE_DAMAGED;
  }
}

TnStatus SqliteConnection::systemFailure(int result) {
  // Of a write that fails while a change is completed SQLite keeps no number.
  const int kept = sqlite3_system_errno(database_.get());
  int error = kept != 0 ? kept : errno;
  // When SQLite cannot make a journal it tries to open one to read, and keeps the number of that.
  // The journal lies beside the file that a link leads to.
  const char* const name = sqlite3_db_filename(database_.get(), "main");
  if (result == SQLITE_CANTOPEN && error == ENOENT && name != nullptr) {
    const int refusal = refusalOfNewFile(name);
    if (refusal != 0) error = refusal;
  }
  return writeFailure(error);
}

}  // namespace tn::registry
