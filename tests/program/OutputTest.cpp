#include <gtest/gtest.h>

#include "output/CMSGStrings.h"
#include "output/MessageHelper.h"
#include "support/Process.h"
#include "support/TempFolder.h"

namespace {

// A bundle of the test's own.
struct Bundle {
  explicit Bundle(std::string const& content) { writeFile(path, content); }
  ~Bundle() { std::filesystem::remove(path); }
  const std::string path = programFolder() + "/" KNOB_BUNDLE_PATH "/TEST_output.properties";
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
  EXPECT_EQ(say("TEXT", (x2045 + "\u00e4x").c_str()), x2045 + "\u00e4");
  EXPECT_EQ(say("TEXT", (x2045 + "\U0001F600").c_str()), x2045);
  EXPECT_EQ(say("TEXT", (x2045 + "\x80\x80\x80").c_str()), x2045 + "\x80\x80");
}

TEST(CMSGStrings, MakesKeysAndDialogs) {
  kz::String key, title, message;
  CMSGStrings::MakeResString(" \t-3-\r\n", key);
  const Bundle bundle("M=message");
  CMSGStrings::PrepareDialog("TEST_output", "T", "M", title, message);
  EXPECT_EQ((key + " " + title + " " + message).getBytes(), "KZ_MSG_N3N T message");
}

}  // namespace
