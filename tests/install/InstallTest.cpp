// What `cmake --install` leaves, and what the pages say of it.
#include <gtest/gtest.h>
#include <regex>

#include "support/Process.h"
#include "support/TempFolder.h"

namespace {

namespace fs = std::filesystem;

const std::string kSource = KNOB_SOURCE_DIR;

// The installed tree is moved before it is used: nothing in it may know where it was made.
class InstalledTree : public testing::Test {
 protected:
  void SetUp() override {
    const Outcome install =
        shell("DESTDIR=" + (folder / "made") + " " KNOB_CMAKE " --install " KNOB_BUILD_DIR);
    ASSERT_EQ(0, install.status) << install.out << install.err;
    fs::rename(folder / "made", tree);
  }
  // A command of the shell, which fails when any of its parts does.
  Outcome shell(const std::string& command) const {
    return Process{
        {"/bin/sh", "-ec", command},
        {{"HOME", folder.path()}, {"PATH", getenv("PATH")}, {"XDG_STATE_HOME", folder / "state"}}}
        .run();
  }

  const TempFolder folder;
  const std::string tree = folder / "moved";
  const std::string program = tree + KNOB_BINDIR "/knob";
};

TEST_F(InstalledTree, FindsItsLibraryModulesAndTexts) {
  EXPECT_NE(std::string::npos, shell(program + " 25 9").out.find("Setting 25 was updated."));
  EXPECT_NE(std::string::npos, shell(program + " 25 -JSON").out.find("\"value\": \"9\""));
#ifdef KNOB_POSTGRESQL
  const Outcome unreachable = shell(program + " -S postgresql://?host=/nowhere 25");
  EXPECT_TRUE(unreachable.err.starts_with("7402: ")) << unreachable.err;
#endif
}

#ifdef KNOB_CATALOGUE_FILES
TEST_F(InstalledTree, LetsAServiceInCReadItsSettings) {
  const Outcome build =
      shell("export PKG_CONFIG_PATH=" + tree +
            KNOB_LIBDIR "/pkgconfig\n" KNOB_CC " -Wall -Wextra -Wpedantic -Werror -o " +
            (folder / "reader ") + kSource +
            "/examples/read-settings.c $(pkg-config --cflags --libs tn) "
            "-Wl,-rpath,$(pkg-config --variable=libdir tn)");
  ASSERT_EQ(0, build.status) << build.out << build.err;
  fs::copy_file(kSource + "/examples/orders.toml", folder / "orders.toml");
  const std::string registry = " registry:" + (folder / "orders.toml");
  const std::string read = folder / "reader" + registry, set = program + " -S" + registry;
  EXPECT_EQ("pool of 20, orders open, \"Thank you for your order.\"\n", shell(read).out);
  ASSERT_EQ(0, shell(set + " 1001 33; " + set + " 2001 closed").status);
  EXPECT_EQ("pool of 33, orders closed, \"Thank you for your order.\"\n", shell(read).out);
  EXPECT_EQ("The settings cannot be read: status 7701\n", shell(read + "x").err);
}
#endif

// Sanitizers are for tests, and harden nothing; debug builds lack the C library's checks.
#if !defined KNOB_SANITIZE && defined __OPTIMIZE__
TEST_F(InstalledTree, IsHardened) {
  int fortified = 0;  // more than are not: some call nothing that the C library can check
  for (const auto& file : fs::recursive_directory_iterator(tree)) {
    if (!file.is_regular_file() || !readFile(file.path()).starts_with("\177ELF")) continue;
    const Outcome run = shell("readelf -W -h -l -d --dyn-syms " + file.path().string());
    ASSERT_EQ(0, run.status) << run.err;
    // For any address, with full RELRO and a stack that is not executable or overrun unnoticed.
    for (const char* const property : {"Type: +DYN", "GNU_RELRO", "FLAGS.* NOW",
                                       "GNU_STACK [ 0-9a-fx]* RW ", "__stack_chk_fail"}) {
      EXPECT_TRUE(std::regex_search(run.out, std::regex(property))) << file << property;
    }
    fortified += run.out.find("_chk@") != std::string::npos ? 1 : -1;
  }
  EXPECT_GT(fortified, 0);
}
#endif

}  // namespace
