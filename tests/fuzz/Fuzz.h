// What the fuzzers share.
#ifndef KNOB_TESTS_FUZZ_FUZZ_H
#define KNOB_TESTS_FUZZ_FUZZ_H

#include <cstdint>
#include <cstdlib>
#include <string>

#include "support/TempFolder.h"

// What each fuzzer does with an input.
void tryInput(const std::string& text);

// Ends the fuzzer, which keeps the input.
inline void require(bool holds) {
  if (!holds) std::abort();
}

// In memory, where there is such a place.
inline const int fastFolder = setenv("TMPDIR", "/dev/shm", 0);

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size) {
  tryInput({reinterpret_cast<const char*>(data), size});
  return 0;
}

#endif
