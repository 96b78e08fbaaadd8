// A catalogue file of any content: a catalogue or faults, never both and never neither.
#include "fuzz/Fuzz.h"
#include "tuning/cataloguefile/CatalogueFile.h"

int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size) {
  useFastFolder();
  static const TempFolder folder;
  writeFile(folder / "catalogue.toml", std::string(textOf(data, size)));
  const auto read = tn::cataloguefile::readCatalogueFile(folder / "catalogue.toml");
  require((read.catalogue == nullptr) != read.faults.empty());
  return 0;
}
