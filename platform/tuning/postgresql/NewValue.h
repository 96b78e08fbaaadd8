// A value that somebody wants a setting to have, checked against the setting's type, limits and
// choices as far as that needs no server: what would be shown, and what would be stored.
#ifndef KNOB_POSTGRESQL_NEW_VALUE_H
#define KNOB_POSTGRESQL_NEW_VALUE_H

#include <cstdint>
#include <string>
#include <vector>

#include "tuning/postgresql/Setting.h"

namespace tn::postgresql {

class NewValue {
 public:
  // Each throws the status that tells what is wrong with the value.
  static NewValue ofBoolean(bool value);
  static NewValue ofInteger(const Setting& setting, int64_t value);
  static NewValue ofText(const Setting& setting, const std::string& value);
  static NewValue ofChoice(const Setting& setting, const std::vector<int32_t>& items);

  // As the setting shows it once it has the value.
  const std::string& shown() const { return shown_; }
  // What ALTER SYSTEM is given: the names of a list one by one, else one text.
  const std::vector<std::string>& parts() const { return parts_; }
  // The same as one text, as a configuration file holds it.
  std::string text() const;
  bool isEmptyList() const { return parts_.empty(); }

 private:
  static NewValue ofOneText(const Setting& setting, const std::string& list);
  NewValue(std::string shown, std::vector<std::string> parts, bool list);

  std::string shown_;
  std::vector<std::string> parts_;
  bool list_;
};

}  // namespace tn::postgresql

#endif
