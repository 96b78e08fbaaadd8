// A store in an SQLite file (StoreLayout.h tells what it looks like).
//
// One connection serves a run. Between two operations it holds no lock, so nobody is kept waiting,
// and what it has read counts only until another process has changed the file. A file that took the
// place of the one that is open is opened instead. What is read is checked as a whole first: all
// pages and the definition of the table.
//
// The first operation that finds the file locked waits ten seconds for it. Once that was in vain,
// later ones do not wait until a value could be written.
#ifndef KNOB_TUNING_REGISTRY_SQLITE_STORE_H
#define KNOB_TUNING_REGISTRY_SQLITE_STORE_H

#include <chrono>
#include <optional>

#include "tuning/registry/SqliteConnection.h"
#include "tuning/registry/Store.h"
#include "tuning/registry/StoreFile.h"

namespace tn::registry {

class SqliteStore : public Store {
 public:
  // Both touch no file.
  // The store in the file `path`; its folder must be there by the time a value is written.
  explicit SqliteStore(std::string path);
  // The store of a user who names none. Its place is looked for when it is first used (else
  // TN_NO_HOME_FOLDER); its folders are made when the first value is written.
  SqliteStore() = default;

  // Besides the common conditions: a change that was cut off by the end of its process is undone
  // first, which needs the right to write (else TN_STORE_NOT_WRITABLE).
  std::map<int32_t, std::string> readAll() override;
  // TN_STORE_UNSYNCED: the value is kept, but the system could not make sure that it lasts.
  void write(int32_t settingId, const std::string& value) override;

 private:
  using Values = std::map<int32_t, std::string>;

  template <typename Operation>
  auto attempt(Operation&& operation);
  const StoreFile& file();
  // To the file that lies at the path now; null if there is none.
  SqliteConnection* connection();
  SqliteConnection& connectionToNewFile();
  void disconnect() noexcept;
  void refresh(SqliteConnection& connection);

  static constexpr std::chrono::milliseconds kPatience{10'000};

  bool makesFolder_ = true;
  std::optional<StoreFile> file_;
  std::chrono::milliseconds patience_ = kPatience;

  std::optional<SqliteConnection> connection_;
  std::optional<StoreFile::Identity> opened_;
  std::optional<Values> values_;  // what the file holds while its version is the one below
  int64_t version_ = 0;
};

}  // namespace tn::registry

#endif
