#include <functional>
#include <gtest/gtest.h>

#include "kz/Exception.h"
#include "kz/i18n/StringBundle.h"
#include "support/Process.h"
#include "support/TempFolder.h"

using kz::i18n::StringBundle;

namespace {

std::string path(std::string const& language = "") {
  return programFolder() + "/../share/knob/TEST_kz" + language + ".properties";
}

class Bundle : public testing::Test {
 protected:
  Bundle() { speak("", "", ""); }
  ~Bundle() override {
    for (char const* const language : {"", "_de", "_de_DE"})
      std::filesystem::remove(path(language));
    speak("", "", "");
  }
  static void speak(char const* all, char const* messages, char const* language) {
    setenv("LC_ALL", all, 1);
    setenv("LC_MESSAGES", messages, 1);
    setenv("LANG", language, 1);
  }
  static kz::Reference<StringBundle> bundle() {
    const kz::i18n::Locale locale = kz::i18n::Locale::ofEnvironment();
    return StringBundle::getBundle("TEST_kz", &locale);
  }
  // The text, or what is wrong.
  static std::string lookUp(char const* key) {
    try {
      return bundle()->getString(key).getBytes();
    } catch (kz::ResultException const&) {
      return "no bundle";
    } catch (kz::Exception const&) {
      return "no key";
    }
  }
};

TEST_F(Bundle, IsReadAsItsFormatSays) {
  writeFile(path(),
            "# COMMENT=no\n\nno key here\nPLAIN=a text \n BLANKS\t= \t x=y # z\n"
            "ESCAPES=\\ta\\nb\\\\n\\u00e4\\u20AC\\u0020\nODD=\\q \\u12 \\u00zz \\\n"
            "UTF=\u20ac\xff\nCR=text\r\nEMPTY=\nTWICE=first\nTWICE=second\nLAST=no end");
  std::string all;
  for (char const* const key : {"PLAIN", "BLANKS", "ESCAPES", "ODD", "UTF", "CR", "EMPTY", "TWICE",
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
  const std::tuple<char const*, char const*, char const*, char const*> cases[] = {
      {"", "", "", "base"},
      {"de_DE.UTF-8", "C", "C", "de_DE"},
      {"", "de_DE@euro", "C", "de_DE"},
      {"C.UTF-8", "de", "de", "base"},
      {"", "", "de_AT.UTF-8", "de"},
      {"", "", "de_../x", "de"}};
  for (auto const& [all, messages, language, text] : cases) {
    speak(all, messages, language);
    EXPECT_EQ(lookUp("KEY") + lookUp("BASE"), text + std::string("only in base"));
  }
}

// A change that somebody else makes while the program runs.
void write(char const* content, std::string const& language = "") {
  inChild([&] { return writeFile(path(language), content), 0; });
}

TEST_F(Bundle, IsSeenAsItIsNowAndNotReadAgainWithoutNeed) {
  speak("", "", "de");
  const std::pair<std::function<void()>, char const*> steps[] = {
      {[] {}, "no bundle"},
      {[] { write("KEY=one"); }, "one"},
      {[] { write("KEY=two"); }, "two"},
      {[] { write("KEY=six", "~"), std::filesystem::rename(path("~"), path()); }, "six"},
      {[] { write("KEY=language", "_de"); }, "language"},
      {[] { std::filesystem::remove(path("_de")); }, "six"},
      {[] { std::filesystem::remove(path()); }, "no bundle"},
      {[] { write("KEY=back"); }, "back"}};
  for (auto const& [change, text] : steps) {
    change();
    EXPECT_EQ(lookUp("KEY"), text);
    EXPECT_EQ(lookUp("KEY"), text);
  }
  const kz::Reference<StringBundle> read = bundle();
  write("a neighbour", "_de_DE");
  EXPECT_EQ(bundle().get(), read.get());
  write("KEY=text");
  EXPECT_NE(bundle().get(), read.get());
  EXPECT_EQ(read->getString("KEY").getBytes(), "back") << "whoever holds it may go on reading";
}

}  // namespace
