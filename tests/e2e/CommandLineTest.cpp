// The program as a process: what it says to a command line, to streams that cannot be written and
// to a missing connection, and which calls it makes.
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <sstream>

#include "support/Process.h"
#include "support/TempFolder.h"

namespace {

using nlohmann::json;

const std::string kBanner =
    "Configuration Utility 15.21.016.000\nCopyright (c) 2026 The knob developers\n\n";
const std::string kInvalid = "The arguments do not make up a command.\n";

bool showsUsage(std::string const& text) { return text.find("knob -O <outputFile>") != text.npos; }

TEST(CommandLine, ReportsMisuseInTheChosenForm) {
  const struct {
    std::vector<std::string> arguments;
    int status;
    std::string err;        // all of it
    std::string jsonError;  // of a JSON run; "-" for a run in text
    bool banner = true;
  } cases[] = {
      {{}, 0, "", "-"},
      {{"-h"},
       1,
       "The option -h needs a value, which must not begin with a minus sign.\n",
       "-",
       false},
      {{"-P", "-x"},
       1,
       "The option -P needs a value, which must not begin with a minus sign.\n",
       "-",
       false},
      {{"--Username", "x"}, 1, "There is no option --Username.\n", "-", false},
      {{"abc"}, 1, kInvalid, "-"},
      {{"25", "12abc"}, 1, kInvalid, "-"},
      {{"-O", "a", "-I", "b"}, 0, kInvalid, "-"},
      {{"-S", "localhost"}, 0, kInvalid, "-"},
      {{"-H", "x", "25"}, 0, kInvalid, "-"},
      {{"-json"}, 0, "", ""},
      {{"25", "-Json"}, 1, "", "There is no option -Json."},
      {{"-JSON", "abc"}, 1, "", "Invalid Command"},
      {{"25", "-JSON", "-H", "x"}, 0, "", "Invalid Command"},
  };
  TempFolder home;
  for (auto const& test : cases) {
    const Outcome run = knob(home.path(), test.arguments).run();
    SCOPED_TRACE(testing::PrintToString(test.arguments));
    EXPECT_EQ(test.status, run.status);
    EXPECT_EQ(test.err, run.err);
    EXPECT_TRUE(showsUsage(run.out)) << run.out;
    if (test.jsonError == "-") {
      EXPECT_EQ(test.banner, run.out.starts_with(kBanner)) << run.out;
      continue;
    }
    ASSERT_TRUE(
        run.out.starts_with("\n{\n\t\"title\": \"Configuration Utility\",\n"
                            "\t\"version\": \"15.21.016.000\",\n"))
        << run.out;
    const json object = json::parse(run.out);
    EXPECT_EQ(test.jsonError, object.value("error", ""));
    EXPECT_EQ(7U, object["usage"].size());
  }
}

TEST(CommandLine, ReportsAFailedConnectionInTheChosenForm) {
  TempFolder home;
  const Outcome text = knob(home.path(), {"25", "-S", "nowhere:5"}).run();
  EXPECT_EQ(1, text.status);
  EXPECT_EQ(kBanner, text.out);
  EXPECT_TRUE(text.err.starts_with("7104: ")) << text.err;
  const Outcome inJson = knob(home.path(), {"25", "-S", std::string(256, 's'), "-JSON"}).run();
  EXPECT_EQ(1, inJson.status);
  EXPECT_EQ("7101: The server name is longer than 255 bytes.", json::parse(inJson.out)["error"]);
  // The export's object is in its file: neither header nor brace on the screen.
  EXPECT_EQ("\t\"error\": \"7105:",
            knob(home.path(), {"-O", home / "x", "-U", "me", "-JSON"}).run().out.substr(0, 16));
}

TEST(CommandLine, FailsWhenItsOutputCannotBeWritten) {
  TempFolder home;
  const struct {
    std::vector<std::string> arguments;
    std::string out, err;
    int status;
    std::string said;
  } cases[] = {
      {{"25"}, "/dev/full", "", 28, "0x8007011C"},
      {{"25", "5"}, "/dev/full", "", 28, "0x8007011C"},
      {{"25", "-JSON"}, "/dev/full", "", 28, "0x8007011C"},
      {{"25", "5"}, "-", "", 9, "0x80070109"},
      {{"-H", "e"}, "|", "", 32, "0x80070120"},
      {{"-x"}, "", "/dev/full", 28, ""},
      {{"-x"}, "", "-", 9, ""},
      {{"25"}, "-", "-", 9, ""},
  };
  for (auto const& test : cases) {
    Process process = knob(home.path(), test.arguments);
    process.outTo = test.out;
    process.errTo = test.err;
    const Outcome run = process.run();
    SCOPED_TRACE(testing::PrintToString(test.arguments) + test.out + test.err);
    EXPECT_EQ(test.status, run.status);
    EXPECT_NE(run.err.find(test.said), run.err.npos) << run.err;
    EXPECT_LE(std::count(run.err.begin(), run.err.end(), '\n'), 1);
  }
  EXPECT_FALSE(std::filesystem::exists(home / "state")) << "a set that could not be told was made";
}

TEST(CommandLine, TracesOnDemand) {
  TempFolder home;
  const std::string out = knob(home.path(), {"25", "7", "8", "-D", "finer"}).run().out;
  EXPECT_EQ(kBanner +
                "Set Id:  25\n\tValue : 7\n\tValue : 8\nInside setValue() for ID: 25\n"
                "Setting 25 was updated.\n",
            out);
  EXPECT_EQ(kBanner + "Setting 25 was updated.\n",
            knob(home.path(), {"25", "7", "-D", "loud"}).run().out);
}

// Which calls of the interface a command makes; settings' details apart, always in this order.
TEST(CommandLine, CallsTheInterfaceInOrder) {
  const struct {
    std::vector<std::string> arguments;
    std::string calls;
  } cases[] = {
      {{"25", "5"},
       "TnStart TnConnectServer TnGetSettingInfo TnIsSettingAvailable TnSetLongValue TnDisconnect "
       "TnStop "},
      {{"25"},
       "TnStart TnConnectServer TnGetSettingInfo TnIsSettingAvailable TnGetLongValue "
       "TnGetValueLimit TnGetLongValue TnGetSettingHelp TnDisconnect TnStop "},
      {{"9999"}, "TnStart TnConnectServer TnGetSettingInfo TnDisconnect TnStop "},
      {{"25", "x"},
       "TnStart TnConnectServer TnGetSettingInfo TnIsSettingAvailable TnDisconnect TnStop "},
      {{"-S", "localhost"}, "TnStart TnConnectServer TnDisconnect TnStop "},
      {{"25", "-S", "nowhere:5"}, "TnStart TnConnectServer TnStop "},
      {{"25", "-U", std::string(256, 'u')}, "TnStart TnStop "},
      {{"-I", "/nonexistent"}, "TnStart TnConnectServer TnDisconnect TnStop "},
      {{}, ""},
  };
  TempFolder home;
  for (auto const& test : cases) {
    const std::string record = home / "record";
    std::filesystem::remove(record);
    Process process = knob(home.path(), test.arguments);
    process.environment["LD_PRELOAD"] = KNOB_RECORDER_PRELOAD;
    process.environment["TN_RECORD"] = record;
    process.run();
    std::string calls = readFile(record);
    std::replace(calls.begin(), calls.end(), '\n', ' ');
    EXPECT_EQ(test.calls, calls);
  }
}

TEST(CommandLine, TakesItsTextsFromEditableBundles) {
  TempFolder home;
  const std::filesystem::path prefix = std::filesystem::path(programFolder()).parent_path();
  // A tree of its own, so that the built one stays as it is.
  for (char const* const part : {"bin/knob", "lib/libtn.so.1", "share/knob/KNOB.properties"}) {
    const std::filesystem::path copy = home / part;
    std::filesystem::create_directories(copy.parent_path());
    std::filesystem::copy_file(prefix / part, copy);
  }
  Process process = knob(home.path(), {"9999"});
  process.arguments[0] = home / "bin/knob";
  writeFile(home / "share/knob/KNOB_de.properties",
            "KNOB_8002 = \\u201EDie\\u201C gibt\\tes nicht\n");
  EXPECT_NE(process.run().err.find("There is no setting"), std::string::npos);
  process.environment["LANG"] = "de_AT.UTF-8";
  EXPECT_EQ("„Die“ gibt\tes nicht\n", process.run().err);
  process.environment["LC_ALL"] = "../KNOB_de";
  EXPECT_NE(process.run().err.find("There is no setting"), std::string::npos);

  std::filesystem::remove(home / "share/knob/KNOB.properties");
  EXPECT_EQ("The resource bundle is not installed\n", process.run().err);
  process.arguments = {home / "bin/knob", "25", "-S", "nowhere:5"};
  EXPECT_EQ("7104: The resource bundle is not installed\n", process.run().err);
}

}  // namespace
