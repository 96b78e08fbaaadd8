// The parts of the program that its users do not see all of.
#include <gtest/gtest.h>

#include "output/CMSGStrings.h"
#include "output/MessageArguments.h"
#include "output/MessageHelper.h"
#include "service/SvcConfigHelper.h"
#include "support/Process.h"
#include "support/TempFolder.h"
#include "util/NumberFormatException.h"
#include "util/Utils.h"

namespace {

// The language is that of the first look at it, in whichever test; no bundle but those here has it.
[[maybe_unused]] const int kLanguage = setenv("LC_ALL", "xx_YY.UTF-8", 1);

// A bundle of the test's own.
struct Bundle {
  explicit Bundle(const std::string& content, const std::string& language = "")
      : path(programFolder() + "/" KNOB_BUNDLE_PATH "/TEST_output" + language + ".properties") {
    writeFile(path, content);
  }
  ~Bundle() { std::filesystem::remove(path); }
  const std::string path;
};

template <typename... Arguments>
std::string say(const char* key, Arguments... arguments) {
  return MessageHelper("TEST_output", "TEST_").getResStr(key, arguments...).getBytes();
}

TEST(MessageHelper, CompletesTextsAndNeverFails) {
  EXPECT_EQ(say("KEY", 5), "The resource bundle is not installed");
  const std::string x1022(1022, 'x'), x2045(2045, 'x'), euro = "\u20ac";
  const Bundle bundle("TEST_KEY=%s: 100%% of %d (0x%08X)\nTEST_TEXT=%s\nTEST_LONG=" + x1022 + euro);
  EXPECT_EQ(say("KEY", "\xff\u00e4", -3, -1), "\xff\u00e4: 100% of -3 (0xFFFFFFFF)");
  EXPECT_EQ(say("MISSING", 5), "TEST_MISSING");
  EXPECT_EQ(say("LONG"), x1022) << "cut before the character that does not end at 1,023";
  EXPECT_EQ(say("TEXT", (x2045 + "\u00e4x").c_str()), x2045 + "\u00e4");
  EXPECT_EQ(say("TEXT", (x2045 + "\U0001F600").c_str()), x2045);
  EXPECT_EQ(say("TEXT", (x2045 + "\x80\x80\x80").c_str()), x2045 + "\x80\x80");
}

TEST(MessageHelper, FormatsNoTextThatAsksForMoreThanItsKeyHas) {
  // ERR_READ_FILE has a text, a text and a number.
  const auto kinds = MessageArguments::of("ERR_READ_FILE");
  for (const wchar_t* const text : {L"100%%", L"%s%s%08X", L"%-9s%.3s", L"%s %s % 'i %%"}) {
    EXPECT_TRUE(MessageArguments::suffice(*kinds, text)) << kz::String(text).getBytes();
  }
  for (const wchar_t* const text :
       {L"%s%s%d%s", L"%s %d", L"%s%s%s", L"%s%n", L"%*s", L"%.*s", L"%1$s", L"%ls", L"%s%s%ld",
        L"%s%s%c", L"%s%s%f", L"%m", L"100%", L"%s %", L"%.", L"%99999s", L"%.99999s", L"%5%",
        L"%%%%%s%%%d"}) {
    EXPECT_FALSE(MessageArguments::suffice(*kinds, text)) << kz::String(text).getBytes();
  }
}

TEST(MessageHelper, TakesTheTextOfALessSpecialLanguageForOneThatAsksForTooMuch) {
  const Bundle special("TEST_HDR_COUNT=%d %s\nTEST_TAG_RANGE=%s\nTEST_-7=%x", "_xx_YY");
  const Bundle language("TEST_HDR_COUNT=%n\nTEST_TAG_RANGE=ab %d", "_xx");
  const Bundle base(
      "TEST_HDR_COUNT=%d settings\nTEST_TAG_RANGE=%d to %s\nTEST_NAME=%d\nTEST_8002=100%% of %%");
  EXPECT_EQ(say("HDR_COUNT", 5), "5 settings");
  EXPECT_EQ(say("TAG_RANGE", 1, "x"), "ab 1");
  EXPECT_EQ(say("NAME", "1.0"), "TEST_NAME");
  EXPECT_EQ(say("-7") + say("8002"), "TEST_-7100% of %");
}

TEST(CMSGStrings, MakesKeysAndDialogs) {
  kz::String key, title, message;
  CMSGStrings::MakeResString(" \t-3-\r\n", key);
  const Bundle bundle("M=message");
  CMSGStrings::PrepareDialog("TEST_output", "T", "M", title, message);
  EXPECT_EQ((key + " " + title + " " + message).getBytes(), "KZ_MSG_N3N T message");
}

TEST(Service, StopsTheInterfaceOnceWhenItCannotConnect) {
  const TempFolder folder;
  setenv("TN_RECORD", (folder / "calls").c_str(), 1);
  setenv("TN_ANSWER", "TnConnectServer=7012", 1);
  SvcConfigHelper service;
  EXPECT_THROW(service.connect("file:x", "me", ""), SvcException);
  service.disconnect();
  EXPECT_EQ("TnStart 0\nTnConnectServer file:x me \nTnStop 0\n", readFile(folder / "calls"));
  unsetenv("TN_RECORD");
  unsetenv("TN_ANSWER");
}

TEST(Service, TellsTheStatusOfEveryCall) {
  SvcConfigHelper service;
  service.connect("", "", "");
  EXPECT_EQ(kz::Reference(service.getSettingInfoList(7))->size(), 8);
  service.disconnect();
  const auto codeOf = [&](const auto& call) {
    try {
      call();
    } catch (const SvcException& failure) {
      const int code = failure.getErrorCode();
      EXPECT_TRUE(failure.getDescription().equals(service.createErrorMsg(code)));
      return code;
    }
    return 0;
  };
  const int refused = TN_INVALID_HANDLE;  // without a connection
  kz::String text;
  int number = 0;
  EXPECT_EQ(refused, codeOf([&] { service.getCategoryList(); }));
  EXPECT_EQ(refused, codeOf([&] { service.getCategoryListCount(); }));
  EXPECT_EQ(refused, codeOf([&] { service.getSettingInfoList(1); }));
  EXPECT_EQ(refused, codeOf([&] { service.getStringValue(74, 2); }));
  EXPECT_EQ(refused, codeOf([&] { service.getLongValue(25, 2); }));
  EXPECT_EQ(refused, codeOf([&] { service.getBooleanValue(42, 2); }));
  EXPECT_EQ(refused, codeOf([&] { service.getBooleanStrings(42, text, text); }));
  EXPECT_EQ(refused, codeOf([&] { service.getSelectionValues(83, 2); }));
  EXPECT_EQ(refused, codeOf([&] { service.getSelectionString(83, 0); }));
  EXPECT_EQ(refused, codeOf([&] { service.getAllPossibleSelections(83); }));
  EXPECT_EQ(refused, codeOf([&] { service.getValueLimit(25, &number, &number); }));
  EXPECT_EQ(refused, codeOf([&] { service.setStringValue(74, "a", 2); }));
  EXPECT_EQ(refused, codeOf([&] { service.setLongValue(25, 5, 2); }));
  EXPECT_EQ(refused, codeOf([&] { service.setBooleanValue(42, true, 2); }));
  EXPECT_EQ(refused, codeOf([&] { service.setSelectionValue(83, 1, &number, 2); }));
}

TEST(Utils, ParsesNumbers) {
  for (const auto& [text, number] :
       {std::pair{" 42\t", 42}, {"\r\n7\n", 7}, {" 007 ", 7}, {" 0 ", 0}, {"-12", -12}}) {
    EXPECT_EQ(Utils::parseInt(text), number);
    EXPECT_EQ(Utils::parseLong(text), number);
  }
  for (const char* const text : {"", "   ", "00", "+0", "-0", "12abc", "0x10", "1.5", "--5", "-",
                                 "\u0665", "\v5", "9223372036854775808"}) {
    EXPECT_THROW(Utils::parseInt(text), NumberFormatException) << text;
    EXPECT_THROW(Utils::parseLong(text), NumberFormatException) << text;
  }
  EXPECT_THROW(Utils::parseInt("2147483648"), NumberFormatException);
}

TEST(Utils, WritesVersionsAndTimes) {
  kz::String version("9.1.2000.3");
  Utils::formatEngVerString(version);
  EXPECT_EQ(version.getBytes(), "09.01.2000.3");
  EXPECT_EQ(Utils::convertTimeInSecs(176461).getBytes(), "2 days  01:01:01");
  EXPECT_EQ(Utils::getTime(std::string(100, 'x').c_str()).length(), 0);
}

}  // namespace
