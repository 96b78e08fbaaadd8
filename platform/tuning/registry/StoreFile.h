// The file of a store, looked at before SQLite does: SQLite would wait for a pipe, and complete
// another program's interrupted changes.
//
// Opening and closing the file drops every lock that the process holds on it, so nothing here may
// be called within a transaction on it. Connections hold no locks between two transactions.
#ifndef KNOB_TUNING_REGISTRY_STORE_FILE_H
#define KNOB_TUNING_REGISTRY_STORE_FILE_H

#include <optional>
#include <string>
#include <sys/types.h>

namespace tn::registry {

class StoreFile {
 public:
  // Tells the file at a path from one that took its place.
  struct Identity {
    dev_t device;
    ino_t number;
    bool operator==(const Identity&) const = default;
  };

  // Touches nothing.
  explicit StoreFile(std::string path);

  const std::string& path() const { return path_; }

  // All three throw TuningError with a TN_STORE_... status.

  // No identity when there is no file. Refuses what is not a regular file.
  std::optional<Identity> find() const;
  // Refuses a file whose first bytes are those of another program's or of a newer release's.
  void checkHeader() const;
  // Makes an empty file, which is an empty store. SQLite would make it too, but could not tell
  // afterwards whether the folder or the right to write in it was missing.
  void create() const;

 private:
  std::string path_;
};

}  // namespace tn::registry

#endif
