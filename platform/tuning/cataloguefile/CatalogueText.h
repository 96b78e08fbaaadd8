// The bytes of a catalogue file. Whatever FILE may be, reading it neither waits nor takes much
// memory: pipes, devices and files over 4 MiB are refused.
#ifndef KNOB_CATALOGUEFILE_CATALOGUE_TEXT_H
#define KNOB_CATALOGUEFILE_CATALOGUE_TEXT_H

#include <optional>
#include <string>

#include "tuning/cataloguefile/Faults.h"

namespace tn::cataloguefile {

inline constexpr size_t kLargestCatalogue = size_t{4} << 20;

// Nothing, and a fault with TN_CATALOGUE_NOT_READABLE or TN_CATALOGUE_NOT_A_FILE, when there is no
// text to be had.
std::optional<std::string> readCatalogueText(const std::string& path, Faults& faults);

}  // namespace tn::cataloguefile

#endif
