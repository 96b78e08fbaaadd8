// Holds the message bundles against what the program does with them: the keys that it asks for, the
// arguments that it passes, and the statuses that a user can be shown.
#include <gtest/gtest.h>
#include <map>
#include <regex>
#include <set>

#include "kz/String.h"
#include "output/MessageArguments.h"
#include "support/TempFolder.h"

namespace {

using Texts = std::map<std::string, std::string>;

const std::string kSource = KNOB_SOURCE_DIR;

// The lines KEY=text of a file in share/knob.
Texts bundle(const std::string& name) {
  Texts texts;
  std::ifstream lines(kSource + "/share/knob/" + name + ".properties");
  for (std::string line; std::getline(lines, line);) {
    const std::size_t equals = line.find('=');
    if (line.starts_with('#') || equals == std::string::npos) continue;
    texts[line.substr(0, equals)] = line.substr(equals + 1);
  }
  return texts;
}

// What the expression's group matches in the text, each once.
std::set<std::string> scan(const std::string& text, const std::string& expression) {
  const std::regex wanted(expression);
  return {std::sregex_token_iterator(text.begin(), text.end(), wanted, 1), {}};
}

// Whether the text's conversions are exactly those of its key, and it fits the program's buffers.
bool takesItsArguments(const std::string& key, const std::string& raw) {
  const std::string kinds(MessageArguments::of(key.substr(key.find('_') + 1)).value_or(""));
  const std::wstring text = kz::String(raw).characters();
  const auto suffice = [&](const std::string& to) { return MessageArguments::suffice(to, text); };
  return suffice(kinds) && (kinds.empty() || !suffice(kinds.substr(0, kinds.size() - 1))) &&
         !raw.empty() && raw.size() <= 1023;
}

TEST(Bundles, HoldTheKeysThatAreAskedFor) {
  std::string code;
  for (const auto& entry : std::filesystem::recursive_directory_iterator(kSource + "/src")) {
    if (entry.path().extension() == ".cpp") code += readFile(entry.path());
  }
  for (const std::string& key : scan(code, "getResStr\\(\"([A-Z_]+)")) {
    EXPECT_TRUE(MessageArguments::of(key)) << key << " is asked for";
  }
  const Texts program = bundle("KNOB");
  for (const auto& [key, kinds] : MessageArguments::table()) {
    EXPECT_TRUE(program.contains("KNOB_" + std::string(key))) << key;
  }
}

TEST(Bundles, GiveEachStatusASentence) {
  const std::string header = readFile(kSource + "/src/service/TuningInterface.h");
  std::set<std::string> described;
  for (const auto& [key, text] : bundle("TNMSG")) {
    described.insert(key.substr(key.rfind('_') + 1));
    EXPECT_TRUE(text.ends_with('.') && isupper(text[0])) << key << text;
  }
  EXPECT_EQ(described, scan(header, " = (7[0-9]{3})"));
}

TEST(Bundles, AreWholeAndWithoutABreakInEveryLanguage) {
  int translations = 0;
  for (const auto& entry : std::filesystem::directory_iterator(kSource + "/share/knob")) {
    if (entry.path().extension() != ".properties") continue;
    const std::string name = entry.path().stem().string();
    const Texts base = bundle(name.substr(0, name.find('_'))), texts = bundle(name);
    const bool isTranslation = name.find('_') != name.npos;
    translations += isTranslation;
    for (const auto& [key, text] : base) {
      EXPECT_TRUE(texts.contains(key) || key.starts_with("KNOB_TAG_")) << name << ": " << key;
    }
    for (const auto& [key, text] : texts) {
      SCOPED_TRACE(name + ": " + key);
      EXPECT_TRUE(base.contains(key)) << "the English bundle has no such key";
      EXPECT_TRUE(takesItsArguments(key, text)) << text;
      EXPECT_FALSE(isTranslation && (key == "KNOB_TAG_ID" || key == "KNOB_TAG_VALUE"))
          << "an import finds settings by this text, whatever the language of the export was";
      EXPECT_TRUE(key != "KNOB_NAME" || kz::String(text).indexOf("%", 0, false) == 22);
    }
  }
  EXPECT_GT(translations, 0);
}

}  // namespace
