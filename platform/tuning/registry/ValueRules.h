// Which values a setting of the catalogue takes. Values are in canonical form (see Catalogue.h), so
// one set of rules serves what a caller wants to set and what a store has kept.
#ifndef KNOB_TUNING_REGISTRY_VALUE_RULES_H
#define KNOB_TUNING_REGISTRY_VALUE_RULES_H

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "tuning/registry/Catalogue.h"

namespace tn::registry {

// TN_SUCCESS, or the status that tells why the setting does not take the value.
TnStatus refusal(const CatalogueSetting& setting, std::string_view canonical);

// The largest value of an integer. A symbolic maximum stands for what the machine has, which the
// engine only finds out when it uses the value: it allows all that the type can hold.
int32_t largest(const CatalogueSetting& setting);

// The canonical form of a selection, and back. No result for text that is no such form.
std::string formatItems(std::span<const int32_t> items);
std::optional<std::vector<int32_t>> parseItems(std::string_view canonical);

std::optional<int32_t> parseInteger(std::string_view canonical);

}  // namespace tn::registry

#endif
