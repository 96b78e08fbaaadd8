// How much a record of the log matters. A record passes when its level is at or above the log's.
#ifndef KNOB_OUTPUT_LEVEL_H
#define KNOB_OUTPUT_LEVEL_H

#include <cstdint>

enum class Level : std::int32_t {
  ALL = 0,  // as a threshold: everything passes
  FINEST = 1,
  FINER = 2,
  FINE = 3,
  CONFIG = 4,
  INFO = 5,
  WARNING = 6,
  SEVERE = 7,
  OFF = 8  // as a threshold: nothing passes
};

#endif
