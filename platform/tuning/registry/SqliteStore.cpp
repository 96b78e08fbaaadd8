#include "tuning/registry/SqliteStore.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <limits>
#include <memory>
#include <sqlite3.h>
#include <string_view>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>
#include <vector>

#include "service/TuningInterface.h"
#include "tuning/TuningError.h"
#include "tuning/registry/StoreStatus.h"

namespace tn::registry {
namespace {

constexpr int kBusyTimeoutMilliseconds = 10'000;

constexpr uint32_t kApplicationId = 0x6b6e6f62;
constexpr uint32_t kLayoutVersion = 1;
constexpr char kCreateStore[] =
    "CREATE TABLE setting (id INTEGER PRIMARY KEY, value BLOB NOT NULL);"
    "PRAGMA application_id = 0x6b6e6f62;"
    "PRAGMA user_version = 1;";

// The head of every SQLite file: the magic text with its NUL, and two big-endian numbers.
using FileHeader = std::array<unsigned char, 100>;
constexpr std::string_view kMagic("SQLite format 3\0", 16);
constexpr size_t kLayoutVersionOffset = 60;
constexpr size_t kApplicationIdOffset = 68;

enum class Purpose { read, write };

TnStatus failureOf(int error, Purpose purpose) {
  return purpose == Purpose::read ? readFailure(error) : writeFailure(error);
}

uint32_t numberAt(const FileHeader& header, size_t offset) {
  uint32_t number = 0;
  for (size_t i = 0; i < 4; ++i) number = number << 8 | header[offset + i];
  return number;
}

// Zeros where the file is shorter.
FileHeader readHeader(const std::string& path) {
  const int file = open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
  if (file < 0) throw TuningError(readFailure(errno));
  FileHeader header{};
  const ssize_t size = pread(file, header.data(), header.size(), 0);
  const int error = errno;
  close(file);
  if (size < 0) throw TuningError(readFailure(error));
  return header;
}

// A header of zeros is that of an empty file, or is left by a machine that stopped during the very
// first change: SQLite undoes that change, or finds the file damaged.
void checkHeader(const FileHeader& header) {
  if (std::ranges::all_of(header, [](unsigned char byte) { return byte == 0; })) return;
  if (!std::equal(kMagic.begin(), kMagic.end(), header.begin()) ||
      numberAt(header, kApplicationIdOffset) != kApplicationId) {
    throw TuningError(TN_STORE_FOREIGN);
  }
  const uint32_t version = numberAt(header, kLayoutVersionOffset);
  if (version > kLayoutVersion) throw TuningError(TN_STORE_NEWER);
  if (version < kLayoutVersion) throw TuningError(TN_STORE_DAMAGED);
}

// Whether there is a store to read. Looks at the file before SQLite does: SQLite would wait for a
// pipe, and complete another program's interrupted changes. Opening and closing the file here
// cannot drop locks of SQLite's, since no connection lives longer than one operation.
bool holdsStore(const std::string& path) {
  struct stat status {};
  if (stat(path.c_str(), &status) != 0) {
    if (errno == ENOENT) return false;
    throw TuningError(readFailure(errno));
  }
  if (!S_ISREG(status.st_mode)) throw TuningError(TN_STORE_NOT_A_FILE);
  checkHeader(readHeader(path));
  return true;
}

// Keeps SQLite from giving names like ":memory:" and "file:x" a meaning of their own.
std::string plainName(const std::string& path) {
  return path.starts_with('/') ? path : "./" + path;
}

// SQLite takes shorter paths than the system does, with room for the name of the journal. It would
// say so without a reason, and only after the file was made.
void checkPath(const std::string& path) {
  constexpr size_t kJournalSuffix = 8;
  sqlite3_vfs* const system = sqlite3_vfs_find(nullptr);
  std::vector<char> full(static_cast<size_t>(system->mxPathname) + 1);
  const int result = system->xFullPathname(system, plainName(path).c_str(),
                                           static_cast<int>(full.size()), full.data());
  if ((result & 0xff) != SQLITE_OK || strlen(full.data()) + kJournalSuffix >= full.size()) {
    throw TuningError(TN_STORE_PATH_UNUSABLE);
  }
}

// An empty file, which is an empty store. SQLite would make it too, but could not tell afterwards
// whether the folder or the right to write in it was missing.
void createFile(const std::string& path) {
  const int file = open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0644);
  if (file < 0) throw TuningError(writeFailure(errno));
  close(file);
}

TnStatus statusOf(sqlite3* database, int result, Purpose purpose) {
  switch (result & 0xff) {
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
    case SQLITE_IOERR: {
      // Of a write that fails while a change is completed SQLite keeps no number.
      const int kept = sqlite3_system_errno(database);
      return failureOf(kept != 0 ? kept : errno, purpose);
    }
    default:  // a page that makes no sense, a table that is not there or looks different
      return TN_STORE_DAMAGED;
  }
}

struct CloseConnection {
  void operator()(sqlite3* database) const { sqlite3_close(database); }
};
struct FinalizeStatement {
  void operator()(sqlite3_stmt* statement) const { sqlite3_finalize(statement); }
};
using Statement = std::unique_ptr<sqlite3_stmt, FinalizeStatement>;

// One open SQLite file. A transaction that is open when it is closed is rolled back.
class Connection {
 public:
  // Writable if the rights allow it, even to read: an interrupted change may have to be undone.
  Connection(const std::string& path, Purpose purpose) : purpose_(purpose) {
    constexpr int kFlags = SQLITE_OPEN_READWRITE | SQLITE_OPEN_NOMUTEX;
    sqlite3* opened = nullptr;
    errno = 0;
    const int result = sqlite3_open_v2(plainName(path).c_str(), &opened, kFlags, nullptr);
    database_.reset(opened);
    check(result);
    sqlite3_busy_timeout(opened, kBusyTimeoutMilliseconds);
  }

