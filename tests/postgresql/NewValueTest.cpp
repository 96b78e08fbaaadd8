// What would be stored for a value that somebody gives.
#include <gtest/gtest.h>
#include <string>
#include <vector>

#include "tuning/TuningError.h"
#include "tuning/postgresql/NewValue.h"

namespace {

using namespace tn::postgresql;

TEST(NewValue, GivesAListInTheServersOwnWay) {
  struct Case {
    bool oneText;
    std::string running;
    std::string value;
    std::vector<std::string> parts;
    std::string text;
  };
  const Case cases[] = {
      {false, "", "$user, Mixed,a_1", {"$user", "Mixed", "a_1"}, R"("$user", "Mixed", a_1)"},
      {false, "", "\"a,b\", x", {"a,b", "x"}, R"("a,b", x)"},
      {false, "", "", {}, ""},
      {true, "/a", "/a, /b", {"/a, /b"}, "/a, /b"},
      {true, "/a,/b", "/a, /b", {"/a,/b"}, "/a,/b"},
      {true, "/a", "\"/a,b\"", {"\"/a,b\""}, "\"/a,b\""},
      {true, "/a", "", {""}, ""},
  };
  for (Case const& c : cases) {
    Setting setting;
    setting.list = NameList::Kind::names;
    setting.listIsOneText = c.oneText;
    setting.running = c.running;
    setting.current = NameList::shown(*NameList::ofServer(c.running, setting.list));
    const NewValue value = NewValue::ofText(setting, c.value);
    EXPECT_EQ(c.parts, value.parts()) << c.value;
    EXPECT_EQ(c.text, value.text()) << c.value;
    EXPECT_EQ(c.parts.empty(), value.isEmptyList()) << c.value;
  }
}

}  // namespace
