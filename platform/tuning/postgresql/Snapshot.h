// All settings of a server at one moment, read with one query, with everything that is derived from
// it: ids, categories, types and the values that the server - not this program's own session - has.
//
// A session starts with the server's values and may get others from its role, its database or its
// client. Where that has happened the server's value is looked up in its configuration files, if
// the role may read them, and is the default otherwise.
#ifndef KNOB_POSTGRESQL_SNAPSHOT_H
#define KNOB_POSTGRESQL_SNAPSHOT_H

#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "tuning/postgresql/Connection.h"
#include "tuning/postgresql/Result.h"
#include "tuning/postgresql/Setting.h"
#include "tuning/postgresql/SettingGroups.h"

namespace tn::postgresql {

class Snapshot {
 public:
  explicit Snapshot(Connection& connection);

  // In display order, cut so that each keeps to the capacities of the tuning interface.
  const std::vector<SettingCategory>& categories();
  // Null for an id that does not exist here. What is found stays where it is as long as the
  // snapshot lives.
  const SettingCategory* category(int32_t categoryId);
  Setting* setting(int32_t settingId);
  bool contains(int32_t settingId) const;
  bool hasName(std::string_view name) const { return row(name).has_value(); }

  // True: the server refuses every change by ALTER SYSTEM.
  bool alterSystemIsOff() const;
  // True: the server was started by Patroni, a manager of clusters that gives a fixed group of
  // settings on the command line of every server.
  bool isOfPatroni() const;
  // True: a value of this source, as pg_settings names it, is the session's own.
  static bool isOfSession(std::string_view source);

  // A value as it is shown, whether the server or a person wrote the text. Not there when the text
  // is no value of the setting.
  static std::optional<std::string> shown(std::string_view text, const Setting& setting);
  // True when both texts, as they are shown, stand for one value.
  static bool same(const std::string& a, const std::string& b, const Setting& setting);
  // True when a text that the server or a person wrote stands for the value that is shown so.
  static bool means(std::string_view text, const std::string& wanted, const Setting& setting);

 private:
  struct Place {
    int32_t id;
    int row;
  };
  const Place* place(int32_t settingId) const;
  std::optional<int> row(std::string_view name) const;
  std::string_view source(int row) const;
  bool isHidden(int row) const { return isOfSession(source(row)); }
  void lookUpHidden(Connection& connection, const std::vector<int>& hidden);
  std::string asTheServerTells(Connection& connection, int row, std::string_view text) const;
  Setting build(const Place& place) const;
  void readType(Setting& setting, int row) const;
  static void readLimits(Setting& setting);
  void readValues(Setting& setting, int row) const;

  Result rows_;
  int version_;
  std::string encodingSource_;
  std::vector<Place> places_;  // by id
  // What the files and the command line give the settings whose value a session's own hides.
  std::map<int, std::optional<std::string>> hidden_;
  std::set<int> hiddenOnCommandLine_;
  bool hiddenAreKnown_ = false;

  // Made when they are first asked for: most runs look at one setting.
  std::map<int32_t, Setting> settings_;
  std::vector<SettingCategory> categories_;
};

}  // namespace tn::postgresql

#endif
