// Holds the message bundles against what the program does with them: the keys that it asks for, the
// arguments that it passes, and the statuses that a user can be shown.
#include <gtest/gtest.h>
#include <map>

#include "kz/String.h"
#include "output/MessageArguments.h"
#include "support/TempFolder.h"

namespace {

using Texts = std::map<std::string, std::string>;

const std::string kSource = KNOB_SOURCE_DIR;

// The lines KEY=text; of a file in share/knob, without the prefix of the keys.
Texts bundle(const std::string& name, const std::string& prefix = "") {
  Texts texts;
  std::ifstream lines(kSource + "/share/knob/" + name + ".properties");
  for (std::string line; std::getline(lines, line);) {
    const std::size_t equals = line.find('=');
    if (line.starts_with('#') || equals == std::string::npos) continue;
    const std::size_t start = line.starts_with(prefix) ? prefix.size() : 0;
    texts[line.substr(start, equals - start)] = line.substr(equals + 1);
  }
  return texts;
}

// Each key of the program's bundle with the kinds of its arguments.
const Texts kKeys = [] {
  Texts keys;
  for (const auto& [key, kinds] : MessageArguments::table()) keys.emplace(key, kinds);
  return keys;
}();

// Whether the text's conversions are exactly these, and it fits the program's buffers.
bool takes(const std::string& kinds, const std::string& raw) {
  const std::wstring text = kz::String(raw).characters();
  const auto suffice = [&](const std::string& to) { return MessageArguments::suffice(to, text); };
  return suffice(kinds) && (kinds.empty() || !suffice(kinds.substr(0, kinds.size() - 1))) &&
         !raw.empty() && raw.size() <= 1023;
}

// What stands after each occurrence of the beginning, as far as it is made of these characters.
std::vector<std::string> scan(const std::string& text, const std::string& beginning,
                              const char* characters) {
  std::vector<std::string> found;
  for (std::size_t at = 0; (at = text.find(beginning, at)) != std::string::npos;) {
    at += beginning.size();
    found.push_back(text.substr(at, text.find_first_not_of(characters, at) - at));
  }
  return found;
}

TEST(Bundles, GiveEachKeyATextThatTakesItsArguments) {
  const Texts program = bundle("KNOB", "KNOB_");
  Texts expected = kKeys;
  expected.merge(Texts{{"8002", ""}, {"8004", ""}});
  for (const auto& [key, kinds] : expected) {
    EXPECT_TRUE(program.contains(key) && takes(kinds, program.at(key))) << key;
  }
  EXPECT_EQ(program.size(), expected.size());
  EXPECT_EQ(program.at("NAME").find('%'), 22U) << "the version is what comes after 22 characters";
}

TEST(Bundles, AreAskedForTheirKeysAndNoOthers) {
  std::string code;
  for (const auto& entry : std::filesystem::recursive_directory_iterator(kSource + "/src")) {
    if (entry.path().extension() == ".cpp") code += readFile(entry.path());
  }
  for (const std::string& key : scan(code, "getResStr(\"", "ABCDEFGHIJKLMNOPQRSTUVWXYZ_")) {
    EXPECT_TRUE(kKeys.contains(key)) << key << " is asked for";
  }
  for (const auto& [key, kinds] : kKeys) {
    EXPECT_NE(code.find("\"" + key + "\""), std::string::npos) << key << " is used nowhere";
  }
}

TEST(Bundles, GiveEachStatusASentence) {
  const std::string interface = readFile(kSource + "/src/service/TuningInterface.h");
  std::vector<std::string> described, defined;
  for (const auto& [status, text] : bundle("TNMSG", "KZ_MSG_P_E_")) {
    described.push_back(status);
    EXPECT_TRUE(text.ends_with('.') && isupper(text[0]) && takes("", text)) << status << text;
  }
  for (const std::string& digits : scan(interface, " = 7", "0123456789")) {
    if (digits.size() == 3) defined.push_back("7" + digits);
  }
  EXPECT_EQ(described, defined);
}

TEST(Bundles, AreTranslatedWholeAndWithoutABreak) {
  int count = 0;
  for (const auto& entry : std::filesystem::directory_iterator(kSource + "/share/knob")) {
    const std::string name = entry.path().stem().string();
    const std::size_t language = name.find('_');
    if (entry.path().extension() != ".properties" || language == name.npos) continue;
    ++count;
    const Texts base = bundle(name.substr(0, language));
    const Texts translated = bundle(name);
    for (const auto& [key, text] : base) {
      EXPECT_TRUE(translated.contains(key) || key.starts_with("KNOB_TAG_")) << name << ": " << key;
    }
    for (const auto& [key, text] : translated) {
      SCOPED_TRACE(name + ": " + key);
      ASSERT_TRUE(base.contains(key)) << "the English bundle has no such key";
      const auto kinds = kKeys.find(key.substr(key.find('_') + 1));
      EXPECT_TRUE(takes(kinds == kKeys.end() ? "" : kinds->second, text)) << text;
      EXPECT_TRUE(key != "KNOB_TAG_ID" && key != "KNOB_TAG_VALUE")
          << "an import finds settings by this text, whatever the language of the export was";
      EXPECT_TRUE(key != "KNOB_NAME" || kz::String(text).indexOf("%", 0, false) == 22);
    }
  }
  EXPECT_GT(count, 0);
}

}  // namespace
