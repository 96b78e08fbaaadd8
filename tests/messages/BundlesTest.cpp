// Holds the message bundles against what the program does with them: the keys that it asks for, the
// arguments that it passes, and the statuses that a user can be shown.
#include <algorithm>
#include <gtest/gtest.h>
#include <map>
#include <sstream>

#include "support/TempFolder.h"

namespace {

using Texts = std::map<std::string, std::string>;

const std::string kSource = KNOB_SOURCE_DIR;

// The lines KEY=text; without the prefix of the keys.
Texts read(std::istream&& lines, std::string const& prefix = "") {
  Texts texts;
  for (std::string line; std::getline(lines, line);) {
    const std::size_t equals = line.find('=');
    if (line.starts_with('#') || equals == std::string::npos) continue;
    const std::size_t start = line.starts_with(prefix) ? prefix.size() : 0;
    texts[line.substr(start, equals - start)] = line.substr(equals + 1);
  }
  return texts;
}

const Texts kProgram = read(std::ifstream(kSource + "/share/knob/KNOB.properties"), "KNOB_");
const Texts kStatuses =
    read(std::ifstream(kSource + "/share/knob/TNMSG.properties"), "KZ_MSG_P_E_");

// Each key of the program's bundle with the kinds of its arguments: t a text, n a number.
Texts keys() {
  std::string words =
      "ACCESS_ERROR= COPYRIGHT= ERR_CREATE_FILE=ttn ERR_FILE_NOT_CREATED= ERR_INTERACTIVE_INPUT= "
      "ERR_INVALID_COMMAND= ERR_INVALID_VALUE=tn ERR_READ_FILE=ttn ERR_SKIP_STG=t ERR_STG_VALUE=tn "
      "ERR_VALUE_NOT_FOUND=n FATAL_ERROR=n FILE_NOT_FOUND_ERROR= HDR_CATEGORY=ntn HDR_CLIENT= "
      "HDR_COUNT=n HDR_MATCH_STG=t HDR_QRY_STRING=t HDR_SERVER= INFO_MAX_DISK= INFO_MAX_MEM= "
      "INFO_MAX_MEM_DISK= INFO_NO_MATCH=t INFO_OVERWRITE=t INFO_RESTART= INFO_STG_UPDATED=n "
      "INFO_STG_UPDATED_FILE=t INFO_STGS_WRITTEN=t INVALID_SETTING_VALUE= MISSING_OPTION_VALUE=t "
      "NAME=t READING_ENDED_ON_ERROR=t TAG_BOOL_OPTIONS=tt TAG_DEF_VALUE=t TAG_DESC=tt TAG_ID= "
      "TAG_OPTIONS= TAG_RANGE=nt TAG_VALUE= UNKNOWN_OPTION=t USAGE= WRITE_SETTING_ERROR=nt";
  std::replace(words.begin(), words.end(), ' ', '\n');
  return read(std::istringstream(words));
}

// The kinds of the conversions in order; ? for one that the program passes no argument for.
std::string kindsOf(std::string const& text) {
  std::string kinds;
  for (std::size_t at = 0; (at = text.find('%', at)) != std::string::npos; ++at) {
    const std::size_t flags = ++at;
    at = std::min(text.find_first_not_of("#0- +123456789", flags), text.size());
    const char kind = at < text.size() ? text[at] : '?';
    if (kind == '%' && at == flags) continue;
    kinds += kind == 's' ? 't' : kind == 'd' || kind == 'X' ? 'n' : '?';
  }
  return kinds;
}

// What stands after each occurrence of the beginning, as far as it is made of these characters.
std::vector<std::string> scan(std::string const& text, std::string const& beginning,
                              char const* characters) {
  std::vector<std::string> found;
  for (std::size_t at = 0; (at = text.find(beginning, at)) != std::string::npos;) {
    at += beginning.size();
    found.push_back(text.substr(at, text.find_first_not_of(characters, at) - at));
  }
  return found;
}

TEST(Bundles, GiveEachKeyATextThatTakesItsArguments) {
  Texts expected = keys();
  expected.merge(Texts{{"8002", ""}, {"8004", ""}});
  Texts kinds;
  for (auto const& [key, text] : kProgram) {
    kinds[key] = kindsOf(text);
    EXPECT_TRUE(!text.empty() && text.size() <= 1023) << key << " does not fit the buffer";
  }
  EXPECT_EQ(kinds, expected);
  EXPECT_EQ(kProgram.at("NAME").find('%'), 22U) << "the version is what comes after 22 characters";
}

TEST(Bundles, AreAskedForTheirKeysAndNoOthers) {
  std::string code;
  for (auto const& entry : std::filesystem::recursive_directory_iterator(kSource + "/src")) {
    if (entry.path().extension() == ".cpp") code += readFile(entry.path());
  }
  const Texts known = keys();
  for (std::string const& key : scan(code, "getResStr(\"", "ABCDEFGHIJKLMNOPQRSTUVWXYZ_")) {
    EXPECT_TRUE(known.contains(key)) << key << " is asked for";
  }
  for (auto const& [key, kinds] : known) {
    EXPECT_NE(code.find("\"" + key + "\""), std::string::npos) << key << " is used nowhere";
  }
}

TEST(Bundles, GiveEachStatusASentence) {
  const std::string interface = readFile(kSource + "/src/service/TuningInterface.h");
  std::vector<std::string> described;
  for (auto const& [status, text] : kStatuses) {
    described.push_back(status);
    EXPECT_TRUE(text.ends_with('.') && isupper(text[0])) << status << " is no sentence";
    EXPECT_TRUE(text.find('%') == text.npos && text.size() <= 1023) << status;
  }
  std::vector<std::string> defined;
  for (std::string const& digits : scan(interface, " = 7", "0123456789")) {
    if (digits.size() == 3) defined.push_back("7" + digits);
  }
  EXPECT_EQ(described, defined);
}

// The conversions in order, with their flags.
std::vector<std::string> conversionsOf(std::string const& text) {
  std::vector<std::string> found;
  for (std::size_t at = 0; (at = text.find('%', at)) != std::string::npos;) {
    const std::size_t end =
        std::min(text.find_first_not_of("#0- +.*$123456789hl", at + 1), text.size());
    found.push_back(text.substr(at, end + 1 - at));
    at = end + 1;
  }
  return found;
}

TEST(Bundles, AreTranslatedWithoutABreak) {
  int count = 0;
  for (auto const& entry : std::filesystem::directory_iterator(kSource + "/share/knob")) {
    const std::string name = entry.path().stem().string();
    const std::size_t language = name.find('_');
    if (entry.path().extension() != ".properties" || language == name.npos) continue;
    ++count;
    const Texts base = read(
        std::ifstream(entry.path().parent_path() / (name.substr(0, language) + ".properties")));
    for (auto const& [key, text] : read(std::ifstream(entry.path()))) {
      SCOPED_TRACE(name + ": " + key);
      ASSERT_TRUE(base.contains(key)) << "the English bundle has no such key";
      EXPECT_EQ(conversionsOf(base.at(key)), conversionsOf(text));
      EXPECT_TRUE(!text.empty() && text.size() <= 1023) << "does not fit the buffer";
      EXPECT_TRUE(key != "KNOB_TAG_ID" && key != "KNOB_TAG_VALUE")
          << "an import finds settings by this text, whatever the language of the export was";
      if (key == "KNOB_NAME") {
        const auto startsCharacter = [](char byte) { return (byte & 0xC0) != 0x80; };
        EXPECT_EQ(22, std::count_if(text.begin(), text.begin() + static_cast<long>(text.find('%')),
                                    startsCharacter));
      }
    }
  }
  EXPECT_GT(count, 0);
}

}  // namespace
