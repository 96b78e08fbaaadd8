// knob and knob-catalogue on registries over SQLite files.
#include <gtest/gtest.h>
#include <tuple>

#include "support/Process.h"
#include "support/TempFolder.h"
#include "tuning/StoreConnection.h"

namespace {

using Words = std::vector<std::string>;

class Registry : public testing::Test {
 protected:
  Registry() { writeFile(catalogue, readFile(KNOB_SOURCE_DIR "/examples/orders.toml")); }

  Outcome run(Words words) const {
    words.insert(words.end(), {"-S", "registry:" + catalogue});
    return knob(folder.path(), words).run();
  }
  Outcome check(Words words, const std::string& outTo = "") const {
    words.insert(words.begin(), programFolder() + "/knob-catalogue");
    Process process{words, {}};
    process.folder = folder.path();
    process.outTo = outTo;
    return process.run();
  }
  // The catalogue in its next edition.
  void edit(const std::string& from, const std::string& to) const {
    const std::string text = readFile(catalogue);
    writeFile(catalogue, std::string(text).replace(text.find(from), from.size(), to));
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
      {{"1001", "501"}, 1, "7202: "},
      {{"204", "2147483647"}, 0, "Setting 204 was updated. Changes that require a restart"},
      {{"2001", "CLOSED"}, 0, "Setting 2001 was updated.\n"},
      {{"2001"}, 0, "Current Value: closed\n"},
      {{"2002"}, 0, "Default Value: 0 2\n"},
      {{"2003"}, 0, "\t\t2\twhen paid\n"},
      {{"2004"}, 0, "Description (client setting): "},
      {{"74"}, 0, "Current Value: \n"},
      {{"25"}, 1, "Unknown setting ID"},
      {{"-H", "pool"}, 0, "1001\tPool Size\n1002\tPool Wait Limit\n1003\tCheck Pooled Conn"}};
  for (const auto& [words, status, expected] : cases) {
    const Outcome outcome = run(words);
    EXPECT_EQ(outcome.status, status) << words[0];
    expectPart(outcome.out + outcome.err, expected);
  }
  EXPECT_TRUE(readFile(folder / "orders.db").starts_with("SQLite")) << "not beside the catalogue";
}

// Help is asked for without a handle.
TEST_F(Registry, IsAskedForHelpAsTheEngineThatWasOpenedLast) {
  const Connection local("file:" + folder / "s.db");
  const auto knows = [](int id) {
    char text[2 * TN_TEXT_SIZE];
    int size = sizeof text;
    return TnGetSettingHelp(id, &size, text) == TN_SUCCESS;
  };
  {
    const Connection registry("registry:" + catalogue);
    EXPECT_TRUE(knows(1001) && !knows(25));
  }
  EXPECT_TRUE(knows(25) && !knows(1001));
}

TEST_F(Registry, OutlivesEditionsOfItsCatalogue) {
  ASSERT_EQ(run({"1001", "400"}).status, 0);
  // Another setting in the place of 1001: the kept value stays for the edition that has it back.
  edit("id = 1001", "id = 1099");
  EXPECT_EQ(run({"1001"}).status, 1);
  EXPECT_EQ(run({"1099", "7"}).status, 0);
  edit("id = 1099", "id = 1001");
  expectPart(run({"1001"}).out, "Current Value: 400\n");
  edit("maximum = 500", "maximum = 300");
  expectPart(run({"1001"}).err, "7706: ");
  EXPECT_EQ(run({"1001", "30"}).status, 0);
  expectPart(run({"1001"}).out, "Current Value: 30\n");
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
  edit("etcds:", "postgresql:");
  const std::string refused = run({"1001", "30"}).err;
  expectPart(refused, "7705: ");
  expectPart(refused, "knob-catalogue FILE");
  edit("\"postgresql://my:p@w@a,b/orders\"", "\"x:\"");
  edit("default = 20", "default = 0");
  edit("name = \"Stock Check\"", "\"a\\nb\" = 1\nname = \"Pool\\u001bSize\"");
  expectPart(run({"1001", "30"}).err, "7704: ");
  const Outcome wrong = check({"orders.toml"});
  EXPECT_EQ(wrong.status, 1);
  EXPECT_EQ(
      wrong.out,
      "orders.toml:8: the store is neither the path of a file nor an address that begins "
      "with etcd:// or etcds://\n"
      "orders.toml:19: setting 1001: the default 0 is outside 1 to 500\n"
      "orders.toml:59: setting 2003: a setting of type one-of has no key \"a\\x0ab\"\n"
      "orders.toml:60: setting 2003: the name holds a line end or another control character\n");
  EXPECT_EQ(check({"none.toml"}).out, "none.toml: cannot be read: No such file or directory\n");
  std::filesystem::remove(catalogue);
  expectPart(run({"1001", "30"}).err, "7701: ");

  EXPECT_EQ(check({"--new", "new.toml"}).status, 0);
  EXPECT_EQ(check({"--new"}).out, readFile(folder / "new.toml"));
  EXPECT_EQ(check({"new.toml"}).out,
            "new.toml: My service, 6 settings in 2 categories, values in settings.db\n");
  writeFile(folder / "new.toml", "mine");
  EXPECT_EQ(check({"--new", "new.toml"}).status, 1);
  EXPECT_EQ(readFile(folder / "new.toml"), "mine");
  EXPECT_EQ(check({"--help"}, "/dev/full").status, 1);
  expectPart(check({"--nonsense"}).err, "Usage: ");
}

}  // namespace
