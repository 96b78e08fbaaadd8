// What `cmake --install` leaves, and what the pages say of it.
#include <gtest/gtest.h>
#include <regex>
#include <sstream>

#include "support/Process.h"
#include "support/TempFolder.h"

namespace {

namespace fs = std::filesystem;

const std::string kSource = KNOB_SOURCE_DIR;

// A command of the shell, which fails when any of its parts does.
Outcome shell(const std::string& command, const std::string& home) {
  return Process{{"/bin/sh", "-ec", command},
                 {{"HOME", home}, {"PATH", getenv("PATH")}, {"XDG_STATE_HOME", home + "/state"}}}
      .run();
}

// The installed tree is moved before it is used: nothing in it may know where it was made.
class InstalledTree : public testing::Test {
 protected:
  void SetUp() override {
    const std::string made = folder / "made";
    const Outcome install =
        shell("DESTDIR=" + made + " " KNOB_CMAKE " --install " KNOB_BUILD_DIR, folder.path());
    ASSERT_EQ(0, install.status) << install.out << install.err;
    fs::rename(made, tree);
  }

  TempFolder folder;
  const std::string tree = folder / "moved";
  const std::string program = tree + KNOB_BINDIR "/knob";
};

TEST_F(InstalledTree, FindsItsLibraryModulesAndTexts) {
  const struct {
    std::string command, out, err;
  } cases[] = {
      {program + " 25 9", "Setting 25 was updated.", ""},
      {program + " 25 -JSON", "\"value\": \"9\"", ""},
      {program + " -S postgresql://?host=/nowhere 25", "", "7402: "},
  };
  for (const auto& test : cases) {
    const Outcome run = shell(test.command, folder.path());
    EXPECT_EQ(test.err.empty() ? 0 : 1, run.status) << test.command;
    EXPECT_NE(run.out.find(test.out), run.out.npos) << run.out;
    EXPECT_TRUE(run.err.starts_with(test.err)) << run.err;
  }
  for (const auto& entry : fs::directory_iterator(kSource + "/share/knob")) {
    if (entry.path().extension() != ".properties") continue;
    const std::string installed = tree + KNOB_BUNDLEDIR "/" + entry.path().filename().string();
    EXPECT_EQ(readFile(entry.path()), readFile(installed)) << installed;
  }
}

TEST_F(InstalledTree, LetsAServiceInCReadItsSettings) {
  const Outcome build =
      shell("export PKG_CONFIG_PATH=" + tree +
                KNOB_LIBDIR "/pkgconfig\n" KNOB_CC " -Wall -Wextra -Wpedantic -Werror -o " +
                folder.path() + "/reader " + kSource +
                "/examples/read-settings.c $(pkg-config --cflags --libs tn) "
                "-Wl,-rpath,$(pkg-config --variable=libdir tn)",
            folder.path());
  ASSERT_EQ(0, build.status) << build.out << build.err;
  fs::copy_file(kSource + "/examples/orders.toml", folder / "orders.toml");
  const std::string registry = "registry:" + folder / "orders.toml";
  const std::string read = folder.path() + "/reader " + registry;
  EXPECT_EQ("pool of 20, orders open, \"Thank you for your order.\"\n",
            shell(read, folder.path()).out);
  const std::string set = program + " -S " + registry;
  ASSERT_EQ(0, shell(set + " 1001 33; " + set + " 2001 closed", folder.path()).status);
  EXPECT_EQ("pool of 33, orders closed, \"Thank you for your order.\"\n",
            shell(read, folder.path()).out);
  EXPECT_EQ("The settings cannot be read: status 7701\n", shell(read + "x", folder.path()).err);
}

TEST(Pages, ShowTheVersionThatTheProgramTells) {
  TempFolder home;
  const Outcome run = shell(programFolder() + "/knob", home.path());
  const std::regex version(R"(\d+\.\d+\.\d{3}\.\d{3})");
  std::smatch told;
  ASSERT_TRUE(std::regex_search(run.out, told, version)) << run.out;
  std::vector<fs::path> pages = {kSource + "/README.md"};
  for (const auto& entry : fs::directory_iterator(kSource + "/docs")) pages.push_back(entry);
  int count = 0;
  for (const fs::path& page : pages) {
    const std::string text = readFile(page);
    for (std::sregex_iterator at(text.begin(), text.end(), version), end; at != end; ++at) {
      EXPECT_EQ(told.str(), at->str()) << page;
      ++count;
    }
  }
  EXPECT_GT(count, 0);
}

}  // namespace
