// The reader of catalogue files on files that are wrong in one way each.
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <tuple>
#include <vector>

#include "support/Process.h"
#include "support/TempFolder.h"
#include "tuning/cataloguefile/CatalogueFile.h"

namespace tn::cataloguefile {
namespace {

const std::string kSound = R"(title = "Order service"
store = "orders.db"

[[category]]
name = "Pool"
  [[category.setting]]
  id = 1001
  name = "Pool Size"
  type = "integer"
  minimum = 1
  maximum = 500
  default = 20
  description = "Connections."
  [[category.setting]]
  id = 1002
  name = "Colour"
  type = "one-of"
  choices = ["red", "green"]
  default = "green"
  description = "Of the day."
[[category]]
name = "More"
  [[category.setting]]
  id = 1003
  name = "Checks"
  type = "boolean"
  words = ["yes", "no"]
  default = true
  description = "Or not."
  [[category.setting]]
  id = 74
  name = "Greeting"
  type = "text"
  maximum = 10
  default = ""
  may_be_empty = true
  restart = true
  description = "For all."
  [[category.setting]]
  id = 1005
  name = "Events"
  type = "any-of"
  choices = ["a", "b", "c"]
  default = ["b", "c"]
  description = "Logged."
)";

std::string replaced(std::string text, const std::string& from, const std::string& to) {
  const size_t at = text.find(from);
  EXPECT_NE(at, text.npos) << from;
  return text.replace(at, from.size(), to);
}

CatalogueFile readText(const std::string& text) {
  const TempFolder folder;
  writeFile(folder / "c.toml", text);
  return readCatalogueFile(folder / "c.toml");
}

// One fault to a line, with its line.
std::string faultsOf(const CatalogueFile& file) {
  std::string all;
  for (const Fault& fault : file.faults) {
    if (!all.empty()) all += '\n';
    all += std::to_string(fault.line) + ": " + fault.text;
  }
  return all;
}

TEST(CatalogueFile, TellsEveryFaultWithItsLine) {
  const std::string longName(256, 'n');
  const std::tuple<const char*, std::string, const char*> cases[] = {
      // The file as a whole.
      {"title = \"Order service\"\n", "", "1: title is missing"},
      {"\"Order service\"", "\" x\"", "1: the title begins or ends with a blank"},
      {"store = \"orders.db\"", "", "1: store is missing"},
      {"\"orders.db\"", "5", "2: store is a whole number; it has to be a text"},
      {"\n\n", "\nother = 1\n", "3: a catalogue has no key \"other\""},
      {"[[category]]\nname = \"Pool\"", "[category]\nname = \"Pool\"",
       "21: not TOML: Error while parsing table header: cannot redefine existing table 'category' "
       "as array-of-tables"},
      {"= \"Pool\"", "= Pool",
       "5: not TOML: Error while parsing value: could not determine value type"},
      {"\"Of the day.\"", "\"Of \xff\"", "20: not TOML: Encountered invalid utf-8 sequence"},
      {"\n\n", "\n\u0120 = 1\n",
       "3: not TOML: Error while parsing root table: expected keys, tables, whitespace or "
       "comments, saw '\u0120'"},
      {"\"Or not.\"", std::string(8200, 'd'), "29: the line has more than 8192 bytes"},
      // Keys and types.
      {"  id = 1001\n", "", "6: setting \"Pool Size\": id is missing"},
      {"  name = \"Pool Size\"\n", "", "6: setting 1001: name is missing"},
      {"  type = \"integer\"\n", "", "6: setting 1001: type is missing"},
      {"  default = 20\n", "", "6: setting 1001: default is missing"},
      {"  minimum = 1\n", "", "6: setting 1001: minimum is missing"},
      {"  choices = [\"red\", \"green\"]\n", "", "14: setting 1002: choices is missing"},
      {"  description = \"For all.\"\n", "", "30: setting 74: description is missing"},
      {"minimum = 1", "minimun = 1",
       "6: setting 1001: minimum is missing\n"
       "10: setting 1001: a setting of type integer has no key \"minimun\""},
      {"\"one-of\"", "\"one-of\"\nmaximum = 3",
       "18: setting 1002: a setting of type one-of has no key \"maximum\""},
      {"\"More\"", "\"More\"\nid = 2", "23: category \"More\": a category has no key \"id\""},
      {"\"integer\"", "\"long\"",
       "9: setting 1001: the type \"long\" is none of boolean, integer, text, one-of and any-of"},
      {"20", "20.5",
       "12: setting 1001: default is a number with a fraction; it has to be a whole number"},
      {"true", "\"yes\"", "28: setting 1003: default is a text; it has to be true or false"},
      {"\"green\"]", "3]", "18: setting 1002: choices holds something else than texts"},
      {"\"integer\"", "\"integer\"\nside = \"both\"",
       "10: setting 1001: the side \"both\" is neither server nor client"},
      // Ids and names.
      {"1002", "1001", "15: setting 1001: the id is used in line 7 already"},
      {"1002", "0", "15: setting 0: the id 0 is outside 1 to 2147483647"},
      {"\"Events\"", "\"pool SIZE\"", "41: setting 1005: the name is used in line 8 already"},
      {"\"More\"", "\"Pool\"", "22: category \"Pool\": the name is used in line 5 already"},
      {"\"Colour\"", "\"\"", "16: setting 1002: the name is empty"},
      {"\"Colour\"", "\"a\\tb\"",
       "16: setting 1002: the name holds a line end or another control character"},
      {"\"Colour\"", '"' + longName + '"',
       "16: setting 1002: the name has 256 bytes, more than 255"},
      {"\"Colour\"", "'say \"x\"'", "16: setting 1002: the name holds a double quote"},
      {"\"Colour\"", "'a\\b'", "16: setting 1002: the name holds a backslash"},
      {"\"Colour\"", "\"Setting ID: 7\"", "16: setting 1002: the name holds a colon"},
      {"\"More\"", "'M\\'", "22: category \"M\\\": the name holds a backslash"},
      {"\"Of the day.\"", "\"\"\"Of\nthe day.\"\"\"",
       "20: setting 1002: the description holds a line end or another control character"},
      {"\"Of the day.\"", "'C:\\'", "20: setting 1002: the description holds a backslash"},
      {"Of the day.", std::string(1901, 'd'),
       "20: setting 1002: the description has 1901 bytes, more than 1900"},
      // Limits and defaults.
      {"minimum = 1", "minimum = 30", "12: setting 1001: the default 20 is outside 30 to 500"},
      {"500\n  default = 20", "\"disk\"\n  default = -1",
       "12: setting 1001: the default -1 is outside 1 to disk"},
      {"minimum = 1", "minimum = 501",
       "10: setting 1001: the minimum 501 is above the maximum 500"},
      {"500", "3000000000",
       "11: setting 1001: the maximum 3000000000 is outside -2147483648 to 2147483647"},
      {"500", "-129",
       "11: setting 1001: the maximum -129 stands for \"memory or disk\"; choose another number, "
       "or write that"},
      {"500", "\"ram\"",
       "11: setting 1001: the maximum \"ram\" is neither a number nor memory, disk, or memory or "
       "disk"},
      {"default = \"\"", "default = \"0123456789a\"",
       "35: setting 74: the default has 11 bytes, more than the maximum 10"},
      {"maximum = 10", "maximum = 1024", "34: setting 74: the maximum 1024 is outside 1 to 1023"},
      {"may_be_empty = true", "", "35: setting 74: the default is empty"},
      {"default = \"green\"", "default = \"blue\"",
       "19: setting 1002: the default \"blue\" is not one of the choices"},
      {"[\"b\", \"c\"]", "[\"b\", \"b\"]", "44: setting 1005: the default has a choice twice"},
      {"[\"b\", \"c\"]", "[]", "44: setting 1005: the default is empty"},
      {"\"green\"]", "\"red\"]", "18: setting 1002: \"red\" in choices is there twice"},
      {"[\"red\", \"green\"]", "[]", "18: setting 1002: choices has to hold 1 to 1024 texts"},
      // Words, restarts, emptiness.
      {"\"yes\", \"no\"", "\"yes\"",
       "27: setting 1003: words has to hold two words, the one for true first"},
      {"\"no\"", "\"Yes\"", "27: setting 1003: the two words are the same"},
      {"\"yes\", \"no\"", "\"False\", \"True\"",
       "27: setting 1003: the word for true has to come first"},
      {"\"no\"", "\"not yet\"", "27: setting 1003: \"not yet\" in words holds a blank"},
      {"restart = true", "restart = false",
       "31: setting 74: a restart is announced for this id: give restart = true, or another id"},
      {"20", "20\nrestart = true",
       "13: setting 1001: restart = true needs an id for which a restart is announced; "
       "knob-catalogue --help lists them"},
      {"id = 74", "id = 73", "36: setting 73: may_be_empty = true is possible with the id 74 only"},
  };
  ASSERT_EQ(faultsOf(readText(kSound)), "");
  for (const auto& [from, to, expected] : cases) {
    SCOPED_TRACE(expected);
    const CatalogueFile file = readText(replaced(kSound, from, to));
    EXPECT_EQ(file.catalogue, nullptr);
    const std::string faults = faultsOf(file);
    EXPECT_EQ(faults, expected);
    const bool toml = faults.find("not TOML") == faults.npos && faults.find("8192") == faults.npos;
    EXPECT_EQ(statusOf(file.faults), toml ? TN_CATALOGUE_WRONG : TN_CATALOGUE_NOT_TOML);
  }
}

TEST(CatalogueFile, TellsAllFaultsOfAFileInTheirOrder) {
  for (const char* const store :
       {"etcd://h", "etcd://h//a", "etcds:///a", "etcd://h:99999/a", "etcd://h/%2F", "etcd://h/a?b",
        "etcd://u:p/w@h/a", "etcd://::1/a", "etcd://h/a\\u0000b", "ETCD://h/a", "x:y"}) {
    const std::string text = replaced(kSound, "orders.db", store);
    EXPECT_EQ(statusOf(readText(text).faults), TN_CATALOGUE_STORE_UNKNOWN) << store;
  }
  std::string text = replaced(kSound, "\"orders.db\"", "\"file:x\"");
  text = replaced(replaced(text, "1005", "1001"), "minimum = 1", "minimum = 21");
  EXPECT_EQ(faultsOf(readText(text)),
            "2: the store is neither the path of a file nor an address that begins with etcd:// or "
            "etcds://\n"
            "12: setting 1001: the default 20 is outside 21 to 500\n"
            "40: setting 1001: the id is used in line 7 already");
  EXPECT_EQ(statusOf(readText(text).faults), TN_CATALOGUE_WRONG);
}

TEST(CatalogueFile, HoldsThirtyCategoriesOfFiftySettingsAndNoMore) {
  std::string full = "title = \"t\"\nstore = \"s\"\n";
  int id = 1000;
  const auto addCategory = [&] { full += "[[category]]\nname = \"" + std::to_string(id) + "\"\n"; };
  const auto addSetting = [&] {
    const std::string number = std::to_string(++id);
    full += "[[category.setting]]\nid = " + number + "\nname = \"" + number +
            "\"\ntype = \"boolean\"\ndefault = true\ndescription = \"d\"\n";
  };
  for (int i = 0; i < TN_CATEGORY_CAPACITY; ++i) {
    addCategory();
    for (int j = 0; j < TN_SETTING_CAPACITY; ++j) addSetting();
  }
  const CatalogueFile file = readText(full);
  ASSERT_EQ(faultsOf(file), "");
  EXPECT_EQ(file.catalogue->setting(2500)->name, "2500");
  EXPECT_EQ(file.catalogue->category(30)->settings.size(), 50U);
  addSetting();
  addCategory();
  EXPECT_EQ(faultsOf(readText(full)),
            "9063: category \"2450\": more than 50 settings\n"
            "9069: more than 30 categories\n"
            "9069: category \"2501\": setting is missing");
}

TEST(CatalogueFile, TakesAnyFileWithoutWaitingOrEnding) {
  const TempFolder folder;
  mkfifo((folder / "fifo").c_str(), 0644);
  const std::string line = "# " + std::string(8189, '-') + '\n';
  std::string large = kSound;
  while (large.size() + line.size() <= (4U << 20)) large += line;
  large.resize(4U << 20, '\n');
  writeFile(folder / "large", large);
  writeFile(folder / "larger", large + "\n");
  std::string parts;
  while (parts.size() < 8000) parts += "a.";
  writeFile(folder / "deep", "[" + parts + "a]\n" + parts + "b = 1");
  writeFile(folder / "nested", "a = " + std::string(8000, '['));
  writeFile(folder / "binary", readFile("/proc/self/exe").substr(0, 1U << 20));
  const std::tuple<std::string, TnStatus> cases[] = {{folder / "none", TN_CATALOGUE_NOT_READABLE},
                                                     {folder / "fifo", TN_CATALOGUE_NOT_A_FILE},
                                                     {folder.path(), TN_CATALOGUE_NOT_A_FILE},
                                                     {"/dev/zero", TN_CATALOGUE_NOT_A_FILE},
                                                     {folder / "larger", TN_CATALOGUE_NOT_A_FILE},
                                                     {folder / "binary", TN_CATALOGUE_NOT_TOML},
                                                     {folder / "nested", TN_CATALOGUE_NOT_TOML},
                                                     {folder / "deep", TN_CATALOGUE_WRONG},
                                                     {folder / "large", TN_SUCCESS}};
  for (const auto& [path, expected] : cases) {
    EXPECT_EQ(statusOf(readCatalogueFile(path).faults), expected) << path;
  }
  chmod((folder / "large").c_str(), 0);
  const auto read = [&] { return statusOf(readCatalogueFile(folder / "large").faults); };
  EXPECT_EQ(inChild(read, kNobody), TN_CATALOGUE_NOT_READABLE);
}

}  // namespace
}  // namespace tn::cataloguefile
