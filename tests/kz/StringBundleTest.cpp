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
  writeFile(path(), "KEY=base\nBASE=only in base");
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
    EXPECT_EQ(1, inChild([&test] {
                setenv("LC_ALL", test.all, 1);
                setenv("LC_MESSAGES", test.messages, 1);
                setenv("LANG", test.named, 1);
                const auto own = StringBundle::getBundle("TEST_kz", nullptr);
                return own->getString("KEY").equals(test.text) &&
                       own->getString("BASE").equals("only in base");
              }))
        << test.text;
  }
}

// A change that somebody else makes while the program runs.
void write(const char* content, const std::string& language = "") {
  inChild([&] { return writeFile(path(language), content), 0; });
}

TEST_F(Bundle, IsSeenAsItIsNowAndNotReadAgainWithoutNeed) {
  language = kz::i18n::Locale("de");
  const std::pair<std::function<void()>, const char*> steps[] = {
      {[] {}, "no bundle"},
      {[] { write("KEY=one"); }, "one"},
      {[] { write("KEY=two"); }, "two"},
      {[] { write("KEY=six", "~"), std::filesystem::rename(path("~"), path()); }, "six"},
      {[] { write("KEY=language", "_de"); }, "language"},
      {[] { std::filesystem::remove(path("_de")); }, "six"},
      {[] { std::filesystem::remove(path()); }, "no bundle"},
      // A file that was there long before.
      {[] { std::filesystem::create_symlink("KNOB.properties", path()); }, "no key"},
      {[] { std::filesystem::remove(path()); }, "no bundle"},
      {[] { write("KEY=link", "~"), std::filesystem::create_symlink(path("~"), path()); }, "link"},
      {[] { write("KEY=file", "~"); }, "file"},
      {[] { std::filesystem::remove(path("~")); }, "no bundle"},
      {[] { std::filesystem::remove(path()), write("KEY=back"); }, "back"}};
  for (const auto& [change, text] : steps) {
    change();
    EXPECT_EQ(lookUp("KEY"), text);
    EXPECT_EQ(lookUp("KEY"), text);
  }
  const kz::Reference<StringBundle> read = bundle();
  write("a neighbour", "_de_DE");
  write("KEY=back");
  EXPECT_EQ(bundle().get(), read.get());
  write("KEY=text");
  EXPECT_NE(bundle().get(), read.get());
  EXPECT_EQ(read->getString("KEY").getBytes(), "back") << "whoever holds it may go on reading";
}

}  // namespace
