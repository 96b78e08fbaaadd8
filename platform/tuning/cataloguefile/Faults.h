// What is wrong with a catalogue file: all of it, so that its author can correct it in one go.
#ifndef KNOB_CATALOGUEFILE_FAULTS_H
#define KNOB_CATALOGUEFILE_FAULTS_H

#include <cstdint>
#include <string>
#include <vector>

#include "service/TuningInterface.h"

namespace tn::cataloguefile {

struct Fault {
  uint32_t line = 0;  // 0: the file as a whole
  std::string text;   // one line without the name of the file
  TnStatus status = TN_CATALOGUE_WRONG;
};

using Faults = std::vector<Fault>;

}  // namespace tn::cataloguefile

#endif
