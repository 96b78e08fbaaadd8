// One open SQLite file: SQLite's C functions with their results turned into TuningError. Knows
// nothing of what the file holds.
//
// Every operation that takes locks waits for other processes up to the patience given, then throws
// TN_STORE_BUSY. A transaction that is open when the connection is closed is rolled back.
#ifndef KNOB_TUNING_REGISTRY_SQLITE_CONNECTION_H
#define KNOB_TUNING_REGISTRY_SQLITE_CONNECTION_H

#include <chrono>
#include <cstdint>
#include <memory>
#include <sqlite3.h>
#include <string>
#include <string_view>

#include "service/TuningInterface.h"

namespace tn::registry {

class SqliteConnection {
 public:
  struct Finalize {
    void operator()(sqlite3_stmt* statement) const { sqlite3_finalize(statement); }
  };
  using Statement = std::unique_ptr<sqlite3_stmt, Finalize>;

  // SQLite takes shorter paths than the system does. It would say so without a reason, and only
  // after the file was made. Throws TN_STORE_PATH_UNUSABLE.
  static void checkPath(const std::string& path);

  // Opens an existing file. Writable if the rights allow it, even to read: an interrupted change
  // may have to be undone.
  SqliteConnection(const std::string& path, std::chrono::milliseconds patience);

  void setPatience(std::chrono::milliseconds patience) noexcept;

  // One or more statements without results.
  void execute(const char* sql);
  // TN_STORE_UNSYNCED: the change is made, but may not last.
  void commit();
  // The number that the one row of the statement holds.
  int64_t number(std::string_view sql);

  Statement prepare(std::string_view sql);
  // True while there is a row.
  bool step(const Statement& statement);
  // Throws what a result other than SQLITE_OK means.
  void check(int result);

  // In bytes, as the open file has it now.
  int64_t fileSize();

 private:
  struct Close {
    void operator()(sqlite3* database) const { sqlite3_close(database); }
  };

  TnStatus statusOf(int result);
  TnStatus systemFailure(int result);

  std::unique_ptr<sqlite3, Close> database_;
};

}  // namespace tn::registry

#endif
