// A catalogue file, read and checked: the settings that it describes, or everything that is wrong
// with it. docs/registry.md describes the format.
#ifndef KNOB_CATALOGUEFILE_CATALOGUE_FILE_H
#define KNOB_CATALOGUEFILE_CATALOGUE_FILE_H

#include <memory>
#include <string>

#include "tuning/cataloguefile/Faults.h"
#include "tuning/registry/Catalogue.h"

namespace tn::cataloguefile {

struct CatalogueFile {
  std::shared_ptr<const registry::Catalogue> catalogue;  // null when there are faults
  std::string title;
  std::string store;  // the path of an SQLite file, or a name of etcd
  Faults faults;      // in the order of their lines
};

// Throws nothing but what the standard library throws.
CatalogueFile readCatalogueFile(const std::string& path);

// TN_SUCCESS without faults, otherwise the status of the kind that matters most.
TnStatus statusOf(const Faults& faults);

}  // namespace tn::cataloguefile

#endif
