// The engine of a running PostgreSQL server. Reads come from one snapshot of the server's settings,
// taken at connecting; changes are made with ALTER SYSTEM and checked by the server.
//
// Changes are stored at once and take effect together: when the engine is left, or when a value is
// read after a change, the server is made to read its configuration again, and this program waits
// until it has, 5 s at most.
#ifndef KNOB_POSTGRESQL_POSTGRES_ENGINE_H
#define KNOB_POSTGRESQL_POSTGRES_ENGINE_H

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "tuning/Engine.h"
#include "tuning/postgresql/Connection.h"
#include "tuning/postgresql/ServerFiles.h"
#include "tuning/postgresql/Snapshot.h"

namespace tn::postgresql {

class PostgresEngine final : public Engine {
 public:
  PostgresEngine(const char* server, const char* user, const char* password);

 protected:
  void leave() override;

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
  using Texts = std::vector<std::string>;

  const SettingCategory& knownCategory(int32_t categoryId);
  const Setting& known(int32_t settingId);
  Setting& known(int32_t settingId, TnValueType type);
  const std::string& value(int32_t settingId, TnValueType type, Selector selector);

  void setList(Setting& setting, const std::string& value);
  void emptyList(Setting& setting);
  void change(Setting& setting, const std::string& wanted, const Texts& values);
  void checkChangeable(const Setting& setting);
  void write(Setting& setting, const std::string& wanted, const std::string& statement);
  bool isCurrent(const Setting& setting, const std::string& wanted);
  bool resetLeavesItEmpty(const Setting& setting);
  ServerFiles& files();
  void takeEffect();

  Connection connection_;
  Snapshot snapshot_;
  std::optional<ServerFiles> files_;  // read before the first value is judged
  bool changed_ = false;              // something was written that is not in effect yet
};

}  // namespace tn::postgresql

#endif
