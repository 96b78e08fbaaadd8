// The reader of catalogue files on files that are wrong in one way each.
#include <gtest/gtest.h>
#include <sys/stat.h>
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
    all += (all.empty() ? "" : "\n") + std::to_string(fault.line) + ": " + fault.text;
  }
  return all;
}

TEST(CatalogueFile, TellsEveryFaultWithItsLine) {
  const std::string manyNs(256, 'n'), other = "begins with etcd:// or etcds://";
  const struct {
    std::string from, to;
    uint32_t line;
    std::string end;
    TnStatus status = TN_CATALOGUE_WRONG;
  } cases[] = {
      {"\"Order service\"", "\" x\"", 1, "the title begins or ends with a blank"},
      {"store = \"orders.db\"", "", 1, "store is missing"},
      {"\n\n", "\nother = 1\n", 3, "a catalogue has no key \"other\""},
      {"= \"Pool\"", "= Pool", 5, "could not determine value type", TN_CATALOGUE_NOT_TOML},
      {"Or not.", std::string(8200, 'd'), 18, "the line has more than 8192 bytes",
       TN_CATALOGUE_NOT_TOML},
      {"  id = 1001\n", "", 6, "setting \"Pool Size\": id is missing"},
      {"choices=[\"red\",\"green\"],", "", 17, "setting 1002: choices is missing"},
      {"minimum = 1", "minimum = 1\nno = 1", 11, "a setting of type integer has no key \"no\""},
      {"\"More\"", "\"More\"\nid = 2", 16, "category \"More\": a category has no key \"id\""},
      {"\"integer\"", "\"long\"", 9, "is none of boolean, integer, text, one-of and any-of"},
      {"20", "20.5", 12, "1001: default is a number with a fraction; it has to be a whole number"},
      {"=true", "=\"yes\"", 18, "setting 1003: default is a text; it has to be true or false"},
      {"\"green\"]", "3]", 17, "setting 1002: choices holds something else than texts"},
      {"[\"b\",\"c\"]", "\"b\"", 20, "1005: default is a text; it has to be an array of texts"},
      {"\"integer\"", "\"integer\"\nside = \"both\"", 10, "\"both\" is neither server nor client"},
      {"1002", "1001", 17, "setting 1001: the id is used in line 7 already"},
      {"\"Events\"", "\"pool SIZE\"", 20, "setting 1005: the name is used in line 8 already"},
      {"\"More\"", "\"Pool\"", 15, "category \"Pool\": the name is used in line 5 already"},
      {"Colour", manyNs, 17, "setting 1002: the name has 256 bytes, more than 255"},
      {"Colour", "\\\"x", 17, "setting 1002: the name holds a double quote"},
      {"Colour", "Setting ID: 7", 17, "setting 1002: the name holds a colon"},
      {"Day's.", "C:\\\\", 17, "setting 1002: the description holds a backslash"},
      {"Day's.", std::string(1901, 'd'), 17, "the description has 1901 bytes, more than 1900"},
      {"minimum = 1", "minimum = 30", 12, "setting 1001: the default 20 is outside 30 to 500"},
      {"minimum = 1", "minimum = 501", 10, "1001: the minimum 501 is above the maximum 500"},
      {"default=\"\"", "default=\"0123456789\"", 19, "has 10 bytes, more than the maximum 9"},
      {"maximum=9", "maximum=1024", 19, "setting 74: the maximum 1024 is outside 1 to 1023"},
      {"may_be_empty=true,", "", 19, "setting 74: the default is empty"},
      {"default=\"green\"", "default=\"blue\"", 17, "default \"blue\" is not one of the choices"},
      {"[\"b\",\"c\"]", "[\"b\",\"b\"]", 20, "setting 1005: the default has a choice twice"},
      {"\"green\"]", "\"red\"]", 17, "setting 1002: \"red\" in choices is there twice"},
      {"\"yes\",\"no\"", "\"yes\"", 18, "words has to hold two words, the one for true first"},
      {"\"yes\",\"no\"", "\"é\",\"É\"", 18, "setting 1003: the two words are the same"},
      {"\"yes\",\"no\"", "\"False\",\"True\"", 18, "1003: the word for true has to come first"},
      {"\"no\"", "\"not yet\"", 18, "setting 1003: \"not yet\" in words holds a blank"},
      {"restart=true", "restart=false", 19, "for this id: give restart = true, or another id"},
      {"20", "20\nrestart = true", 13, "a restart is announced; knob-catalogue --help lists them"},
      {"id=74", "id=73", 19, "setting 73: may_be_empty = true is possible with the id 74 only"},
      {"orders.db", "x:y", 2, other, TN_CATALOGUE_STORE_UNKNOWN},
      {"orders.db", "etcd://h/a\\u0000b", 2, other, TN_CATALOGUE_STORE_UNKNOWN},
      {"orders.db", "ETCD://h", 2, other, TN_CATALOGUE_STORE_UNKNOWN},
      {"orders.db", "etcd://u:p/w@h/a", 2, "user name and password)", TN_CATALOGUE_STORE_UNKNOWN}};
  ASSERT_EQ(faultsOf(readText(kSound)), "");
  for (const auto& c : cases) {
    const CatalogueFile file = readText(replaced(kSound, c.from, c.to));
    const std::string faults = faultsOf(file);
    EXPECT_TRUE(faults.ends_with(c.end) && file.faults.size() == 1) << faults << "\nnot " << c.end;
    EXPECT_TRUE(faults.starts_with(std::to_string(c.line) + ": ")) << faults << "\nnot " << c.line;
    EXPECT_EQ(statusOf(file.faults), c.status) << faults;
  }
}

TEST(CatalogueFile, HoldsThirtyCategoriesOfFiftySettingsAndNoMore) {
  const auto faults = [](int categories, int settings) {
    std::string text = "title = \"t\"\nstore = \"s\"\n";
    for (int id = 1001; id <= 1000 + categories * settings; ++id) {
      const std::string number = std::to_string(id);
      if (id % settings == 1001 % settings) text += "[[category]]\nname = \"" + number + "\"\n";
      text += "[[category.setting]]\nid = " + number + "\nname = \"" + number +
              "\"\ntype = \"boolean\"\ndefault = true\ndescription = \"d\"\n";
    }
    return faultsOf(readText(text));
  };
  EXPECT_EQ(faults(30, 50), "");
  EXPECT_EQ(faults(1, 51), "305: category \"1001\": more than 50 settings");
  EXPECT_EQ(faults(31, 1), "243: more than 30 categories");
}

TEST(CatalogueFile, TakesAnyFileWithoutWaitingOrEnding) {
  std::string large = kSound, deep;
  large.resize(4U << 20, '\n');
  while (deep.size() < 8000) deep += "a.";
  const std::pair<std::string, TnStatus> cases[] = {
      {large, TN_SUCCESS},
      {large + "\n", TN_CATALOGUE_NOT_A_FILE},
      {"[" + deep + "a]\n" + deep + "b = 1", TN_CATALOGUE_WRONG},
      {"a = " + std::string(8000, '['), TN_CATALOGUE_NOT_TOML}};
  for (const auto& [content, expected] : cases) {
    EXPECT_EQ(statusOf(readText(content).faults), expected) << content.substr(0, 20);
  }
  const TempFolder folder;
  mkfifo((folder / "fifo").c_str(), 0644);
  for (const char* const name : {"fifo", ""}) {
    EXPECT_EQ(statusOf(readCatalogueFile(folder / name).faults), TN_CATALOGUE_NOT_A_FILE) << name;
  }
}

}  // namespace
}  // namespace tn::cataloguefile
