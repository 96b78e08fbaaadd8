// The program as a process: what it makes of a command line, what it says of a missing connection,
// and which calls it makes.
#include "e2e/Home.h"

namespace {

const std::string kBanner =
    "Configuration Utility 15.21.016.000\nCopyright (c) 2026 The knob developers\n\n";
const std::string kInvalid =
    "Invalid command: wrong combination of arguments, or an ID or value that is not a number or is "
    "out of range.\n";

using CommandLine = Home;

TEST_F(CommandLine, ReportsMisuseAndAFailedConnectionInTheChosenForm) {
  const std::string fits(255, 'x'), tooLong = std::string(254, 'x') + "\u00e4";
  enum Shown { kUsage, kBannerAndUsage, kBannerOnly };
  const struct {
    Words arguments;
    int status;
    std::string said;  // what it begins with
    Shown shown = kUsage;
  } cases[] = {
      {{}, 0, "", kBannerAndUsage},
      {{"--Username", "x"}, 1, "Unknown option: --Username\n"},
      {{"-Of%s\u20ac"}, 1, "Unknown option: -Of%s\u20ac\n"},
      {{"25", "-5"}, 1, "Unknown option: -5\n"},
      {{"-P", "-secret"}, 1, "Option -P requires a value. "},
      {{"25", "12abc"}, 1, kInvalid, kBannerAndUsage},
      {{"-O", "a", "-I", "b"}, 0, kInvalid, kBannerAndUsage},
      {{"25", "-S", fits, "-U", fits, "-P", fits}, 1, "7104: ", kBannerOnly},
      {{"25", "-S", tooLong}, 1, "7101: The server name is longer than 255 bytes.\n", kBannerOnly},
      {{"25", "-P", tooLong}, 1, "7103: ", kBannerOnly},
      {{"25", "5", "-S", "file:" + home.path()}, 1, "7302: ", kBannerOnly},
  };
  for (const auto& [arguments, status, said, shown] : cases) {
    SCOPED_TRACE(testing::PrintToString(arguments));
    const Outcome text = run(arguments);
    EXPECT_EQ(status, text.status);
    EXPECT_TRUE(text.err.starts_with(said)) << text.err;
    EXPECT_EQ(said.empty() ? 0 : 1, std::count(text.err.begin(), text.err.end(), '\n'));
    EXPECT_EQ(shown != kUsage, text.out.starts_with(kBanner)) << text.out;
    EXPECT_EQ(shown == kBannerOnly, text.out.find("knob -O <outputFile>") == text.out.npos);
    Words words = arguments;
    words.insert(words.begin(), "-json");
    const Outcome asJson = run(words);
    EXPECT_EQ(status, asJson.status);
    EXPECT_EQ("", asJson.err);
    EXPECT_TRUE(
        asJson.out.starts_with("\n{\n\t\"title\": \"Configuration Utility\",\n"
                               "\t\"version\": \"15.21.016.000\",\n"));
    const json object = json::parse(asJson.out);
    EXPECT_EQ(said == kInvalid ? "Invalid Command" : text.err.substr(0, text.err.find('\n')),
              object.value("error", ""));
    EXPECT_EQ(shown == kBannerOnly ? 0U : 7U, object.value("usage", json()).size());
  }
  // The export's object is in its file: neither header nor brace on the screen.
  const std::string failed = run({"-O", home / "x", "-U", "me", "-JSON"}).out;
  EXPECT_TRUE(failed.starts_with("\t\"error\": \"7105:") && failed.ends_with("\"\n")) << failed;
}

// In the other forms of the options.
TEST_F(CommandLine, TracesOnDemand) {
  const std::string file = home / "file";
  writeFile(file, "Setting ID: 25\nCurrent Value:\nSetting ID: 25\nCurrent Value: 6\n");
  const std::string read = "inputFile: " + file + "\nInside readConfiguration, filename: " + file;
  const std::string written = "outputFile: " + file +
                              "\nInside writeConfiguration(), filename: " + file +
                              "\nInside printCategoryDetails() for ID: 1\n";
  const std::pair<Words, std::string> cases[] = {
      {{"25", "7", "8", "-D", "loud"}, "Setting 25 was updated.\n"},
      {{"25", "7", "8", "-D", "finer"},
       "Set Id:  25\n\tValue : 7\n\tValue : 8\nInside setValue() for ID: 25\nSetting 25 was "
       "updated.\n"},
      {{"--DEBUG", "ALL", "25"}, "Id Detail - ID:  25\nInside printIDDetails() for ID: 25\n==="},
      {{"-i", file, "-e", "-d", "finest"}, read + "\nInside getTagValue() for tag: Setting ID:"},
      {{"--INPUTFILE", file, "--IGNORE_ERR", "--DEBUG", "finer"}, read + "\nInside setValue()"},
      {{"--KEYWORD", "q", "-h", "r", "-d", "finer"},
       "search string: r\nInside printMatchingIDs() for String: r\n"},
      {{"-o", file, "-f", "-d", "finer"}, written},
      {{"--OUTPUTFILE", file, "--SUPPRESS_PROMPT", "--DEBUG", "finer"}, written},
  };
  for (const auto& [arguments, trace] : cases) {
    const Outcome told = run(arguments);
    EXPECT_TRUE(told.out.starts_with(kBanner + trace)) << told.out.substr(0, 1000);
    EXPECT_EQ(told.err.npos, told.err.find("stopped here"));
  }
}

TEST_F(CommandLine, ShowsNoPassword) {
  const Words cases[] = {{"25", "-P", "secret"},
                         {"-p", "secret", "--PASSWORD", "secret"},
                         {"-P", "-P", "secret"},
                         {"-x", "-P", "-secret"},
                         {"-P", "secret", "25", "-D", "ALL", "-U", "me"},
                         {"25", "-D", "ALL", "-S", "postgresql://u:secret@[::1]:1/d"},
                         {"-S", "postgres://[::1]:1?x=1&password=secret&sslpassword=secret"}};
  for (const auto& arguments : cases) {
    const Outcome told = recorded(arguments);
    const std::string left = readFile(home / "arguments");
    EXPECT_EQ(std::string::npos, (left + told.out + told.err).find("secret")) << told.out;
    EXPECT_NE(std::string::npos, left.find("***")) << testing::PrintToString(arguments);
  }
}

// With TnStart, TnStop follows once on every path.
TEST_F(CommandLine, CallsTheInterfaceInOrder) {
  const std::string start = "TnStart 0\nTnConnectServer ", stop = "TnStop 0\n";
  const std::string leave = "TnDisconnect 1\n" + stop, info = "TnGetSettingInfo 1 ";
  const std::string local = start + "localhost  \n", login = start + "s:5 u p\n" + stop;
  const std::string most(1023, 'x');
  char host[256] = {};
  gethostname(host, sizeof host);
  const std::pair<Words, std::string> cases[] = {
      {{"25", "5", "-S", "localhost"}, local + info + "25\nTnSetLongValue 1 25 5 2\n" + leave},
      {{"74", most, "-s", "localhost"},
       local + info + "74\nTnSetStringValue 1 74 " + most + " 2\n" + leave},
      {{"74", most + "x", "-S", "localhost"}, local + info + "74\n" + leave},
      {{"25", "x", "-S", "one", "-S", ""}, start + host + "  \n" + info + "25\n" + leave},
      {{"--SERVER", "localhost"}, local + leave},
      {{"-S", "s:5", "-U", "u", "-P", "p"}, login},
      {{"-s", "s:5", "-p", "p", "-u", "u"}, login},
      {{"--SERVER", "s:5", "--USERNAME", "u", "--PASSWORD", "p"}, login},
      {{"25", "-U", std::string(256, 'u')}, "TnStart 0\n" + stop},
      {{}, ""},
  };
  for (const auto& [arguments, calls] : cases) {
    recorded(arguments);
    EXPECT_EQ(calls, readFile(home / "calls"));
  }
}

}  // namespace
