// What the file of a store looks like: an SQLite file in rollback-journal mode, so that reading
// needs no right to write anything, with one table that maps a setting id to the bytes of its
// value. An empty file is an empty store: a process that ends before its first change is complete
// leaves one.
#ifndef KNOB_TUNING_REGISTRY_STORE_LAYOUT_H
#define KNOB_TUNING_REGISTRY_STORE_LAYOUT_H

#include <cstdint>

namespace tn::registry {

// SQLite's application_id: tells a store from any other SQLite file.
inline constexpr uint32_t kApplicationId = 0x6b6e6f62;
// SQLite's user_version. A higher one was written by a newer release.
inline constexpr uint32_t kLayoutVersion = 1;

inline constexpr char kMarkStore[] = "PRAGMA application_id = 0x6b6e6f62; PRAGMA user_version = 1";
// A store holds this one table and nothing else, defined by this very text.
inline constexpr char kCreateTable[] =
    "CREATE TABLE setting (id INTEGER PRIMARY KEY, value BLOB NOT NULL)";

}  // namespace tn::registry

#endif
