// What settings there are: names, types, limits, defaults and descriptions, constant from the
// moment that the catalogue is made. It knows nothing of where changed values are kept, so any
// store can serve it.
//
// Values are held in their canonical text form, the same in which a store keeps them:
//   boolean    "1" or "0"
//   integer    decimal
//   string     the text
//   selection  item positions in decimal with one blank between them, empty for none
#ifndef KNOB_TUNING_REGISTRY_CATALOGUE_H
#define KNOB_TUNING_REGISTRY_CATALOGUE_H

#include <cstdint>
#include <memory>
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
  // The settings that are compiled in. Nothing is allocated or built for them at run time.
  static std::shared_ptr<const Catalogue> compiledIn();

  // Over tables that live at least as long as the catalogue. Ids are unique, `settingsById` holds
  // every setting of the categories by ascending id.
  constexpr Catalogue(std::span<const CatalogueCategory> categories,
                      std::span<const CatalogueSetting* const> settingsById)
      : categories_(categories), settingsById_(settingsById) {}

  // In display order.
  std::span<const CatalogueCategory> categories() const { return categories_; }
  // Null for an id that does not exist.
  const CatalogueCategory* category(int32_t categoryId) const;
  const CatalogueSetting* setting(int32_t settingId) const;

 private:
  std::span<const CatalogueCategory> categories_;
  std::span<const CatalogueSetting* const> settingsById_;
};

}  // namespace tn::registry

#endif
