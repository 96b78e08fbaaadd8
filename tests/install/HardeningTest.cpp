// How the binaries that are installed were built, as their own headers and symbols say.
#include <gtest/gtest.h>

#include "support/Process.h"
#include "support/TempFolder.h"

namespace {

namespace fs = std::filesystem;

std::string readelf(const std::string& option, const fs::path& file) {
  const Outcome run = Process{{"/usr/bin/readelf", "-W", option, file}, {}}.run();
  EXPECT_EQ(0, run.status) << run.err;
  return run.out;
}

TEST(Hardening, IsInEveryBinary) {
  const fs::path tree = fs::path(programFolder()).parent_path();
  std::vector<fs::path> binaries = {tree / "bin/knob", tree / "bin/knob-diff",
                                    tree / "bin/knob-catalogue", tree / "lib/libtn.so.1"};
  for (const auto& module : fs::directory_iterator(tree / "lib/knob")) binaries.push_back(module);
  int found = 0;
  int fortified = 0;
  for (const fs::path& binary : binaries) {
    if (!fs::exists(binary)) continue;  // an engine that was left out
    SCOPED_TRACE(binary);
    ++found;
    EXPECT_NE(std::string::npos, readelf("-h", binary).find("DYN")) << "not for any address";
    const std::string segments = readelf("-l", binary);
    EXPECT_NE(std::string::npos, segments.find("GNU_RELRO"));
    const std::size_t stack = segments.find("GNU_STACK");
    ASSERT_NE(std::string::npos, stack);
    EXPECT_EQ(std::string::npos,
              segments.substr(stack, segments.find('\n', stack) - stack).find("RWE"));
    EXPECT_NE(std::string::npos, readelf("-d", binary).find("NOW")) << "RELRO is partial";
    const std::string symbols = readelf("--dyn-syms", binary);
    EXPECT_NE(std::string::npos, symbols.find("__stack_chk_fail"));
    // Not every one of them calls what the C library can check.
    fortified += symbols.find("_chk@") != std::string::npos;
  }
  EXPECT_GT(2 * fortified, found);
}

}  // namespace
