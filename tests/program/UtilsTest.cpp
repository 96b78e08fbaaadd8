#include <gtest/gtest.h>

#include "util/NumberFormatException.h"
#include "util/Utils.h"

namespace {

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
