#include <gtest/gtest.h>

#include "tuning/EngineDirectory.h"
#include "tuning/HandleTable.h"
#include "tuning/TuningError.h"

namespace {

using Ids = std::vector<int32_t>;

// An engine without settings, known by the status that leaving it gives.
struct NamedEngine : tn::Engine {
  explicit NamedEngine(TnStatus status) : name(status) {}
  void leave() override { throw tn::TuningError(name); }
  Ids categories() override { return {}; }
  tn::CategoryInfo category(int32_t) override { return {}; }
  Ids settings(int32_t) override { return {}; }
  tn::SettingInfo setting(int32_t) override { return {}; }
  bool isAvailable(int32_t) override { return false; }
  std::string description(int32_t) override { return {}; }
  bool booleanValue(int32_t, tn::Selector) override { return false; }
  int32_t integerValue(int32_t, tn::Selector) override { return 0; }
  std::string stringValue(int32_t, tn::Selector) override { return {}; }
  Ids selectionValue(int32_t, tn::Selector) override { return {}; }
  tn::BooleanWords booleanWords(int32_t) override { return {}; }
  tn::Limits limits(int32_t) override { return {}; }
  Ids selectionItems(int32_t) override { return {}; }
  std::string selectionText(int32_t, int32_t) override { return {}; }
  void setBoolean(int32_t, bool) override {}
  void setInteger(int32_t, int64_t) override {}
  void setString(int32_t, const std::string&) override {}
  void setSelection(int32_t, const Ids&) override {}
  const TnStatus name;
};

}  // namespace

// In the place of the real one.
std::unique_ptr<tn::Engine> tn::EngineDirectory::openLocal() {
  return std::make_unique<NamedEngine>(10);
}

TEST(HandleTable, AsksTheEngineThatWasOpenedLast) {
  tn::HandleTable table;
  const auto latest = [&] { return table.latest().tryLeave(); };
  EXPECT_EQ(10, latest());
  table.add(std::make_unique<NamedEngine>(11));
  const TnHandle second = table.add(std::make_unique<NamedEngine>(12));
  EXPECT_EQ(12, latest());
  EXPECT_EQ(12, table.close(second));
  EXPECT_EQ(11, latest());
  EXPECT_EQ(10, table.closeAll()) << "the first failure";
}
