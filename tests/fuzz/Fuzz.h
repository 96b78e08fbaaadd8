// What the fuzzers share.
#ifndef KNOB_TESTS_FUZZ_FUZZ_H
#define KNOB_TESTS_FUZZ_FUZZ_H

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

#include "support/TempFolder.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size);

inline std::string_view textOf(const uint8_t* data, std::size_t size) {
  return {reinterpret_cast<const char*>(data), size};
}

// Ends the fuzzer, which keeps the input.
inline void require(bool holds) {
  if (!holds) std::abort();
}

// In memory, where there is such a place.
inline void useFastFolder() { setenv("TMPDIR", "/dev/shm", 0); }

#endif
