#include "tuning/registry/SqliteStore.h"

#include <string_view>
#include <utility>

#include "tuning/TuningError.h"
#include "tuning/registry/DefaultStorePath.h"
#include "tuning/registry/StoreLayout.h"

namespace tn::registry {
namespace {

using Statement = SqliteConnection::Statement;

void require(bool intact) {
  if (!intact) throw TuningError(TN_STORE_DAMAGED);
}

// The bytes of a text or blob, valid until the statement is stepped.
std::string_view bytesOf(const Statement& row, int column) {
  const void* const bytes = sqlite3_column_blob(row.get(), column);
  const int size = sqlite3_column_bytes(row.get(), column);
  if (bytes == nullptr && size > 0) throw TuningError(TN_OUT_OF_MEMORY);
  return {static_cast<const char*>(bytes), static_cast<size_t>(size)};
}

// Whatever else a file defines (a view in the place of the table, a trigger) could answer for it.
void checkSchema(SqliteConnection& connection) {
  const Statement row = connection.prepare("SELECT type, name, sql FROM sqlite_schema");
  require(connection.step(row) && bytesOf(row, 0) == "table" && bytesOf(row, 1) == "setting" &&
          bytesOf(row, 2) == kCreateTable && !connection.step(row));
}

// Part of a store that was cut off or overwritten can read like a store without those settings, and
// the next change would be made to that. A store has few pages; looking at all of them is cheap.
void checkPages(SqliteConnection& connection) {
  const Statement answer = connection.prepare("PRAGMA quick_check(1)");
  require(connection.step(answer) && bytesOf(answer, 0) == "ok");
}

int32_t idOf(const Statement& row) {
  const sqlite3_int64 id = sqlite3_column_int64(row.get(), 0);
  require(std::in_range<int32_t>(id));
  return static_cast<int32_t>(id);
}

}  // namespace

SqliteStore::SqliteStore(std::string path) : makesFolder_(false), file_(std::move(path)) {}

// After a failure the file is opened and checked anew.
template <typename Operation>
auto SqliteStore::attempt(Operation&& operation) {
  try {
    return operation();
  } catch (const TuningError& error) {
    if (error.status() == TN_STORE_BUSY) patience_ = std::chrono::milliseconds(0);
    disconnect();
    throw;
  } catch (...) {
    disconnect();
    throw;
  }
}

std::map<int32_t, std::string> SqliteStore::readAll() {
  return attempt([this]() -> Values {
    SqliteConnection* const current = connection();
    if (current == nullptr) return {};
    current->execute("BEGIN");
    refresh(*current);
    current->commit();
    return *values_;
  });
}

void SqliteStore::write(int32_t settingId, const std::string& value) {
  attempt([&] {
    SqliteConnection* const current = connection();
    SqliteConnection& open = current != nullptr ? *current : connectionToNewFile();
    // EXTRA makes the removal of the journal durable too, which is what commits.
    open.execute("PRAGMA synchronous = EXTRA; BEGIN IMMEDIATE");
    refresh(open);
    if (open.fileSize() == 0) {
      open.execute(kCreateTable);
      open.execute(kMarkStore);
    }
    const Statement change = open.prepare(
        "INSERT INTO setting (id, value) VALUES (?1, ?2)"
        " ON CONFLICT (id) DO UPDATE SET value = excluded.value");
    open.check(sqlite3_bind_int(change.get(), 1, settingId));
    open.check(sqlite3_bind_blob64(change.get(), 2, value.data(), value.size(), SQLITE_STATIC));
    open.step(change);
    (*values_)[settingId] = value;
    open.commit();  // nothing that can fail comes after it
    patience_ = kPatience;
    open.setPatience(patience_);
  });
}

const StoreFile& SqliteStore::file() {
  if (!file_) file_.emplace(defaultStorePath());
  return *file_;
}

SqliteConnection* SqliteStore::connection() {
  const std::optional<StoreFile::Identity> found = file().find();
  if (found != opened_) disconnect();
  if (found && !connection_) {
    file().checkHeader();
    SqliteConnection::checkPath(file().path());
    connection_.emplace(file().path(), patience_);
    opened_ = found;
  }
  return connection_ ? &*connection_ : nullptr;
}

SqliteConnection& SqliteStore::connectionToNewFile() {
  SqliteConnection::checkPath(file().path());
  if (makesFolder_) makeFolderOf(file().path());
  file().create();
  if (connection() == nullptr) throw TuningError(TN_STORE_NO_FOLDER);  // it was removed at once
  return *connection_;
}

void SqliteStore::disconnect() noexcept {
  values_.reset();
  opened_.reset();
  connection_.reset();
}

// Within a transaction: so nobody changes the file meanwhile.
void SqliteStore::refresh(SqliteConnection& connection) {
  const int64_t version = connection.number("PRAGMA data_version");
  if (values_ && version == version_) return;
  Values values;
  if (connection.fileSize() > 0) {
    checkSchema(connection);
    checkPages(connection);
    const Statement rows = connection.prepare("SELECT id, value FROM setting");
    while (connection.step(rows)) values.emplace(idOf(rows), bytesOf(rows, 1));
  }
  values_ = std::move(values);
  version_ = version;
}

}  // namespace tn::registry
