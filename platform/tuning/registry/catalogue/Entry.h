// How the tables of the catalogue write one setting. Every kind of value has a function of its own
// that takes only what that kind needs; all of them are constant expressions, so that the tables
// cost nothing at start-up. A setting belongs to the server and is available unless it is wrapped
// in onClient() or unavailable().
//
// The last argument is always the description: plain ASCII on one line, without double quotes,
// backslashes and percent signs. The description of a setting that is read only when the engine
// starts ends with the sentence "Takes effect after a restart.".
#ifndef KNOB_CATALOGUE_ENTRY_H
#define KNOB_CATALOGUE_ENTRY_H

#include <cstdint>
#include <span>
#include <string_view>

#include "tuning/registry/Catalogue.h"

namespace tn::registry::catalogue {

// The word for true, then the word for false.
using Words = std::string_view[2];

inline constexpr Words kOnOff = {"on", "off"};
inline constexpr Words kYesNo = {"yes", "no"};
inline constexpr Words kEnabledDisabled = {"enabled", "disabled"};
inline constexpr Words kAllowRefuse = {"allow", "refuse"};
inline constexpr Words kHideShow = {"hide", "show"};

constexpr CatalogueSetting entry(int32_t id, TnValueType type, std::string_view name,
                                 std::string_view defaultValue, int32_t minimum, int32_t maximum,
                                 std::span<const std::string_view> words,
                                 std::string_view description) {
  return {id, type, Side::server, true, name, defaultValue, minimum, maximum, words, description};
}

constexpr CatalogueSetting boolean(int32_t id, std::string_view name, bool defaultValue,
                                   const Words& words, std::string_view description) {
  return entry(id, TN_TYPE_BOOLEAN, name, defaultValue ? "1" : "0", 0, 0, words, description);
}

// The maximum may be one of the symbolic maxima of the tuning interface.
constexpr CatalogueSetting integer(int32_t id, std::string_view name, std::string_view defaultValue,
                                   int32_t minimum, int32_t maximum, std::string_view description) {
  return entry(id, TN_TYPE_INTEGER, name, defaultValue, minimum, maximum, {}, description);
}

// A text of one byte up to the longest number of bytes.
constexpr CatalogueSetting text(int32_t id, std::string_view name, std::string_view defaultValue,
                                int32_t longest, std::string_view description) {
  return entry(id, TN_TYPE_STRING, name, defaultValue, 1, longest, {}, description);
}

constexpr CatalogueSetting textOrNothing(int32_t id, std::string_view name,
                                         std::string_view defaultValue, int32_t longest,
                                         std::string_view description) {
  return entry(id, TN_TYPE_STRING, name, defaultValue, 0, longest, {}, description);
}

// The default is the position of one item, counted from 0.
constexpr CatalogueSetting oneOf(int32_t id, std::string_view name, std::string_view defaultItem,
                                 std::span<const std::string_view> items,
                                 std::string_view description) {
  return entry(id, TN_TYPE_SINGLE_SELECTION, name, defaultItem, 0, 0, items, description);
}

// The default is a list of positions. It is never empty: a settings file cannot carry an empty
// value, so a setting with an empty default could not be restored from an export.
constexpr CatalogueSetting anyOf(int32_t id, std::string_view name, std::string_view defaultItems,
                                 std::span<const std::string_view> items,
                                 std::string_view description) {
  return entry(id, TN_TYPE_MULTIPLE_SELECTION, name, defaultItems, 0, 0, items, description);
}

constexpr CatalogueSetting onClient(CatalogueSetting setting) {
  setting.side = Side::client;
  return setting;
}

// Known, but this build of the engine has no use for it.
constexpr CatalogueSetting unavailable(CatalogueSetting setting) {
  setting.available = false;
  return setting;
}

}  // namespace tn::registry::catalogue

#endif
