#include <gtest/gtest.h>
#include <sstream>

#include "kz/Exception.h"
#include "output/CMSGStrings.h"
#include "output/FormatHelper.h"
#include "support/OtherUser.h"

namespace {

// A bundle of the test's own.
struct Bundle {
  explicit Bundle(std::string const& content) { writeFile(path, content); }
  ~Bundle() { std::filesystem::remove(path); }
  const std::string path = programFolder() + "/../share/knob/TEST_output.properties";
};

template <typename... Arguments>
std::string say(char const* key, Arguments... arguments) {
  return MessageHelper("TEST_output", "TEST_").getResStr(key, arguments...).getBytes();
}

TEST(MessageHelper, CompletesTextsAndNeverFails) {
  EXPECT_EQ(say("KEY", 5), "The resource bundle is not installed");
  const std::string x1022(1022, 'x'), x2045(2045, 'x'), euro = "\u20ac";
  const Bundle bundle("TEST_KEY=%s: 100%% of %d (0x%08X)\nTEST_TEXT=%s\nTEST_LONG=" + x1022 + euro);
  EXPECT_EQ(say("KEY", "\xff\u00e4", -3, -1), "\xff\u00e4: 100% of -3 (0xFFFFFFFF)");
  EXPECT_EQ(say("MISSING", 5), "TEST_MISSING");
  EXPECT_EQ(say("LONG"), x1022) << "cut before the character that does not end at 1,023";
  EXPECT_EQ(say("TEXT", (x2045 + "xxx").c_str()), x2045 + "xx");
  EXPECT_EQ(say("TEXT", (x2045 + euro).c_str()), x2045);
  EXPECT_EQ(say("TEXT", (x2045 + "\u00e4x").c_str()), x2045 + "\u00e4");
}

TEST(CMSGStrings, MakesKeysAndDialogs) {
  kz::String number, text, title, message;
  CMSGStrings::MakeResString(-1, number);
  CMSGStrings::MakeResString("P_", " \t-3-\r\n", text);
  EXPECT_EQ((number + " " + text).getBytes(), "KZ_MSG_N1 P_N3N");
  CMSGStrings::PrepareDialog("TEST_output", "T", "M", title, message);
  EXPECT_EQ((title + ": " + message).getBytes(),
            "TNMSG Resource Bundle Loading Error: The TNMSG resource bundle is not installed");
  const Bundle bundle("M=message");
  CMSGStrings::PrepareDialog("TEST_output", "T", "M", title, message);
  EXPECT_EQ((title + " " + message).getBytes(), "T message");
}

TEST(FormatHelper, LaysOutLines) {
  const TempFolder folder;
  Logger* const logger = new Logger;
  logger->addFileHandler(folder / "log");
  FormatHelper format(logger);
  for (const Level level : {Level::INFO, Level::WARNING}) {
    format.setLevel(level);
    format.putHeader("Cat\u00e4gory", 1);
    format.putHeader("", 0);
    format.putData("x y\t", 2);
    format.putError("disk full");
  }
  EXPECT_EQ(readFile(folder / "log"),
            "\t========\n\tCAT\u00c4GORY\n\t========\n\n\n\n\t\tx y\t\nERROR! - disk full\n"
            "ERROR! - disk full\n");
  EXPECT_EQ(format.getTabStr(-2).length(), 0);
  kz::String text("abc");
  format.padToLen(text, 2);
  format.padToLen(text, 5);
  EXPECT_EQ(text.getBytes(), "abc  ");
}

TEST(Logger, PassesRecordsFromItsLevelOn) {
  // The name of a level, and how many of the seven kinds of records pass.
  std::istringstream cases(
      "ALL 7 finest 7 Finer 6 FINE 5 CONFIG 4 INFO 3 WARNING 2 SEVERE 1 OFF 0 3 0 INFOS 0");
  std::size_t passing = 0;
  for (std::string name; cases >> name >> passing;) {
    const TempFolder folder;
    Logger logger;
    logger.addFileHandler(folder / "one");
    logger.addFileHandler(folder / "two");
    logger.severe("off until a level is set");
    logger.setLevel(kz::String(name));
    logger.finest("1"), logger.finer("2"), logger.fine("3"), logger.config("4");
    logger.info("5"), logger.warning("6"), logger.severe("7");
    const std::string records = "1\n2\n3\n4\n5\n6\n7\n";
    EXPECT_EQ(readFile(folder / "one"), records.substr(records.size() - 2 * passing)) << name;
    EXPECT_EQ(readFile(folder / "two"), readFile(folder / "one")) << name;
  }
}

// Of opening the file: the status without words, or the words.
std::string failureOf(std::string const& name) {
  try {
    Logger().addFileHandler(name);
  } catch (kz::Exception const& failure) {
    const kz::String words = failure.getDescription();
    return words.isEmpty() ? std::to_string(failure.getResult()) : words.getBytes();
  }
  return "none";
}

TEST(Logger, OpensFilesOrSaysWhyNot) {
  const TempFolder folder;
  std::filesystem::current_path(folder.path());
  writeFile("old", "content");
  EXPECT_EQ(failureOf("old") + failureOf("a/b/new"), "nonenone");
  EXPECT_EQ(readFile("old"), "");
  EXPECT_TRUE(std::filesystem::is_regular_file("a/b/new"));
  EXPECT_EQ(failureOf("a"), std::to_string(kz::statusOfErrno(EISDIR)));
  EXPECT_EQ(failureOf("old/x"), std::to_string(kz::statusOfErrno(EEXIST)));
  std::filesystem::permissions(folder.path(), std::filesystem::perms{0555});
  const MessageHelper messages("KNOB", "KNOB_");
  const std::string reason = messages.getResStr("ACCESS_ERROR").getBytes();
  for (std::string const name : {"out", "c/x"}) {
    const std::string reported = name == "out" ? folder / name : name;
    const kz::String expected = messages.getResStr("ERR_CREATE_FILE", reported.c_str(),
                                                   reason.c_str(), kz::kStatusAccessDenied);
    EXPECT_EQ(asNobody([&] { return failureOf(name); }), expected.getBytes());
  }
  std::filesystem::permissions(folder.path(), std::filesystem::perms{0755});
  std::filesystem::current_path("/");
}

}  // namespace
