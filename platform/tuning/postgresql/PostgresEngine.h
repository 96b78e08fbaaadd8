// The engine of a running PostgreSQL server. Reads come from one snapshot of the server's settings,
// taken at connecting; changes are made with ALTER SYSTEM and checked by the server.
//
// A change is stored at once. The first one of a run is made to take effect before it is done: the
// server has to load its configuration, and this program waits until it has, 5 s at most, and looks
// whether the value is in force (or waits for a restart). Later changes take effect together, in
// the same way, when the engine is left or when a value is read.
#ifndef KNOB_POSTGRESQL_POSTGRES_ENGINE_H
#define KNOB_POSTGRESQL_POSTGRES_ENGINE_H

#include <optional>
#include <string>
#include <vector>

#include "tuning/postgresql/PostgresReader.h"
#include "tuning/postgresql/Result.h"
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
  void write(const Setting& setting, const std::string& statement);
  bool mayChange(const Setting& setting);
  bool resetLeavesItEmpty(const Setting& setting);
  bool resetGivesBackWhatRuns(const Setting& setting, const NewValue& value);
  ServerFiles& files();
  void takeEffect();
  bool load();
  void takeEffectOverNewConnection();
  bool isInForce(const Setting& setting, const Result& rows);

  std::optional<ServerFiles> files_;  // read before the first value is judged
  std::vector<Setting*> unloaded_;    // written, and not known to be loaded by the server
  bool begun_ = false;                // a change of this run was stored
  bool stale_ = false;                // the snapshot is of before a change
};

}  // namespace tn::postgresql

#endif
