// A catalogue file of any content: a catalogue or faults, never both and never neither.
#include "fuzz/Fuzz.h"
#include "tuning/cataloguefile/CatalogueFile.h"

void tryInput(const std::string& text) {
  static const TempFolder folder;
  writeFile(folder / "catalogue.toml", text);
  const auto read = tn::cataloguefile::readCatalogueFile(folder / "catalogue.toml");
  require((read.catalogue == nullptr) != read.faults.empty());
}
