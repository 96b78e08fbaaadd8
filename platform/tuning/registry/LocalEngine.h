// The engine of this machine: the settings of a catalogue with the values of a store. It decides
// which values a setting takes; the catalogue only says what they must be like, the store only
// keeps them.
//
// Values are read from the store all at once, before each change, and when one is asked for after a
// change. Reading a kept value that the catalogue does not allow throws TN_VALUE_OUTSIDE_CATALOGUE:
// the catalogue was tightened since, or something else wrote into the store. Setting the setting
// anew repairs it. Kept values of settings that the catalogue does not know are left alone.
#ifndef KNOB_TUNING_REGISTRY_LOCAL_ENGINE_H
#define KNOB_TUNING_REGISTRY_LOCAL_ENGINE_H

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "tuning/Engine.h"
#include "tuning/registry/Catalogue.h"
#include "tuning/registry/Store.h"

namespace tn::registry {

class LocalEngine final : public Engine {
 public:
  LocalEngine(std::shared_ptr<const Catalogue> catalogue, std::unique_ptr<Store> store);

  // Reads the values, so that a store that cannot be read is found before anything is asked for.
  // An engine that is not connected reads them when the first one is asked for.
  void connect();

 protected:
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

  // Selected items are kept in the order given.
  void setBoolean(int32_t settingId, bool value) override;
  void setInteger(int32_t settingId, int64_t value) override;
  void setString(int32_t settingId, const std::string& value) override;
  void setSelection(int32_t settingId, const std::vector<int32_t>& items) override;

 private:
  using Values = std::map<int32_t, std::string>;

  // These throw the status that tells why there is no such thing.
  const CatalogueCategory& knownCategory(int32_t categoryId) const;
  const CatalogueSetting& knownSetting(int32_t settingId) const;
  // Both kinds of selection are read and written alike: either stands for the two.
  const CatalogueSetting& settingOfType(int32_t settingId, TnValueType type) const;
  const CatalogueSetting& usableSetting(int32_t settingId, TnValueType type) const;

  const Values& values();
  // In canonical form, checked.
  std::string_view value(const CatalogueSetting& setting, Selector selector);
  void keep(const CatalogueSetting& setting, const std::string& canonical);

  std::shared_ptr<const Catalogue> catalogue_;
  std::unique_ptr<Store> store_;
  std::optional<Values> values_;  // as the store held them last
};

}  // namespace tn::registry

#endif
