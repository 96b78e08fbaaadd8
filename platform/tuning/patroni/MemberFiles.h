// What the configuration files of one member's server say: what its Patroni has written, and what
// wins over that. Texts are as they stand in the files.
#ifndef KNOB_PATRONI_MEMBER_FILES_H
#define KNOB_PATRONI_MEMBER_FILES_H

#include <chrono>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "tuning/postgresql/Connection.h"

namespace tn::patroni {

class MemberFiles {
 public:
  // Nothing when the deadline passes. Throws as Connection::query does, and
  // TN_PATRONI_SOURCES_HIDDEN for a role that may not look.
  static std::optional<MemberFiles> read(postgresql::Connection& connection,
                                         std::chrono::steady_clock::time_point deadline);

  struct Entry {
    std::string name;
    std::string text;
    bool failed = false;      // the server cannot use the text, or not before a restart
    bool ofPatroni = false;   // stands in the file that Patroni writes
    bool overriding = false;  // stands in the one that ALTER SYSTEM writes
  };
  // Null when the file does not name the setting.
  const Entry* byPatroni(std::string_view settingName) const;
  // Of all files the entry that counts; null when none names the setting.
  const Entry* lastOf(std::string_view settingName) const;
  bool isOverridden(std::string_view settingName) const;

 private:
  explicit MemberFiles(const postgresql::Result& rows);
  template <typename Condition>
  const Entry* last(std::string_view settingName, Condition condition) const;

  std::vector<Entry> entries_{};
};

}  // namespace tn::patroni

#endif
