// The configuration of a cluster, as it stands in Patroni's distributed store: what the members'
// Patroni writes into the configuration of their servers.
#ifndef KNOB_PATRONI_CONFIGURATION_H
#define KNOB_PATRONI_CONFIGURATION_H

#include <optional>
#include <string>
#include <string_view>

#include "tuning/http/Json.h"

namespace tn::patroni {

class Configuration {
 public:
  explicit Configuration(http::Json json) : json_(std::move(json)) {}

  // What it gives a setting, as a configuration file would hold it.
  std::optional<std::string> parameter(std::string_view settingName) const;
  // True: Patroni sets synchronous_standby_names itself.
  bool isSynchronous() const;

  // The change, for the REST API, that gives a setting a value; null takes the setting out.
  http::Json change(std::string_view settingName, http::Json value) const;
  // What change() has to give back to make the setting as it is here.
  http::Json stored(std::string_view settingName) const;

 private:
  const http::Json& parameters() const;
  http::Json::const_iterator find(std::string_view settingName) const;

  http::Json json_;
};

}  // namespace tn::patroni

#endif
