#include "tuning/patroni/Configuration.h"

#include <algorithm>

#include "tuning/Characters.h"
#include "tuning/postgresql/ValueText.h"

namespace tn::patroni {

using http::Json;

const Json& Configuration::parameters() const {
  return http::member(http::member(json_, "postgresql"), "parameters");
}

// Somebody may have written the name in letters of another case.
Json::const_iterator Configuration::find(std::string_view settingName) const {
  const Json& all = parameters();
  if (!all.is_object()) return all.end();
  for (auto entry = all.begin(); entry != all.end(); ++entry) {
    if (isSameIgnoringCase(entry.key(), settingName)) return entry;
  }
  return all.end();
}

Json Configuration::stored(std::string_view settingName) const {
  const auto entry = find(settingName);
  return entry == parameters().end() ? Json() : *entry;
}

std::optional<std::string> Configuration::parameter(std::string_view settingName) const {
  const Json value = stored(settingName);
  if (value.is_null()) return std::nullopt;
  return value.is_string() ? value.get<std::string>() : value.dump();
}

bool Configuration::isSynchronous() const {
  const Json& mode = http::member(json_, "synchronous_mode");
  if (mode.is_boolean()) return mode.get<bool>();
  return mode.is_string() && postgresql::ValueText::boolean(mode.get<std::string>()).value_or(true);
}

Json Configuration::change(std::string_view settingName, Json value) const {
  const auto entry = find(settingName);
  const std::string name =
      entry == parameters().end() ? std::string(settingName) : std::string(entry.key());
  return {{"postgresql", {{"parameters", {{name, std::move(value)}}}}}};
}

}  // namespace tn::patroni
