// knob and knob-catalogue on registries over SQLite files.
#include <gtest/gtest.h>
#include <tuple>
#include <vector>

#include "service/TuningInterface.h"
#include "support/Process.h"
#include "support/TempFolder.h"

namespace {

using Words = std::vector<std::string>;

const std::string kExample = readFile(KNOB_SOURCE_DIR "/examples/orders.toml");

class Registry : public testing::Test {
 protected:
  Registry() { writeFile(catalogue, kExample); }

  Outcome run(Words words) const {
    words.insert(words.end(), {"-S", "registry:" + catalogue});
    return knob(folder.path(), words).run();
  }
  Outcome check(Words words) const {
    words.insert(words.begin(), programFolder() + "/knob-catalogue");
    Process process{words, {}};
    process.folder = folder.path();
    return process.run();
  }
  // The catalogue in its next edition.
  void edit(const std::string& from, const std::string& to) const {
    std::string text = readFile(catalogue);
    const size_t at = text.find(from);
    ASSERT_NE(at, text.npos) << from;
    writeFile(catalogue, text.replace(at, from.size(), to));
  }
  const TempFolder folder;
  const std::string catalogue = folder / "orders.toml";
};

void expectPart(const std::string& text, const std::string& part) {
  EXPECT_NE(text.find(part), text.npos) << part << "\nin\n" << text;
}

TEST_F(Registry, IsShownAndChangedLikeAnyEngine) {
  const std::tuple<Words, int, const char*> cases[] = {
      {{"1001"}, 0, "\tRange: 1 to 500\n\tDefault Value: 20\n\tDescription (server setting): Conn"},
      {{"1001", "40"}, 0, "Setting 1001 was updated.\n"},
      {{"1001"}, 0, "Current Value: 40\n"},
      {{"1001", "501"}, 1, "7202: "},
      {{"204"}, 0, "Range: 16 to "},
      {{"204", "2147483647"}, 0, "Setting 204 was updated. Changes that require a restart"},
      {{"2001", "CLOSED"}, 0, "Setting 2001 was updated.\n"},
      {{"2001"}, 0, "Current Value: closed\n"},
      {{"2002"}, 0, "Default Value: 0 2\n"},
      {{"2003"}, 0, "\t\t2\twhen paid\n"},
      {{"2004"}, 0, "Description (client setting): "},
      {{"74"}, 0, "Current Value: \n"},
      {{"25"}, 1, "Unknown setting ID"},
      {{"-H", "pool"}, 0, "1001\tPool Size\n1002\tPool Wait Limit\n1003\tCheck Pooled Conn"},
      {{"1001", "-U", "root"}, 1, "7105: "}};
  for (const auto& [words, status, expected] : cases) {
    SCOPED_TRACE(words[0] + " " + expected);
    const Outcome outcome = run(words);
    EXPECT_EQ(outcome.status, status);
    expectPart(outcome.out + outcome.err, expected);
  }
  EXPECT_EQ(readFile(folder / "orders.db").substr(0, 6), "SQLite") << "not beside the catalogue";
}

TEST_F(Registry, OutlivesEditionsOfItsCatalogue) {
  ASSERT_EQ(run({"1001", "400"}).status, 0);
  edit("maximum = 500", "maximum = 300");
  expectPart(run({"1001"}).err, "7706: ");
  edit("maximum = 300", "maximum = 500");
  expectPart(run({"1001"}).out, "Current Value: 400\n");

  // Another setting in the place of 1001: the kept value stays for the edition that has it back.
  edit("id = 1001", "id = 1099");
  EXPECT_EQ(run({"1001"}).status, 1);
  EXPECT_EQ(run({"1099", "7"}).status, 0);
  edit("id = 1099", "id = 1001");
  expectPart(run({"1001"}).out, "Current Value: 400\n");

  edit("type = \"integer\"\n  minimum = 1\n  maximum = 500\n  default = 20",
       "type = \"boolean\"\n  default = true");
  expectPart(run({"1001"}).err, "7706: ");
  EXPECT_EQ(run({"1001", "off"}).status, 0);
  expectPart(run({"1001"}).out, "Current Value: off\n");
}

TEST_F(Registry, OpensNothingWithACatalogueThatIsWrong) {
  edit("\"orders.db\"", "\"postgresql://host/orders\"");
  expectPart(run({"1001", "30"}).err, "7705: ");
  expectPart(run({"1001", "30"}).err, "knob-catalogue FILE");
  std::filesystem::remove(catalogue);
  expectPart(run({"1001", "30"}).err, "7701: ");
  EXPECT_FALSE(std::filesystem::exists(folder / "orders.db"));
  expectPart(knob(folder.path(), {"1001", "-S", "registry:"}).run().err, "7104: ");
}

TEST_F(Registry, LoadsNoMoreThanItNeeds) {
  const auto loaded = [this](const std::string& server) {
    Process process = knob(folder.path(), {"2001", "-S", server});
    process.environment["LD_DEBUG"] = "libs";
    return process.run().err;
  };
  const std::string registry = loaded("registry:" + catalogue);
  expectPart(registry, "libtn-registry.so");
  for (const char* library : {"libcurl", "libtn-etcd", "libpq", "libtomlplusplus"}) {
    EXPECT_EQ(registry.find(library), registry.npos) << library;
  }
  EXPECT_EQ(loaded("file:" + folder / "s.db").find("libtn-"), registry.npos);
}

TEST_F(Registry, HasACompanionThatChecksCatalogues) {
  edit("\"orders.db\"", "\"etcds://my:p@w@a,b/orders\"");
  expectPart(check({"orders.toml"}).out, "values in etcds://a,b/orders\n");
  edit("default = 20", "default = 0");
  edit("name = \"Stock Check\"", "name = \"Pool\\u001bSize\"\n\"a\\nb\" = 1");
  const Outcome wrong = check({"orders.toml"});
  EXPECT_EQ(wrong.status, 1);
  EXPECT_EQ(wrong.out,
            "orders.toml:19: setting 1001: the default 0 is outside 1 to 500\n"
            "orders.toml:59: setting 2003: the name holds a line end or another control character\n"
            "orders.toml:60: setting 2003: a setting of type one-of has no key \"a\\x0ab\"\n");
  EXPECT_EQ(check({"none.toml"}).out, "none.toml: cannot be read: No such file or directory\n");

  EXPECT_EQ(check({"--new", "new.toml"}).status, 0);
  EXPECT_EQ(check({"--new"}).out, readFile(folder / "new.toml"));
  EXPECT_EQ(check({"new.toml"}).out,
            "new.toml: My service, 6 settings in 2 categories, values in settings.db\n");
  writeFile(folder / "new.toml", "mine");
  EXPECT_EQ(check({"--new", "new.toml"}).status, 1);
  EXPECT_EQ(readFile(folder / "new.toml"), "mine");

  expectPart(check({"--version"}).out, "knob-catalogue ");
  for (const Words& words : {Words{}, {"a", "b"}, {"--nonsense"}, {"--new", "a", "b"}}) {
    const Outcome refused = check(words);
    EXPECT_EQ(refused.status, 1);
    expectPart(refused.err, "Usage: ");
  }
  Process full{{programFolder() + "/knob-catalogue", "--help"}, {}};
  full.outTo = "/dev/full";
  EXPECT_EQ(full.run().status, 1);
}

}  // namespace
