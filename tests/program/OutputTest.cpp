#include <gtest/gtest.h>

#include "output/CMSGStrings.h"
#include "output/MessageArguments.h"
#include "output/MessageHelper.h"
#include "support/Process.h"
#include "support/TempFolder.h"

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
  for (const wchar_t* const text : {L"100%%", L"%s %s %d", L"%-9s%.3s", L"%s %s % 'i %%"}) {
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
  const Bundle special("TEST_HDR_COUNT=%d %s\nTEST_TAG_RANGE=%s\nTEST_7001=%d of %%", "_xx_YY");
  const Bundle language("TEST_HDR_COUNT=%n\nTEST_TAG_RANGE=ab %d", "_xx");
  const Bundle base("TEST_HDR_COUNT=%d settings\nTEST_TAG_RANGE=%d to %s\nTEST_NAME=%d");
  EXPECT_EQ(say("HDR_COUNT", 5), "5 settings");
  EXPECT_EQ(say("TAG_RANGE", 1, "x"), "ab 1");
  EXPECT_EQ(say("NAME", "1.0"), "TEST_NAME");
  EXPECT_EQ(say("7001"), "%d of %%");
}

TEST(CMSGStrings, MakesKeysAndDialogs) {
  kz::String key, title, message;
  CMSGStrings::MakeResString(" \t-3-\r\n", key);
  const Bundle bundle("M=message");
  CMSGStrings::PrepareDialog("TEST_output", "T", "M", title, message);
  EXPECT_EQ((key + " " + title + " " + message).getBytes(), "KZ_MSG_N3N T message");
}

}  // namespace