  void execute(const char* sql) {
    errno = 0;
    check(sqlite3_exec(database_.get(), sql, nullptr, nullptr, nullptr));
  }

  Statement prepare(std::string_view sql) {
    sqlite3_stmt* statement = nullptr;
    check(sqlite3_prepare_v2(database_.get(), sql.data(), static_cast<int>(sql.size()), &statement,
                             nullptr));
    return Statement(statement);
  }

  // True while there is a row.
  bool step(const Statement& statement) {
    errno = 0;
    const int result = sqlite3_step(statement.get());
    if (result != SQLITE_ROW && result != SQLITE_DONE) check(result);
    return result == SQLITE_ROW;
  }

  void check(int result) const {
    if (result == SQLITE_OK) return;
    throw TuningError(statusOf(database_.get(), result, purpose_));
  }

 private:
  std::unique_ptr<sqlite3, CloseConnection> database_;
  Purpose purpose_;
};

bool isEmpty(Connection& connection) {
  return !connection.step(connection.prepare("SELECT 1 FROM sqlite_schema"));
}

// Part of a store that was cut off or overwritten can read like a store without those settings, and
// the next change would be made to that. A store has few pages; looking at all of them is cheap.
void checkIntact(Connection& connection) {
  const Statement answer = connection.prepare("PRAGMA quick_check(1)");
  const bool told = connection.step(answer);
  const auto* text = reinterpret_cast<const char*>(sqlite3_column_text(answer.get(), 0));
  if (!told || text == nullptr || std::string_view(text) != "ok") {
    throw TuningError(TN_STORE_DAMAGED);
  }
}

int32_t idColumn(const Statement& row) {
  const sqlite3_int64 id = sqlite3_column_int64(row.get(), 0);
  if (!std::in_range<int32_t>(id)) throw TuningError(TN_STORE_DAMAGED);
  return static_cast<int32_t>(id);
}

std::string valueColumn(const Statement& row) {
  const void* bytes = sqlite3_column_blob(row.get(), 1);
  const int size = sqlite3_column_bytes(row.get(), 1);
  if (bytes == nullptr && size > 0) throw TuningError(TN_OUT_OF_MEMORY);
  return bytes == nullptr ? ""
                          : std::string(static_cast<const char*>(bytes), static_cast<size_t>(size));
}

}  // namespace

SqliteStore::SqliteStore(std::string path) : path_(std::move(path)) {}

std::map<int32_t, std::string> SqliteStore::readAll() {
  std::map<int32_t, std::string> values;
  if (!holdsStore(path_)) return values;

  checkPath(path_);
  Connection connection(path_, Purpose::read);
  connection.execute("BEGIN");
  if (isEmpty(connection)) return values;  // its first change was cut off, and is undone now
  checkIntact(connection);
  const Statement rows = connection.prepare("SELECT id, value FROM setting");
  while (connection.step(rows)) values.emplace(idColumn(rows), valueColumn(rows));
  return values;
}

void SqliteStore::write(int32_t settingId, const std::string& value) {
  checkPath(path_);
  if (!holdsStore(path_)) createFile(path_);

  Connection connection(path_, Purpose::write);
  // EXTRA makes the removal of the journal durable too, which is what commits.
  connection.execute("PRAGMA synchronous = EXTRA; BEGIN IMMEDIATE");
  if (isEmpty(connection)) connection.execute(kCreateStore);

  const Statement change = connection.prepare(
      "INSERT INTO setting (id, value) VALUES (?1, ?2)"
      " ON CONFLICT (id) DO UPDATE SET value = excluded.value");
  connection.check(sqlite3_bind_int(change.get(), 1, settingId));
  connection.check(sqlite3_bind_blob64(change.get(), 2, value.data(), value.size(), SQLITE_STATIC));
  connection.step(change);
  connection.execute("COMMIT");
}

}  // namespace tn::registry
