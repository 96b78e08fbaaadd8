// A store in an SQLite file: one table that maps a setting id to the bytes of its value.
//
//   application_id  0x6b6e6f62: tells a store from any other SQLite file
//   user_version    1: the layout; a higher one was written by a newer release
//   setting         (id INTEGER PRIMARY KEY, value BLOB NOT NULL)
//
// The file is kept in rollback-journal mode, so that reading needs no right to write anything.
// Every operation opens the file anew and closes it: a reader sees what other processes have
// written, and nobody is kept waiting between two operations. An empty file is an empty store: a
// process that ends before its first change is complete leaves one.
#ifndef KNOB_TUNING_REGISTRY_SQLITE_STORE_H
#define KNOB_TUNING_REGISTRY_SQLITE_STORE_H

#include "tuning/registry/Store.h"

namespace tn::registry {

class SqliteStore : public Store {
 public:
  // Touches no file. The folder of `path` must be there by the time a value is written.
  explicit SqliteStore(std::string path);

  // Besides the common conditions: a change that was cut off by the end of its process is undone
  // first, which needs the right to write (else TN_STORE_NOT_WRITABLE).
  std::map<int32_t, std::string> readAll() override;
  // Waits up to ten seconds for other writers, then TN_STORE_BUSY.
  void write(int32_t settingId, const std::string& value) override;

 private:
  std::string path_;
};

}  // namespace tn::registry

#endif
