// The tuning library with the local engine, as a caller of the C functions meets it.
#include <algorithm>
#include <climits>
#include <cstring>
#include <dlfcn.h>
#include <functional>
#include <gtest/gtest.h>
#include <set>
#include <tuple>

#include "support/Process.h"
#include "support/TempFolder.h"
#include "tuning/StoreConnection.h"
#include "tuning/registry/Catalogue.h"
#include "tuning/registry/ValueRules.h"

namespace {

namespace fs = std::filesystem;
using Setting = tn::registry::CatalogueSetting;

constexpr int kNone = 9999;  // no setting or category has this id

const Setting& settingWith(const std::function<bool(const Setting&)>& property) {
  for (const auto& category : tn::registry::Catalogue::compiledIn()->categories()) {
    const auto found = std::ranges::find_if(category.settings, property);
    if (found != category.settings.end()) return *found;
  }
  throw std::logic_error("no such setting");
}

const Setting& settingOfType(TnValueType type) {
  return settingWith([=](const Setting& s) { return s.type == type && s.available; });
}

class TuningLibrary : public testing::Test {
 protected:
  ~TuningLibrary() override { TnStop(0); }

  const TempFolder folder;
  const Connection connection{"file:" + folder / "store.db"};
  const TnHandle h = connection.handle;
};

TEST(Catalogue, IsSoundAndHoldsNothingTwice) {
  const auto catalogue = tn::registry::Catalogue::compiledIn();
  std::set<int32_t> restartIds;
  std::set<std::string_view> names;
  for (const auto& category : catalogue->categories()) {
    for (const Setting& setting : category.settings) {
      EXPECT_EQ(catalogue->setting(setting.id), &setting);
      EXPECT_TRUE(names.insert(setting.name).second) << setting.name;
      EXPECT_EQ(tn::registry::refusal(setting, setting.defaultValue), TN_SUCCESS) << setting.id;
      const bool restart = setting.description.ends_with(". Takes effect after a restart.");
      if (restart) restartIds.insert(setting.id);
    }
  }
  EXPECT_TRUE(std::ranges::equal(restartIds, TN_RESTART_SETTINGS));
}

TEST_F(TuningLibrary, RefusesWhatACallerMustNotPass) {
  const int off = settingWith([](const Setting& s) { return !s.available; }).id;
  const int one = settingOfType(TN_TYPE_SINGLE_SELECTION).id;
  const TnHandle closed = Connection("file:x").handle;
  EXPECT_NE(closed, Connection("file:x").handle) << "a handle was given out twice";

  int n = 30;
  int32_t value = 0;
  char text[TN_TEXT_SIZE];
  const TnStatus null = TN_INVALID_ARGUMENT;
  const std::tuple<const char*, TnStatus, TnStatus> cases[] = {
      {"closed twice", TN_INVALID_HANDLE, TnDisconnect(closed)},
      {"never used", TN_SUCCESS, TnDisconnect(TN_LOCAL_HANDLE)},
      {"null server", null, TnConnectServer(nullptr, "", "", &value)},
      {"null text", null, TnGetStringValue(h, kText, &n, nullptr, 2)},
      {"null new items", null, TnSetSelectionValue(h, one, 1, nullptr, 2)},
      {"closed handle", TN_INVALID_HANDLE, TnGetLongValue(closed, kNumber, &value, 2)},
      {"no category", TN_UNKNOWN_CATEGORY, TnGetSettingList(h, kNone, &n, &value)},
      {"selector 0", TN_INVALID_SELECTOR, TnGetLongValue(h, kNumber, &value, 0)},
      {"new default", TN_DEFAULT_NOT_WRITABLE, TnSetLongValue(h, kNumber, 5, 1)},
      {"new default items", TN_DEFAULT_NOT_WRITABLE, TnSetSelectionValue(h, one, 1, &value, 1)},
      {"unavailable, read", TN_SETTING_UNAVAILABLE, TnGetLongValue(h, off, &value, 1)},
      {"integer for text", TN_WRONG_VALUE_TYPE, TnSetLongValue(h, kText, 5, 2)},
      {"item of none", TN_UNKNOWN_ITEM, TnGetSelectionString(h, one, INT_MAX, &n, text)}};
  for (const auto& [what, expected, actual] : cases) EXPECT_EQ(expected, actual) << what;
  EXPECT_EQ(0, TnIsSettingAvailable(h, kNone));
  TnStop(0);
  EXPECT_EQ(0, TnIsSettingAvailable(h, kNumber)) << "it is still open";
}

TEST_F(TuningLibrary, TellsTheNeededCapacityAndCutsNothing) {
  const int boolean = settingOfType(TN_TYPE_BOOLEAN).id;
  char text[TN_TEXT_SIZE], word[TN_WORD_SIZE];
  auto* const list = reinterpret_cast<int32_t*>(text);
  ASSERT_EQ(TN_SUCCESS, connection.set("some text"));
  const auto falseWord = [&](int* n) {
    int other = TN_WORD_SIZE;
    return TnGetBooleanStrings(h, boolean, &other, word, n, text);
  };
  const std::tuple<const char*, int, std::function<TnStatus(int*)>> cases[] = {
      {"categories", 0, [&](int* n) { return TnGetCategoryList(h, n, list); }},
      {"text", 1, [&](int* n) { return TnGetStringValue(h, kText, n, text, 2); }},
      {"false word", 1, falseWord}};
  for (const auto& [what, terminator, call] : cases) {
    int needed = 0;
    std::memset(text, '#', sizeof text);
    ASSERT_EQ(TN_BUFFER_TOO_SMALL, call(&needed)) << what;
    int less = needed - 1, written = needed;
    EXPECT_EQ(TN_BUFFER_TOO_SMALL, call(&less)) << what;
    EXPECT_EQ(needed, less);
    EXPECT_TRUE(text[0] == '#' && text[1] == '#') << "something was written";
    EXPECT_EQ(TN_SUCCESS, call(&written));
    EXPECT_EQ(needed - terminator, written);
    EXPECT_TRUE(terminator == 0 || static_cast<size_t>(written) == std::strlen(text));
  }
}

TEST_F(TuningLibrary, TakesTheValuesOfASettingOnly) {
  const int text = settingWith([](const Setting& s) { return s.type == 2 && s.minimum > 0; }).id;
  const auto longest =
      static_cast<size_t>(settingWith([](const Setting& s) { return s.id == kText; }).maximum);
  const Setting& one = settingOfType(TN_TYPE_SINGLE_SELECTION);
  const Setting& any = settingOfType(TN_TYPE_MULTIPLE_SELECTION);
  const auto items = [this](const Setting& setting, const std::vector<int32_t>& chosen) {
    const int count = static_cast<int>(chosen.size());
    return TnSetSelectionValue(h, setting.id, count, chosen.data(), TN_CURRENT_VALUE);
  };
  const auto past = static_cast<int32_t>(one.words.size());
  const std::tuple<const char*, TnStatus, TnStatus> cases[] = {
      {"too large", TN_VALUE_OUT_OF_RANGE, connection.set(3601)},
      {"wide", TN_VALUE_OUT_OF_RANGE, connection.set((int64_t{1} << 32) + 5)},
      {"longest", TN_SUCCESS, connection.set(std::string(longest, 'y'))},
      {"too long", TN_VALUE_TOO_LONG, connection.set(std::string(longest + 1, 'y'))},
      {"line end", TN_CONTROL_CHARACTER, connection.set("a\nb")},
      {"blank", TN_EMPTY_VALUE, TnSetStringValue(h, text, " \t", TN_CURRENT_VALUE)},
      {"past the last", TN_NOT_A_CHOICE, items(one, {past})},
      {"two of one", TN_ONE_CHOICE_REQUIRED, items(one, {0, 1})},
      {"not in order", TN_SUCCESS, items(any, {1, 0})},
      {"twice", TN_DUPLICATE_CHOICE, items(any, {0, 1, 0})},
      {"no item", TN_EMPTY_VALUE, items(any, {})},
      {"too many", TN_VALUE_TOO_LONG, items(any, std::vector(TN_SELECTION_CAPACITY + 1, 0))}};
  for (const auto& [what, expected, actual] : cases) EXPECT_EQ(expected, actual) << what;
  EXPECT_EQ(kDefaultNumber, connection.number());
  EXPECT_EQ(std::string(longest, 'y'), connection.text());
  int32_t kept[2] = {};
  int size = 2;
  EXPECT_EQ(TN_SUCCESS, TnGetSelectionValue(h, any.id, &size, kept, TN_CURRENT_VALUE));
  EXPECT_TRUE(size == 2 && kept[0] == 1 && kept[1] == 0) << size << kept[0] << kept[1];
}

TEST_F(TuningLibrary, KnowsTheFormsOfServerNames) {
  TnHandle none = TN_NO_HANDLE;
  EXPECT_EQ(TN_UNKNOWN_SERVER_FORM, TnConnectServer("file:", "", "", &none));
  EXPECT_EQ(TN_LOCAL_ENGINE_HAS_NO_USERS, TnConnectServer("file:x", "", "secret", &none));
  // SQLite would give these a meaning of their own.
  for (const char* const name : {":memory:", "file:x", "x?mode=ro", "\xff"}) {
    EXPECT_TRUE(inChild([&] {
      fs::current_path(folder.path());
      return Connection(std::string("file:") + name).set(5) == TN_SUCCESS && fs::exists(name);
    })) << name;
  }
}

// A copy of the library in a folder of its own looks for its modules there. It stays loaded, as the
// library does not free its table of handles.
TEST_F(TuningLibrary, TellsWhatIsWrongWithAnEngineModule) {
  const std::string original = programFolder() + "/" KNOB_LIBRARY_PATH "/libtn.so.1";
  const fs::path module = fs::path(folder.path()) / KNOB_MODULE_PATH / "libtn-postgresql.so";
  fs::copy_file(original, folder / "libtn.so.1");
  fs::create_directories(module.parent_path());
  void* const copy = dlopen((folder / "libtn.so.1").c_str(), RTLD_NOW | RTLD_LOCAL);
  ASSERT_NE(nullptr, copy) << dlerror();
  const auto status = [&] {
    TnHandle opened = TN_NO_HANDLE;
    void* const symbol = dlsym(copy, "TnConnectServer");
    return reinterpret_cast<decltype(&TnConnectServer)>(symbol)("postgres://x", "", "", &opened);
  };
  EXPECT_EQ(TN_MODULE_NOT_INSTALLED, status());
  writeFile(module, "not a library");
  EXPECT_EQ(TN_MODULE_UNUSABLE, status());
  fs::remove(module);
  fs::copy_file(original, module);
  EXPECT_EQ(TN_MODULE_UNUSABLE, status()) << "it has no entry";
}

}  // namespace
