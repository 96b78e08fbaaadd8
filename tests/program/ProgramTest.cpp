// The parts of the program that its users do not see all of.
#include <gtest/gtest.h>

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
        L"%s%s%f", L"%m", L"100%", L"%.", L"%99999s", L"%.99999s", L"%5%"}) {
    EXPECT_FALSE(MessageArguments::suffice(*kinds, text)) << kz::String(text).getBytes();
  }
}

TEST(MessageHelper, TakesTheTextOfALessSpecialLanguageForOneThatAsksForTooMuch) {
  const Bundle special("TEST_HDR_COUNT=%d %s\nTEST_TAG_RANGE=%s\nTEST_-7=%x", "_xx_YY");
  const Bundle language("TEST_HDR_COUNT=%n\nTEST_TAG_RANGE=ab %d", "_xx");
  const Bundle base("TEST_HDR_COUNT=%d settings\nTEST_TAG_RANGE=%d to %s\nTEST_NAME=%d");
  EXPECT_EQ(say("HDR_COUNT", 5), "5 settings");
  EXPECT_EQ(say("TAG_RANGE", 1, "x"), "ab 1");
  EXPECT_EQ(say("NAME", "1.0") + say("-7"), "TEST_NAMETEST_-7");
}

TEST(Service, TellsOfEveryCallThatFails) {
  SvcConfigHelper service;
  service.connect("", "", "");
  service.disconnect();  // so that there is no connection
  kz::String text;
  int number = 0;
  EXPECT_THROW(service.getCategoryList(), SvcException);
  EXPECT_THROW(service.getCategoryListCount(), SvcException);
  EXPECT_THROW(service.getSettingInfoList(1), SvcException);
  EXPECT_THROW(service.getStringValue(74, 2), SvcException);
  EXPECT_THROW(service.getLongValue(25, 2), SvcException);
  EXPECT_THROW(service.getBooleanValue(42, 2), SvcException);
  EXPECT_THROW(service.getBooleanStrings(42, text, text), SvcException);
  EXPECT_THROW(service.getSelectionValues(83, 2), SvcException);
  EXPECT_THROW(service.getSelectionString(83, 0), SvcException);
  EXPECT_THROW(service.getAllPossibleSelections(83), SvcException);
  EXPECT_THROW(service.getValueLimit(25, &number, &number), SvcException);
  EXPECT_THROW(service.setStringValue(74, "a", 2), SvcException);
  EXPECT_THROW(service.setLongValue(25, 5, 2), SvcException);
  EXPECT_THROW(service.setBooleanValue(42, true, 2), SvcException);
  EXPECT_THROW(service.setSelectionValue(83, 1, &number, 2), SvcException);
}

TEST(Utils, ParsesNumbers) {
  const std::pair<const char*, int> numbers[] = {
      {" 42\t", 42}, {"\r\n007 ", 7}, {" 0 ", 0}, {"-12", -12}};
  for (const auto& [text, number] : numbers) EXPECT_EQ(Utils::parseInt(text), number);
  for (const char* const text : {"", " ", "00", "+0", "-0", "12abc", "0x10", "1.5", "--5", "-",
                                 "\u0665", "\v5", "2147483648"}) {
    EXPECT_THROW(Utils::parseInt(text), NumberFormatException) << text;
  }
  EXPECT_EQ(Utils::parseLong("2147483648"), 2147483648);
  EXPECT_THROW(Utils::parseLong("9223372036854775808"), NumberFormatException);
}

}  // namespace
