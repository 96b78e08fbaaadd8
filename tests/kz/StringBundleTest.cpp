#include <functional>
#include <gtest/gtest.h>

#include "kz/Exception.h"
#include "kz/i18n/StringBundle.h"
#include "support/Process.h"
#include "support/TempFolder.h"

using kz::i18n::StringBundle;

namespace {

std::string path(const std::string& language = "") {
  return programFolder() + "/" KNOB_BUNDLE_PATH "/TEST_kz" + language + ".properties";
}

class Bundle : public testing::Test {
 protected:
  ~Bundle() override {
    for (const char* const suffix : {"", "_de", "_de_DE"}) std::filesystem::remove(path(suffix));
  }
  kz::Reference<StringBundle> bundle() const {
    return StringBundle::getBundle("TEST_kz", &language);
  }
  // The text, or what is wrong.
  std::string lookUp(const char* key) const {
    try {
      return bundle()->getString(key).getBytes();
    } catch (const kz::ResultException&) {
      return "no bundle";
    } catch (const kz::Exception&) {
      return "no key";
    }
  }
  kz::i18n::Locale language{"C"};
};

TEST_F(Bundle, IsReadAsItsFormatSays) {
  writeFile(path(),
            "# COMMENT=no\n\nno key here\nPLAIN=a text \n BLANKS\t= \t x=y # z\n"
            "ESCAPES=\\ta\\nb\\\\n\\u00e4\\u20AC\\u0020\nODD=\\q \\u12 \\u00zz \\\n"
            "UTF=\u20ac\xff\nCR=text\r\nEMPTY=\nTWICE=first\nTWICE=second\nLAST=no end");
  std::string all;
  for (const char* const key : {"PLAIN", "BLANKS", "ESCAPES", "ODD", "UTF", "CR", "EMPTY", "TWICE",
                                "LAST", "# COMMENT", "plain"}) {
    all += lookUp(key) + "|";
  }
  EXPECT_EQ(all,
            "a text |x=y # z|\ta\nb\\n\u00e4\u20ac |\\q \\u12 \\u00zz \\|\u20ac\xff|text||second|"
            "no end|no key|no key|");
}

TEST_F(Bundle, SpeaksTheLanguageOfTheEnvironment) {
  writeFile(path(), "KEY=base\nBASE=only here");
  writeFile(path("_de"), "KEY=de");
  writeFile(path("_de_DE"), "KEY=de_DE");
  const struct {
    const char *all, *messages, *named, *text;
  } cases[] = {{"", "", "", "base"},
               {"de_DE.UTF-8", "C", "C", "de_DE"},
               {"", "de_DE@euro", "C", "de_DE"},
               {"C.UTF-8", "de", "de", "base"},
               {"", "", "de_AT.UTF-8", "de"},
               {"", "", "de_../x", "de"}};
  for (const auto& test : cases) {
    // In a process of its own: the language is that of the first look at it.
    const auto speaks = [&] {
      setenv("LC_ALL", test.all, 1);
      setenv("LC_MESSAGES", test.messages, 1);
      setenv("LANG", test.named, 1);
      const auto own = StringBundle::getBundle("TEST_kz", nullptr);
      return own->getString("KEY").equals(test.text) && own->getString("BASE").equals("only here");
    };
    EXPECT_EQ(1, inChild(speaks)) << test.text;
  }
}

TEST_F(Bundle, IsSeenAsItIsNowAndNotReadAgainWithoutNeed) {
  language = kz::i18n::Locale("de");
  const std::string file = path(), other = path("~"), german = path("_de");
  const std::pair<std::function<void()>, const char*> steps[] = {
      {[] {}, "no bundle"},
      {[&] { writeFile(file, "KEY=one"); }, "one"},
      {[&] { writeFile(file, "KEY=two"); }, "two"},
      {[&] { writeFile(other, "KEY=six"), std::filesystem::rename(other, file); }, "six"},
      {[&] { writeFile(german, "KEY=language"); }, "language"},
      {[&] { std::filesystem::remove(german); }, "six"},
      {[&] { std::filesystem::remove(file); }, "no bundle"},
      // A file that was there long before.
      {[&] { std::filesystem::create_symlink("KNOB.properties", file); }, "no key"},
      {[&] { std::filesystem::remove(file), writeFile(other, "KEY=link"); }, "no bundle"},
      {[&] { std::filesystem::create_symlink(other, file); }, "link"},
      {[&] { writeFile(other, "KEY=file"); }, "file"},
      {[&] { std::filesystem::remove(other); }, "no bundle"},
      {[&] { std::filesystem::remove(file), writeFile(file, "KEY=back"); }, "back"}};
  for (const auto& [change, text] : steps) {
    change();
    EXPECT_EQ(lookUp("KEY"), text);
    EXPECT_EQ(lookUp("KEY"), text);
  }
  const kz::Reference<StringBundle> read = bundle();
  writeFile(path("_de_DE"), "a neighbour");
  writeFile(file, "KEY=back");
  EXPECT_EQ(bundle().get(), read.get());
  writeFile(file, "KEY=text");
  EXPECT_NE(bundle().get(), read.get());
  EXPECT_EQ(read->getString("KEY").getBytes(), "back") << "whoever holds it may go on reading";
}

}  // namespace
