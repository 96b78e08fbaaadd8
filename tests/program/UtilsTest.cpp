#include <gtest/gtest.h>
#include <memory>

#include "kz/Status.h"
#include "support/OtherUser.h"
#include "util/NumberFormatException.h"
#include "util/Utils.h"

namespace {

kz::Reference<Utils::StringList> listOf(std::vector<char const*> const& texts) {
  kz::Reference<Utils::StringList> list(new Utils::StringList);
  for (char const* const text : texts) list->add(new kz::String(text));
  return list;
}

TEST(Utils, ParsesNumbers) {
  for (auto const& [text, number] : std::vector<std::pair<char const*, int>>{
           {" 42\t", 42}, {"\r\n7\n", 7}, {" 0 ", 0}, {"-12", -12}}) {
    EXPECT_EQ(Utils::parseInt(text), number);
    EXPECT_EQ(Utils::parseLong(text), number);
  }
  for (char const* const text : {"", "   ", "00", "+0", "-0", "12abc", "0x10", "1.5", "--5", "-",
                                 "\u0665", "\v5", "9223372036854775808"}) {
    EXPECT_THROW(Utils::parseInt(text), NumberFormatException) << text;
    EXPECT_THROW(Utils::parseLong(text), NumberFormatException) << text;
  }
  EXPECT_EQ(Utils::parseLong("-9223372036854775807"), -9223372036854775807);
  EXPECT_THROW(Utils::parseInt("2147483648"), NumberFormatException);
  const std::unique_ptr<int[]> two(Utils::convertStringListToIntArray(listOf({"1", " 2"}).get()));
  EXPECT_EQ(two[0] * 10 + two[1], 12);
  EXPECT_THROW(Utils::convertStringListToIntArray(listOf({"1", "x"}).get()), NumberFormatException);
}

TEST(Utils, WritesVersionsAndTimes) {
  kz::String version("9.1.2.3"), wide("100.200.3000.4");
  Utils::formatEngVerString(version);
  Utils::formatEngVerString(wide);
  EXPECT_EQ((version + " " + wide).getBytes(), "09.01.002.3 100.200.3000.4");
  EXPECT_EQ(Utils::convertTimeInSecs(90061).getBytes(), "1 day  01:01:01");
  EXPECT_EQ(Utils::convertTimeInSecs(172799).getBytes(), "1 day  23:59:59");
  EXPECT_EQ(Utils::convertTimeInSecs(172800).getBytes(), "2 days  00:00:00");
  EXPECT_EQ(Utils::getTime(std::string(99, 'x').c_str()).length(), 99);
  EXPECT_EQ(Utils::getTime(std::string(100, 'x').c_str()).length(), 0);
}

TEST(Utils, CreatesTheDirectoriesOfAFile) {
  const TempFolder folder;
  std::filesystem::current_path(folder.path());
  writeFile("file", "");
  for (std::string const path : {"out", "/out", "a/b/c", "d//e/f", "a/b/g", "\xff/h"}) {
    EXPECT_EQ(Utils::createDirs(path), 0) << path;
    EXPECT_TRUE(std::filesystem::is_directory(std::filesystem::path(path).parent_path() / "."));
    EXPECT_FALSE(Utils::fileExist(path)) << path;
  }
  EXPECT_EQ(Utils::createDirs(folder / "i/j"), 0);
  EXPECT_TRUE(Utils::dirExist("i"));
  EXPECT_NE(Utils::createDirs("file/k/l") & 0xFF, 0);
  std::filesystem::permissions("a", std::filesystem::perms{0555});
  EXPECT_EQ(asNobody([] { return std::to_string(Utils::createDirs("a/m/n")); }),
            std::to_string(kz::kStatusAccessDenied));
  std::filesystem::permissions("a", std::filesystem::perms{0755});
  std::filesystem::current_path("/");
}

}  // namespace
