// The bytes of a catalogue file. Whatever FILE may be, reading it neither waits nor takes much
// memory: pipes, devices and files over 4 MiB are refused.
//
// The file stays open as long as the object lives: an export onto a file that its process has open
// is refused, so a catalogue in use is not overwritten by the settings that it describes.
#ifndef KNOB_CATALOGUEFILE_CATALOGUE_TEXT_H
#define KNOB_CATALOGUEFILE_CATALOGUE_TEXT_H

#include <optional>
#include <string>

#include "tuning/cataloguefile/Faults.h"

namespace tn::cataloguefile {

inline constexpr size_t kLargestCatalogue = size_t{4} << 20;

class CatalogueText {
 public:
  // A fault with TN_CATALOGUE_NOT_READABLE or TN_CATALOGUE_NOT_A_FILE when there is no text to be
  // had.
  CatalogueText(const std::string& path, Faults& faults);
  CatalogueText(const CatalogueText&) = delete;
  CatalogueText& operator=(const CatalogueText&) = delete;
  ~CatalogueText();

  const std::optional<std::string>& text() const { return text_; }

 private:
  bool isRegular() const;
  // Up to the end of the file, or one byte more than is allowed. False, with errno, if that fails.
  bool read(std::string& text) const;

  int descriptor_;
  std::optional<std::string> text_{};
};

}  // namespace tn::cataloguefile

#endif
