// Reading JSON that somebody else wrote: what is missing or of another type reads as nothing, and
// nothing throws.
#ifndef KNOB_HTTP_JSON_H
#define KNOB_HTTP_JSON_H

#include <nlohmann/json.hpp>
#include <string>
#include <string_view>

namespace tn::http {

using Json = nlohmann::json;

// is_discarded() for text that is not JSON, or nested so deep that copying it, which the library
// does level by level, could exhaust the stack.
inline Json parseJson(std::string_view text) {
  constexpr int kDeepest = 100;
  bool tooDeep = false;
  const auto keep = [&tooDeep](int depth, Json::parse_event_t, const Json&) {
    tooDeep = tooDeep || depth > kDeepest;
    return !tooDeep;
  };
  Json json = Json::parse(text, keep, false);
  if (tooDeep) return Json::value_t::discarded;
  return json;
}

// For a request. Bytes that are not UTF-8 become replacement characters.
inline std::string toText(const Json& json) {
  return json.dump(-1, ' ', false, Json::error_handler_t::replace);
}

// Null when there is no such member, or no object.
inline const Json& member(const Json& object, const char* name) {
  static const Json nothing;
  const auto found = object.find(name);
  return found == object.end() ? nothing : *found;
}

// Empty when there is no such text.
inline std::string textMember(const Json& object, const char* name) {
  const auto* text = member(object, name).get_ptr<const std::string*>();
  return text == nullptr ? std::string() : *text;
}

}  // namespace tn::http

#endif
