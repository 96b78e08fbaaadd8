// The foundation layer: texts, lines of files, statuses, message bundles.
#include <cerrno>
#include <functional>
#include <gtest/gtest.h>

#include "kz/Exception.h"
#include "kz/i18n/StringBundle.h"
#include "kz/io/BufferedReader.h"
#include "kz/io/FileInputStream.h"
#include "kz/io/InputStreamReader.h"
#include "kz/util/StringTokenizer.h"
#include "support/Process.h"
#include "support/TempFolder.h"

using kz::String;
using kz::i18n::StringBundle;

namespace {

TEST(Text, KeepsEveryByte) {
  // Four characters, then bytes that are none: stray, cut off, overlong, surrogates, too great.
  const std::string bytes =
      "\u00e4\u20ac\U0001F600\U0010FFFF\xff\xfe\xe2\x82z\xe2\x82\xac\xc0\x80\xe0\x80\x80"
      "\xed\xa0\x80\xf4\x90\x80\x80\xf5\x80";
  EXPECT_EQ(String(bytes).getBytes(), bytes);
  EXPECT_EQ(String(bytes).length(), 24);
}

TEST(Text, IsTakenApart) {
  std::string all;
  kz::util::StringTokenizer words(" a  b;c ", L" ;"), everything(" a;;b", L" ;", true);
  while (words.hasMoreTokens()) all += words.nextToken().getBytes() + "|";
  while (everything.hasMoreTokens()) all += everything.nextToken().getBytes() + "|";
  EXPECT_EQ(all, "a|b|c| |a|;|;|b|");
  const String text("abcd");
  EXPECT_EQ((text.substring(1, 2) + "|" + text.substring(9)).getBytes(), "bc|");
}

TEST(Reader, GivesTheSameLinesWhereverItsBufferEnds) {
  const TempFolder folder;
  const std::string limit(2047, 'x');  // the line ends where the program's buffers do
  const std::string content =
      "ab\n\nx\u20ac\r\n\U0001F600\xff\n" + limit + "\n" + limit + "\u20ac\nend\xe2\x82";
  writeFile(folder / "file", content);
  for (const long size : {4L, 5L, 6L, 2047L, 2048L}) {
    kz::io::InputStream* const bytes = new kz::io::FileInputStream(folder / "file");
    kz::io::BufferedReader reader(new kz::io::InputStreamReader(bytes, nullptr, size), size);
    std::string lines;
    for (String line; reader.readLine(line) >= 0;) lines += line.getBytes() + "\n";
    EXPECT_EQ(lines, content + "\n") << size;
  }
}

TEST(Status, TellsFailuresApartAndIsNeverZeroToAShell) {
  for (int error = -1; error < 5000; ++error) {
    const int status = kz::statusOfErrno(error);
    const bool denied = error == EACCES || error == EPERM || error == EROFS;
    EXPECT_NE(status & 0xFF, 0) << error;
    EXPECT_EQ(status == kz::kStatusAccessDenied, denied) << error;
    EXPECT_EQ(status == kz::kStatusFileNotFound, error == ENOENT) << error;
  }
}

class Bundle : public testing::Test {
 protected:
  ~Bundle() override {
    for (const std::string& each : {base, german, austrian}) std::filesystem::remove(each);
  }
  static kz::Reference<StringBundle> bundle(const kz::i18n::Locale* language) {
    return StringBundle::getBundle("TEST_kz", language);
  }
  std::string lookUp(const char* key) const {
    try {
      return bundle(&language)->getString(key).getBytes();
    } catch (const kz::Exception&) {
      return "none";
    }
  }
  const std::string folder = programFolder() + "/" KNOB_BUNDLE_PATH "/";
  const std::string base = folder + "TEST_kz.properties", german = folder + "TEST_kz_de.properties",
                    austrian = folder + "TEST_kz_de_AT.properties";
  const kz::i18n::Locale language{"de"};
};

TEST_F(Bundle, IsReadAsItsFormatSays) {
  writeFile(base,
            "\uFEFFPLAIN=a text \n# COMMENT=no\n\nno key here\n BLANKS\t= \t x=y # z\n"
            "ESCAPES=\\ta\\nb\\\\n\\u00e4\\u20AC\\u0020\nODD=\\q \\u12 \\u00zz \\\n"
            "UTF=\u20ac\xff\nCR=text\r\nEMPTY=\nTWICE=first\nTWICE=second\nLAST=no end");
  std::string all;
  for (const char* const key :
       {"PLAIN", "BLANKS", "ESCAPES", "ODD", "UTF", "CR", "EMPTY", "TWICE", "LAST", "# COMMENT"}) {
    all += lookUp(key) + "|";
  }
  EXPECT_EQ(all,
            "a text |x=y # z|\ta\nb\\n\u00e4\u20ac |\\q \\u12 \\u00zz \\|\u20ac\xff|text||second|"
            "no end|none|");
}

TEST_F(Bundle, SpeaksTheLanguageOfTheEnvironment) {
  writeFile(base, "KEY=base");
  writeFile(german, "KEY=de");
  writeFile(austrian, "KEY=de_AT");
  const struct {
    const char *all, *messages, *named, *text;
  } cases[] = {{"de_AT.UTF-8", "C", "C", "de_AT"},
               {"", "de_AT@euro", "C", "de_AT"},
               {"C.UTF-8", "de", "de", "base"},
               {"", "", "de_DE.UTF-8", "de"}};
  for (const auto& test : cases) {
    // In a process of its own: the language is that of the first look at it.
    const auto speaks = [&] {
      setenv("LC_ALL", test.all, 1);
      setenv("LC_MESSAGES", test.messages, 1);
      setenv("LANG", test.named, 1);
      return bundle(nullptr)->getString("KEY").equals(test.text);
    };
    EXPECT_EQ(1, inChild(speaks)) << test.text;
  }
}

TEST_F(Bundle, IsSeenAsItIsNowAndNotReadAgainWithoutNeed) {
  const std::string other = folder + "TEST_kz~";
  const std::pair<std::function<void()>, const char*> steps[] = {
      {[] {}, "none"},
      {[&] { writeFile(base, "KEY=one"); }, "one"},
      {[&] { writeFile(base, "KEY=two"); }, "two"},
      {[&] { writeFile(other, "KEY=six"), std::filesystem::rename(other, base); }, "six"},
      {[&] { writeFile(german, "KEY=language"); }, "language"},
      {[&] { std::filesystem::remove(german); }, "six"},
      {[&] { std::filesystem::remove(base); }, "none"},
      // A file that was there long before.
      {[&] { std::filesystem::create_symlink("KNOB.properties", base); }, "none"},
      {[&] { std::filesystem::remove(base), writeFile(base, "KEY=back"); }, "back"}};
  for (const auto& [change, text] : steps) {
    change();
    EXPECT_EQ(lookUp("KEY"), text);
  }
  EXPECT_EQ(bundle(&language).get(), bundle(&language).get());
}

}  // namespace
