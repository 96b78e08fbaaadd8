// How the binaries that are installed were built, as their own headers and symbols say.
#include <gtest/gtest.h>
#include <regex>

#include "support/Process.h"
#include "support/TempFolder.h"

namespace {

namespace fs = std::filesystem;

TEST(Hardening, IsInEveryBinary) {
  const fs::path tree = fs::path(programFolder()).parent_path();
  std::vector<fs::path> binaries = {tree / "bin/knob", tree / "bin/knob-diff",
                                    tree / "bin/knob-catalogue", tree / "lib/libtn.so.1"};
  for (const auto& module : fs::directory_iterator(tree / "lib/knob")) binaries.push_back(module);
  int found = 0;
  int fortified = 0;
  for (const fs::path& binary : binaries) {
    if (!fs::exists(binary)) continue;  // an engine that was left out
    const Outcome run =
        Process{{"/usr/bin/readelf", "-W", "-h", "-l", "-d", "--dyn-syms", binary}, {}}.run();
    ASSERT_EQ(0, run.status) << run.err;
    // For any address, with full RELRO and a stack that is not executable or overrun unnoticed.
    for (const char* const property : {"Type: +DYN", "GNU_RELRO", "FLAGS.* NOW",
                                       "GNU_STACK [ 0-9a-fx]* RW ", "__stack_chk_fail"}) {
      EXPECT_TRUE(std::regex_search(run.out, std::regex(property))) << binary << property;
    }
    ++found;
    // Not every one of them calls what the C library can check.
    fortified += run.out.find("_chk@") != std::string::npos;
  }
  EXPECT_GT(2 * fortified, found);
}

}  // namespace
