#include <gtest/gtest.h>

#include "service/SvcConfigHelper.h"

namespace {

// Without a connection, which the interface refuses in every call that takes one.
TEST(Service, TellsTheStatusOfEveryCall) {
  SvcConfigHelper service;
  const auto codeOf = [&](const auto& call) {
    try {
      call();
    } catch (const SvcException& failure) {
      const int code = failure.getErrorCode();
      EXPECT_TRUE(failure.getDescription().equals(service.createErrorMsg(code)));
      return code;
    }
    return 0;
  };
  const int refused = TN_INVALID_HANDLE;
  kz::String text;
  int number = 0;
  EXPECT_EQ(refused, codeOf([&] { service.getCategoryList(); }));
  EXPECT_EQ(refused, codeOf([&] { service.getCategoryListCount(); }));
  EXPECT_EQ(refused, codeOf([&] { service.getSettingInfoList(1); }));
  EXPECT_EQ(refused, codeOf([&] { service.getStringValue(74, 2); }));
  EXPECT_EQ(refused, codeOf([&] { service.getLongValue(25, 2); }));
  EXPECT_EQ(refused, codeOf([&] { service.getBooleanValue(42, 2); }));
  EXPECT_EQ(refused, codeOf([&] { service.getBooleanStrings(42, text, text); }));
  EXPECT_EQ(refused, codeOf([&] { service.getSelectionValues(83, 2); }));
  EXPECT_EQ(refused, codeOf([&] { service.getSelectionString(83, 0); }));
  EXPECT_EQ(refused, codeOf([&] { service.getAllPossibleSelections(83); }));
  EXPECT_EQ(refused, codeOf([&] { service.getValueLimit(25, &number, &number); }));
  EXPECT_EQ(refused, codeOf([&] { service.setStringValue(74, "a", 2); }));
  EXPECT_EQ(refused, codeOf([&] { service.setLongValue(25, 5, 2); }));
  EXPECT_EQ(refused, codeOf([&] { service.setBooleanValue(42, true, 2); }));
  EXPECT_EQ(refused, codeOf([&] { service.setSelectionValue(83, 1, &number, 2); }));
}

}  // namespace
