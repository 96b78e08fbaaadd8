// The engine of a running PostgreSQL server. Reads come from one snapshot of the server's settings,
// taken at connecting; changes are made with ALTER SYSTEM and checked by the server.
//
// Changes are stored at once and take effect together: when the engine is left, or when a value is
// read after a change, the server is made to read its configuration again, and this program waits
// until it has, 5 s at most.
#ifndef KNOB_POSTGRESQL_POSTGRES_ENGINE_H
#define KNOB_POSTGRESQL_POSTGRES_ENGINE_H

#include <optional>
#include <string>

#include "tuning/postgresql/PostgresReader.h"
#include "tuning/postgresql/ServerFiles.h"

namespace tn::postgresql {

class PostgresEngine final : public PostgresReader {
 public:
  PostgresEngine(const char* server, const char* user, const char* password);

 protected:
  void leave() override;
  void store(Setting& setting, const NewValue& value) override;
  void beforeReading() override;

 private:
  void checkChangeable(const Setting& setting);
  std::string statement(const Setting& setting, const NewValue& value);
  bool isCurrent(const Setting& setting, const std::string& wanted);
  bool resetLeavesItEmpty(const Setting& setting);
  ServerFiles& files();
  void takeEffect();

  std::optional<ServerFiles> files_;  // read before the first value is judged
  bool changed_ = false;              // something was written that is not in effect yet
};

}  // namespace tn::postgresql

#endif
