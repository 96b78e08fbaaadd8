#include "service/TuningInterface.h"
#include "tuning/Guarded.h"
#include "tuning/cataloguefile/CatalogueFile.h"
#include "tuning/registry/RegistryDoors.h"

extern "C" __attribute__((visibility("default"))) TnStatus TnReadCatalogue(
    int32_t interfaceVersion, const char* file,
    std::shared_ptr<const tn::registry::Catalogue>* catalogue, std::string* store) noexcept {
  if (interfaceVersion != TN_MODULE_INTERFACE) return TN_MODULE_UNUSABLE;
  return tn::guarded([=] {
    tn::cataloguefile::CatalogueFile read = tn::cataloguefile::readCatalogueFile(file);
    const TnStatus status = tn::cataloguefile::statusOf(read.faults);
    if (status != TN_SUCCESS) throw tn::TuningError(status);
    *store = read.store;
    *catalogue = std::move(read.catalogue);
  });
}
