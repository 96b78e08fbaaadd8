#include <functional>
#include <gtest/gtest.h>

#include "service/SvcConfigHelper.h"
#include "support/TnDouble.h"

namespace {

using Calls = std::vector<std::string>;

class Service : public testing::Test {
 protected:
  // The code of the failure, 0 for none; its message has to be the code's.
  int codeOf(std::function<void()> const& operation) {
    try {
      operation();
    } catch (SvcException const& failure) {
      EXPECT_TRUE(failure.getDescription().equals(service.createErrorMsg(failure.getErrorCode())));
      return failure.getErrorCode();
    }
    return 0;
  }
  TnDouble& local() {
    service.connect("", "", "");
    engine.calls.clear();
    return engine;
  }

  TnDouble& engine = TnDouble::reset();
  SvcConfigHelper service;
};

TEST_F(Service, ConnectsAndDisconnectsOnce) {
  const std::string fits(255, 'x'), tooLong = std::string(254, 'x') + "\u00e4";
  const std::string long3 = "TnConnectServer(" + fits + "," + fits + "," + fits + ")";
  const struct {
    std::string server, user, password;
    int code;
    Calls calls;  // between TnStart and the end
  } cases[] = {{"", "", "", 0, {"TnDisconnect(-1)", "TnStop(0)"}},
               {"", "u", "", 0, {"TnConnectServer(,u,)", "TnDisconnect(7)", "TnStop(0)"}},
               {fits, fits, fits, 0, {long3, "TnDisconnect(7)", "TnStop(0)"}},
               {"s", "u", "", 12, {"TnConnectServer(s,u,)", "TnStop(0)", "TnDisconnect(7)"}},
               {tooLong, "", "", TN_SERVER_NAME_TOO_LONG, {"TnStop(0)"}},
               {"s", tooLong, "", TN_USER_NAME_TOO_LONG, {"TnStop(0)"}},
               {"", "", tooLong, TN_PASSWORD_TOO_LONG, {"TnStop(0)"}}};
  engine.answers["TnConnectServer(,u,)"] = engine.answers[long3] = {0, {7}};
  engine.answers["TnConnectServer(s,u,)"] = {12, {7}};
  for (auto const& row : cases) {
    engine.calls.clear();
    SvcConfigHelper helper;
    EXPECT_EQ(codeOf([&] { helper.connect(row.server, row.user, row.password); }), row.code);
    helper.disconnect();
    helper.disconnect();
    EXPECT_EQ(engine.calls.at(0), "TnStart(0)");
    EXPECT_EQ(Calls(engine.calls.begin() + 1, engine.calls.end()), row.calls);
  }
}

TEST_F(Service, TurnsEveryFailureIntoItsCodeAndMessage) {
  int item = 0;
  const std::pair<char const*, std::function<void()>> cases[] = {
      {"TnGetCategoryListCount(-1)", [&] { service.getCategoryListCount(); }},
      {"TnGetCategoryList(-1,30)", [&] { service.getCategoryList(); }},
      {"TnGetCategoryInfo(-1,2)", [&] { service.getCategoryList(); }},
      {"TnGetSettingList(-1,1,50)", [&] { service.getSettingInfoList(1); }},
      {"TnGetSettingInfo(-1,26)", [&] { service.getSettingInfoList(1); }},
      {"TnGetStringValue(-1,74,1,1024)", [&] { service.getStringValue(74, 1); }},
      {"TnGetLongValue(-1,25,2)", [&] { service.getLongValue(25, 2); }},
      {"TnGetBooleanValue(-1,26,2)", [&] { service.getBooleanValue(26, 2); }},
      {"TnGetBooleanStrings(-1,26,125,125)", [&] { service.getBooleanValue(26, 2); }},
      {"TnGetSelectionValue(-1,81,2,1024)", [&] { service.getSelectionValues(81, 2); }},
      {"TnCountSelectionItems(-1,81)", [&] { service.getAllPossibleSelections(81); }},
      {"TnGetAllPossibleSelections(-1,81,3)", [&] { service.getAllPossibleSelections(81); }},
      {"TnGetSelectionString(-1,81,12,1024)", [&] { service.getAllPossibleSelections(81); }},
      {"TnGetValueLimit(-1,25)", [&] { service.getValueLimit(25, &item, &item); }},
      {"TnGetSettingHelp(25,1024)", [&] { service.getSettingHelp(25); }},
      {"TnSetStringValue(-1,74,x,2)", [&] { service.setStringValue(74, "x", 2); }},
      {"TnSetLongValue(-1,25,1,2)", [&] { service.setLongValue(25, 1, 2); }},
      {"TnSetBooleanValue(-1,26,1,2)", [&] { service.setBooleanValue(26, true, 2); }},
      {"TnSetSelectionValue(-1,81,0 ,2)", [&] { service.setSelectionValue(81, 1, &item, 2); }}};
  local();
  for (auto const& [call, operation] : cases) {
    TnDouble::reset().answers[call] = {12, {0, 0, 0}, "/"};
    EXPECT_EQ(codeOf(operation), 12) << call;
  }
  EXPECT_EQ(codeOf([&] { service.getSettingInfo(999, false); }), 8002);
  EXPECT_EQ(codeOf([&] { service.getSettingInfo(27, true); }), 8002);
  EXPECT_FALSE(kz::Reference<SettingInfo>(service.getSettingInfo(27, false))->available);
  EXPECT_EQ(service.createErrorMsg(-1).getBytes(), "-1: KZ_MSG_P_E_-1");
  EXPECT_TRUE(
      service.createErrorMsg(8002).equals(MessageHelper("KNOB", "KNOB_").getResStr("8002")));
}

TEST_F(Service, CopiesRecordsAndListsInTheEnginesOrder) {
  const std::string name(TN_NAME_SIZE, 'n');  // leaves no room for a NUL
  local().answers["TnGetCategoryInfo(-1,2)"].text = name;
  const kz::Reference<kz::collections::List<CategoryInfo>> categories(service.getCategoryList());
  ASSERT_EQ(categories->size(), 2);
  EXPECT_EQ(categories->get(0)->id, 1);
  EXPECT_EQ(categories->get(0)->extraInfo, 6);
  EXPECT_EQ(categories->get(1)->name.getBytes(), name);
  const kz::Reference<kz::collections::List<SettingInfo>> settings(service.getSettingInfoList(1));
  ASSERT_EQ(settings->size(), 3);
  EXPECT_EQ(settings->get(0)->clientServer, 0xFFFF) << "16 bits, widened without sign";
  EXPECT_EQ(settings->get(1)->type, TN_TYPE_BOOLEAN);
  EXPECT_EQ(settings->get(1)->extraInfo, -26);
  EXPECT_TRUE(settings->get(1)->available);
  EXPECT_FALSE(settings->get(2)->available);
}

TEST_F(Service, DistrustsCountsPastTheRoomItGave) {
  for (const int count : {-1, 2000}) {
    local();
    for (auto& [call, answer] : engine.answers) answer.claimedCount = count;
    EXPECT_EQ(codeOf([&] { service.getCategoryList(); }), TN_BUFFER_TOO_SMALL);
    EXPECT_EQ(codeOf([&] { service.getSettingInfoList(1); }), TN_BUFFER_TOO_SMALL);
    EXPECT_EQ(codeOf([&] { service.getSelectionValues(81, 2); }), TN_BUFFER_TOO_SMALL);
    EXPECT_EQ(codeOf([&] { service.getAllPossibleSelections(81); }), TN_BUFFER_TOO_SMALL);
  }
}

TEST_F(Service, PassesTextsWholeOrNotAtAll) {
  const std::string longHelp(3000, 'x'), fits = std::string(1021, 'x') + "\u00e4";
  local().answers["TnGetSettingHelp(25,1024)"].text = longHelp;
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
