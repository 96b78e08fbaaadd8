// The reader of catalogue files on files that are wrong in one way each.
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <tuple>
#include <vector>

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
[[category]]
name = "More"
setting = [
{id=1002,name="Colour",type="one-of",choices=["red","green"],default="green",description="Day's."},
{id=1003,name="Checks",type="boolean",words=["yes","no"],default=true,description="Or not."},
{id=74,name="Hi",type="text",maximum=9,default="",may_be_empty=true,restart=true,description="d"},
{id=1005,name="Events",type="any-of",choices=["a","b","c"],default=["b","c"],description="Logged."}
]
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
  const std::string manyNs(256, 'n');
  const std::tuple<const char*, std::string, uint32_t, const char*> cases[] = {
      // The file as a whole.
      {"\"Order service\"", "\" x\"", 1, "the title begins or ends with a blank"},
      {"store = \"orders.db\"", "", 1, "store is missing"},
      {"\"orders.db\"", "5", 2, "store is a whole number; it has to be a text"},
      {"\n\n", "\nother = 1\n", 3, "a catalogue has no key \"other\""},
      {"= \"Pool\"", "= Pool", 5, "Error while parsing value: could not determine value type"},
      {"Or not.", std::string(8200, 'd'), 18, "the line has more than 8192 bytes"},
      // Keys and types.
      {"  id = 1001\n", "", 6, "setting \"Pool Size\": id is missing"},
      {"  name = \"Pool Size\"\n", "", 6, "setting 1001: name is missing"},
      {"  type = \"integer\"\n", "", 6, "setting 1001: type is missing"},
      {"  default = 20\n", "", 6, "setting 1001: default is missing"},
      {"choices=[\"red\",\"green\"],", "", 17, "setting 1002: choices is missing"},
      {"minimum = 1", "minimum = 1\nno = 1", 11, "a setting of type integer has no key \"no\""},
      {"\"More\"", "\"More\"\nid = 2", 16, "category \"More\": a category has no key \"id\""},
      {"\"integer\"", "\"long\"", 9, "is none of boolean, integer, text, one-of and any-of"},
      {"20", "20.5", 12, "1001: default is a number with a fraction; it has to be a whole number"},
      {"=true", "=\"yes\"", 18, "setting 1003: default is a text; it has to be true or false"},
      {"\"green\"]", "3]", 17, "setting 1002: choices holds something else than texts"},
      {"[\"b\",\"c\"]", "\"b\"", 20, "1005: default is a text; it has to be an array of texts"},
      {"\"integer\"", "\"integer\"\nside = \"both\"", 10, "\"both\" is neither server nor client"},
      // Ids and names.
      {"1002", "1001", 17, "setting 1001: the id is used in line 7 already"},
      {"1002", "0", 17, "setting 0: the id 0 is outside 1 to 2147483647"},
      {"\"Events\"", "\"pool SIZE\"", 20, "setting 1005: the name is used in line 8 already"},
      {"\"More\"", "\"Pool\"", 15, "category \"Pool\": the name is used in line 5 already"},
      {"Colour", "", 17, "setting 1002: the name is empty"},
      {"Colour", "a\\tb", 17, "1002: the name holds a line end or another control character"},
      {"Colour", manyNs, 17, "setting 1002: the name has 256 bytes, more than 255"},
      {"Colour", "\\\"x", 17, "setting 1002: the name holds a double quote"},
      {"Colour", "Setting ID: 7", 17, "setting 1002: the name holds a colon"},
      {"More", "M\\\\", 15, "category \"M\\\": the name holds a backslash"},
      {"Day's.", "C:\\\\", 17, "setting 1002: the description holds a backslash"},
      {"Day's.", std::string(1901, 'd'), 17, "the description has 1901 bytes, more than 1900"},
      // Limits and defaults.
      {"minimum = 1", "minimum = 30", 12, "setting 1001: the default 20 is outside 30 to 500"},
      {"500\n  default = 20", "\"disk\"\n  default = -1", 12, "default -1 is outside 1 to disk"},
      {"minimum = 1", "minimum = 501", 10, "1001: the minimum 501 is above the maximum 500"},
      {"500", "3000000000", 11, "the maximum 3000000000 is outside -2147483648 to 2147483647"},
      {"500", "-129", 11, "stands for \"memory or disk\"; choose another number, or write that"},
      {"500", "\"ram\"", 11, "\"ram\" is neither a number nor memory, disk, or memory or disk"},
      {"default=\"\"", "default=\"0123456789\"", 19, "has 10 bytes, more than the maximum 9"},
      {"maximum=9", "maximum=1024", 19, "setting 74: the maximum 1024 is outside 1 to 1023"},
      {"may_be_empty=true,", "", 19, "setting 74: the default is empty"},
      {"default=\"green\"", "default=\"blue\"", 17, "default \"blue\" is not one of the choices"},
      {"[\"b\",\"c\"]", "[\"b\",\"b\"]", 20, "setting 1005: the default has a choice twice"},
      {"\"green\"]", "\"red\"]", 17, "setting 1002: \"red\" in choices is there twice"},
      {"[\"red\",\"green\"]", "[]", 17, "setting 1002: choices has to hold 1 to 1024 texts"},
      // Words, restarts, emptiness.
      {"\"yes\",\"no\"", "\"yes\"", 18, "words has to hold two words, the one for true first"},
      {"\"no\"", "\"Yes\"", 18, "setting 1003: the two words are the same"},
      {"\"yes\",\"no\"", "\"False\",\"True\"", 18, "1003: the word for true has to come first"},
      {"\"no\"", "\"not yet\"", 18, "setting 1003: \"not yet\" in words holds a blank"},
      {"restart=true", "restart=false", 19, "for this id: give restart = true, or another id"},
      {"20", "20\nrestart = true", 13, "a restart is announced; knob-catalogue --help lists them"},
      {"id=74", "id=73", 19, "setting 73: may_be_empty = true is possible with the id 74 only"}};
  ASSERT_EQ(faultsOf(readText(kSound)), "");
  for (const auto& [from, to, line, end] : cases) {
    const CatalogueFile file = readText(replaced(kSound, from, to));
    const std::string faults = faultsOf(file);
    EXPECT_TRUE(faults.ends_with(end) && file.faults.size() == 1) << faults << "\nnot " << end;
    EXPECT_TRUE(faults.starts_with(std::to_string(line) + ": ")) << faults << "\nnot " << line;
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
            "20: setting 1001: the id is used in line 7 already");
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
  std::string large = kSound;
  while (large.size() < (4U << 20) - 8000) large += "# " + std::string(7000, '-') + '\n';
  large.resize(4U << 20, '\n');
  std::string deep;
  while (deep.size() < 8000) deep += "a.";
  const std::pair<const char*, std::string> files[] = {
      {"large", large},
      {"larger", large + "\n"},
      {"deep", "[" + deep + "a]\n" + deep + "b = 1"},
      {"nested", "a = " + std::string(8000, '[')}};
  for (const auto& [name, content] : files) writeFile(folder / name, content);
  const std::tuple<std::string, TnStatus> cases[] = {{"none", TN_CATALOGUE_NOT_READABLE},
                                                     {"fifo", TN_CATALOGUE_NOT_A_FILE},
                                                     {"", TN_CATALOGUE_NOT_A_FILE},
                                                     {"larger", TN_CATALOGUE_NOT_A_FILE},
                                                     {"nested", TN_CATALOGUE_NOT_TOML},
                                                     {"deep", TN_CATALOGUE_WRONG},
                                                     {"large", TN_SUCCESS}};
  for (const auto& [name, expected] : cases) {
    EXPECT_EQ(statusOf(readCatalogueFile(folder / name).faults), expected) << name;
  }
}

}  // namespace
}  // namespace tn::cataloguefile
