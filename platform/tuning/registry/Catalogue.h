// What settings the local engine has: constant data, compiled in. It knows nothing of where changed
// values are kept.
//
// Values are held in their canonical text form, the same in which a store keeps them:
//   boolean    "1" or "0"
//   integer    decimal
//   string     the text
//   selection  item positions in decimal with one blank between them, empty for none
#ifndef KNOB_TUNING_REGISTRY_CATALOGUE_H
#define KNOB_TUNING_REGISTRY_CATALOGUE_H

#include <cstdint>
#include <span>
#include <string_view>

#include "service/TuningInterface.h"

namespace tn::registry {

enum class Side { client, server };

struct CatalogueSetting {
  int32_t id;
  TnValueType type;
  Side side;
  bool available;
  std::string_view name;
  std::string_view defaultValue;  // canonical
  // Integers: the limits, the maximum possibly symbolic. Strings: the shortest and longest text
  // in bytes (the shortest is 1 but for the setting that may be empty). Otherwise 0.
  int32_t minimum;
  int32_t maximum;
  // Booleans: the word for true, then the word for false. Selections: the items. Otherwise empty.
  std::span<const std::string_view> words;
  std::string_view description;  // one line
};

struct CatalogueCategory {
  int32_t id;
  std::string_view name;
  std::span<const CatalogueSetting> settings;
};

class Catalogue {
 public:
  // In display order.
  static std::span<const CatalogueCategory> categories();
  // Null for an id that does not exist.
  static const CatalogueCategory* category(int32_t categoryId);
  static const CatalogueSetting* setting(int32_t settingId);
};

}  // namespace tn::registry

#endif
