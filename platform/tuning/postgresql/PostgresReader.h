// Everything of an engine of PostgreSQL settings but how a change is stored: what is read comes
// from one snapshot of a server's settings, taken at connecting, and a new value is checked against
// it. An engine made of this says where a checked value goes.
#ifndef KNOB_POSTGRESQL_POSTGRES_READER_H
#define KNOB_POSTGRESQL_POSTGRES_READER_H

#include <cstdint>
#include <string>
#include <vector>

#include "tuning/Engine.h"
#include "tuning/postgresql/Connection.h"
#include "tuning/postgresql/NewValue.h"
#include "tuning/postgresql/Snapshot.h"

namespace tn::postgresql {

class PostgresReader : public Engine {
 protected:
  PostgresReader(const char* server, const char* user, const char* password);

  // Makes the setting have the value, which is no more than checked against type, limits and
  // choices. Returns at once when it has the value already; throws why it cannot have it.
  virtual void store(Setting& setting, const NewValue& value) = 0;
  // Called before a current value, or what is told of one, is read: what this run has changed has
  // to be seen.
  virtual void beforeReading() = 0;

  Connection& connection() { return connection_; }
  Snapshot& snapshot() { return snapshot_; }
  // True: no change of the setting can or may be stored.
  static bool isReadOnly(const Setting& setting);
  // Takes the snapshot anew. What was had from the one before is gone.
  void readAgain();

  std::vector<int32_t> categories() override;
  CategoryInfo category(int32_t categoryId) override;
  std::vector<int32_t> settings(int32_t categoryId) override;

  SettingInfo setting(int32_t settingId) override;
  bool isAvailable(int32_t settingId) override;
  std::string description(int32_t settingId) override;

  bool booleanValue(int32_t settingId, Selector selector) override;
  int32_t integerValue(int32_t settingId, Selector selector) override;
  std::string stringValue(int32_t settingId, Selector selector) override;
  std::vector<int32_t> selectionValue(int32_t settingId, Selector selector) override;

  BooleanWords booleanWords(int32_t settingId) override;
  Limits limits(int32_t settingId) override;
  std::vector<int32_t> selectionItems(int32_t settingId) override;
  std::string selectionText(int32_t settingId, int32_t item) override;

  void setBoolean(int32_t settingId, bool value) override;
  void setInteger(int32_t settingId, int64_t value) override;
  void setString(int32_t settingId, const std::string& value) override;
  void setSelection(int32_t settingId, const std::vector<int32_t>& items) override;

 private:
  const SettingCategory& knownCategory(int32_t categoryId);
  const Setting& known(int32_t settingId);
  Setting& known(int32_t settingId, TnValueType type);
  const std::string& value(int32_t settingId, TnValueType type, Selector selector);

  Connection connection_;
  Snapshot snapshot_;
};

}  // namespace tn::postgresql

#endif
