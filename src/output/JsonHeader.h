// What the program says of itself: the version, and the lines that open every JSON object that it
// writes, on the screen and in a settings file.
#ifndef KNOB_OUTPUT_JSON_HEADER_H
#define KNOB_OUTPUT_JSON_HEADER_H

#include <array>

#include "output/MessageHelper.h"

class JsonHeader {
 public:
  // The project's, with three digits in the last two places: "15.21.016.000".
  static const char VERSION[];

  // Fetches the version and copyright texts.
  explicit JsonHeader(const MessageHelper& messages);

  // In order, without line ends but for the one inside the first: the object's brace comes after an
  // empty line. Every member ends with a comma.
  std::array<kz::String, 4> lines() const;

 private:
  kz::String version;
  kz::String copyright;
};

#endif
