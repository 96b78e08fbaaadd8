// The program as a process: what it says to a command line, to streams that cannot be written and
// to a missing connection, and which calls it makes.
#include <algorithm>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "support/Process.h"
#include "support/TempFolder.h"

namespace {

using nlohmann::json;

const std::string kBanner =
    "Configuration Utility 15.21.016.000\nCopyright (c) 2026 The knob developers\n\n";
const std::string kInvalid =
    "Invalid command: wrong combination of arguments, or an ID or value that is not a number or is "
    "out of range.\n";

TEST(CommandLine, ReportsMisuseInTheChosenForm) {
  const struct {
    std::vector<std::string> arguments;
    int status;
    std::string err;        // all of it
    std::string jsonError;  // of a JSON run; "-" for a run in text
    bool banner = true;
  } cases[] = {
      {{}, 0, "", "-"},
      {{"--Username", "x"}, 1, "Unknown option: --Username\n", "-", false},
      {{"25", "12abc"}, 1, kInvalid, "-"},
      {{"-O", "a", "-I", "b"}, 0, kInvalid, "-"},
      {{"-json"}, 0, "", ""},
      {{"25", "-Json"}, 1, "", "Unknown option: -Json"},
      {{"-JSON", "abc"}, 1, "", "Invalid Command"},
  };
  TempFolder home;
  for (const auto& test : cases) {
    const Outcome run = knob(home.path(), test.arguments).run();
    SCOPED_TRACE(testing::PrintToString(test.arguments));
    EXPECT_EQ(test.status, run.status);
    EXPECT_EQ(test.err, run.err);
    EXPECT_NE(run.out.find("knob -O <outputFile>"), std::string::npos) << run.out;
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
  const std::string fits(255, 'x'), tooLong = std::string(254, 'x') + "\u00e4";
  const std::pair<std::vector<std::string>, std::string> cases[] = {
      {{"25", "-S", fits, "-U", fits, "-P", fits}, "7104: "},
      {{"25", "-S", tooLong}, "7101: The server name is longer than 255 bytes.\n"},
      {{"25", "-U", tooLong}, "7102: "},
      {{"25", "-P", tooLong}, "7103: "},
      {{"25", "5", "-S", "file:" + home.path()}, "7302: "}};
  for (const auto& [arguments, said] : cases) {
    const Outcome text = knob(home.path(), arguments).run();
    EXPECT_EQ(1, text.status);
    EXPECT_EQ(kBanner, text.out);
    EXPECT_TRUE(text.err.starts_with(said)) << text.err;
    EXPECT_EQ(1, std::count(text.err.begin(), text.err.end(), '\n'));
    std::vector<std::string> inJson = arguments;
    inJson.push_back("-JSON");
    EXPECT_EQ(text.err,
              json::parse(knob(home.path(), inJson).run().out)["error"].get<std::string>() + "\n");
  }
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
      {{"25"}, "/dev/full", "", 28, "0x8007011C"}, {{"25", "5"}, "/dev/full", "", 28, "0x8007011C"},
      {{"25", "5"}, "-", "", 9, "0x80070109"},     {{"-H", "e"}, "|", "", 32, "0x80070120"},
      {{"-x"}, "", "/dev/full", 28, ""},           {{"25"}, "-", "-", 9, ""},
  };
  for (const auto& test : cases) {
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
  const std::string values = "Set Id:  25\n\tValue : 7\n\tValue : 8\n";
  const std::pair<const char*, std::string> cases[] = {
      {"finer", values + "Inside setValue() for ID: 25\n"}, {"warning", ""}, {"loud", ""}};
  for (const auto& [level, trace] : cases) {
    EXPECT_EQ(kBanner + trace + "Setting 25 was updated.\n",
              knob(home.path(), {"25", "7", "8", "-D", level}).run().out);
  }
}

TEST(CommandLine, ShowsNoPassword) {
  TempFolder home;
  const std::vector<std::string> cases[] = {
      {"25", "-P", "secret"},
      {"-p", "secret", "--PASSWORD", "secret"},
      {"-P", "secret", "-x"},
      {"-P", "-P", "secret"},
      {"-x", "-P", "-secret"},
      {"-P", "secret", "25", "-D", "ALL", "-U", "me"},
      {"25", "-D", "ALL", "-S", "postgresql://u:secret@[::1]:1/d"},
      {"-S", "etcd://u:secret@[::1]:1/p", "25", "9"},
      {"-S", "postgres://[::1]:1?x=1&password=secret&sslpassword=secret"}};
  for (const auto& arguments : cases) {
    const std::string record = home / "record";
    std::filesystem::remove(record);
    Process process = knob(home.path(), arguments);
    process.environment["LD_PRELOAD"] = KNOB_RECORDER_PRELOAD;
    process.environment["TN_RECORD_ARGUMENTS"] = record;
    const Outcome run = process.run();
    EXPECT_EQ(std::string::npos, (run.out + run.err).find("secret")) << run.out << run.err;
    EXPECT_NE(std::string::npos, readFile(record).find("***")) << testing::PrintToString(arguments);
    EXPECT_EQ(std::string::npos, readFile(record).find("secret"));
  }
}

// The calls of the interface that every command makes, and those of a change.
TEST(CommandLine, CallsTheInterfaceInOrder) {
  const struct {
    std::vector<std::string> arguments;
    std::string calls;
  } cases[] = {
      {{"25", "5"},
       "TnStart TnConnectServer TnGetSettingInfo TnIsSettingAvailable TnSetLongValue TnDisconnect "
       "TnStop "},
      {{"25", "x"},
       "TnStart TnConnectServer TnGetSettingInfo TnIsSettingAvailable TnDisconnect TnStop "},
      {{"-S", "localhost"}, "TnStart TnConnectServer TnDisconnect TnStop "},
      {{"25", "-S", "nowhere:5"}, "TnStart TnConnectServer refused TnStop "},
      {{"25", "-U", std::string(256, 'u')}, "TnStart TnStop "},
      {{}, ""},
  };
  TempFolder home;
  for (const auto& test : cases) {
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

}  // namespace
