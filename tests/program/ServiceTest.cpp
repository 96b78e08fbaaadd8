#include <functional>
#include <gtest/gtest.h>

#include "service/SvcConfigHelper.h"
#include "support/TnDouble.h"

namespace {

class Service : public testing::Test {
 protected:
  Service() {
    service.connect("", "", "");
    engine.calls.clear();
  }
  // The code of the failure, 0 for none; its message has to be the code's.
  int codeOf(const std::function<void()>& operation) {
    try {
      operation();
    } catch (const SvcException& failure) {
      EXPECT_TRUE(failure.getDescription().equals(service.createErrorMsg(failure.getErrorCode())));
      return failure.getErrorCode();
    }
    return 0;
  }
  TnDouble& engine = TnDouble::reset();
  SvcConfigHelper service;
};

TEST_F(Service, DisconnectsOnceWhateverTheEngineSays) {
  engine.answers["TnDisconnect(-1)"].status = TN_INTERNAL_ERROR;
  engine.answers["TnStop(0)"].status = TN_INTERNAL_ERROR;
  service.disconnect();
  service.disconnect();
  EXPECT_EQ(engine.calls, (std::vector<std::string>{"TnDisconnect(-1)", "TnStop(0)"}));
}

TEST_F(Service, CopiesANameThatLeavesNoRoomForItsEnd) {
  const std::string name(TN_NAME_SIZE, 'n');
  engine.answers["TnGetCategoryInfo(-1,2)"].text = name;
  const kz::Reference<kz::collections::List<CategoryInfo>> categories(service.getCategoryList());
  EXPECT_EQ(categories->get(1)->name.getBytes(), name);
}

TEST_F(Service, DistrustsCountsPastTheRoomItGave) {
  for (const auto& [count, code] : {std::pair{-1, 0}, std::pair{2000, int{TN_BUFFER_TOO_SMALL}}}) {
    for (auto& [call, answer] : engine.answers) answer.claimedCount = count;
    const auto codeOfList = [&](const auto& operation) {
      return codeOf([&] { EXPECT_EQ(kz::Reference(operation())->size(), 0); });
    };
    EXPECT_EQ(codeOfList([&] { return service.getCategoryList(); }), code);
    EXPECT_EQ(codeOfList([&] { return service.getSettingInfoList(1); }), code);
    EXPECT_EQ(codeOfList([&] { return service.getSelectionValues(81, 2); }), code);
    EXPECT_EQ(codeOfList([&] { return service.getAllPossibleSelections(81); }), code);
  }
}

TEST_F(Service, PassesTextsWholeOrNotAtAll) {
  const std::string longHelp(3000, 'x'), fits = std::string(1021, 'x') + "\u00e4";
  engine.answers["TnGetSettingHelp(25,1024)"].text = longHelp;
  engine.answers["TnGetSettingHelp(25,3001)"].text = longHelp;
  EXPECT_EQ(service.getSettingHelp(25).getBytes(), longHelp);
  engine.answers["TnGetSettingHelp(25,3001)"].status = TN_BUFFER_TOO_SMALL;
  EXPECT_EQ(codeOf([&] { service.getSettingHelp(25); }), TN_BUFFER_TOO_SMALL);
  EXPECT_EQ(engine.calls.size(), 4U);
  service.setStringValue(74, fits, 2);
  EXPECT_EQ(engine.calls.back(), "TnSetStringValue(-1,74," + fits + ",2)");
  EXPECT_EQ(codeOf([&] { service.setStringValue(74, fits + "x", 2); }), TN_VALUE_TOO_LONG);
  EXPECT_EQ(engine.calls.size(), 5U);
}

}  // namespace
