// The tuning library with the local engine, as a caller of the C functions meets it: real store
// files in a folder of their own, other processes where it takes some.
#include <algorithm>
#include <climits>
#include <cstring>
#include <dlfcn.h>
#include <functional>
#include <gtest/gtest.h>
#include <sqlite3.h>
#include <sys/stat.h>
#include <tuple>
#include <unistd.h>
#include <vector>

#include "support/Process.h"
#include "support/TempFolder.h"
#include "tuning/registry/Catalogue.h"

namespace {

namespace fs = std::filesystem;
using Setting = tn::registry::CatalogueSetting;
const auto kCatalogue = tn::registry::Catalogue::compiledIn();

constexpr int kInteger = 25;      // an integer that takes 5, which is not its default
constexpr int kDefault = 20;      // what it is by default
constexpr int kMayBeEmpty = 74;   // the one text that may be empty
constexpr int kNoSetting = 9999;  // no setting or category has this id

std::vector<Setting> settingsWith(bool (*property)(const Setting&)) {
  std::vector<Setting> found;
  for (const auto& category : kCatalogue->categories()) {
    std::copy_if(category.settings.begin(), category.settings.end(), std::back_inserter(found),
                 property);
  }
  return found;
}

// One that is available.
template <TnValueType type>
int idOfType() {
  return settingsWith([](const Setting& s) { return s.type == type && s.available; }).at(0).id;
}

// Runs SQL on the file as any other program would.
void runSql(const std::string& file, const std::string& sql) {
  sqlite3* database = nullptr;
  ASSERT_EQ(SQLITE_OK, sqlite3_open(file.c_str(), &database));
  EXPECT_EQ(SQLITE_OK, sqlite3_exec(database, sql.c_str(), nullptr, nullptr, nullptr)) << sql;
  sqlite3_close(database);
}

class TuningLibrary : public testing::Test {
 protected:
  TuningLibrary() : handle(connect("file:" + store)) {
    setenv("XDG_STATE_HOME", (folder / "state").c_str(), 1);
  }
  ~TuningLibrary() override { TnStop(0); }

  static TnHandle connect(const std::string& server) {
    TnHandle opened = TN_NO_HANDLE;
    EXPECT_EQ(TN_SUCCESS, TnConnectServer(server.c_str(), "", "", &opened)) << server;
    return opened;
  }
  // Calls on a connection of their own, which sees what the file holds now; the status is that of
  // connecting if this fails.
  TnStatus onFresh(const std::function<TnStatus(TnHandle)>& call) const {
    TnHandle fresh = TN_NO_HANDLE;
    TnStatus status = TnConnectServer(("file:" + store).c_str(), "", "", &fresh);
    if (status != TN_SUCCESS) return status;
    status = call(fresh);
    EXPECT_EQ(TN_SUCCESS, TnDisconnect(fresh));
    return status;
  }
  TnStatus readNow(int32_t* value, int id = kInteger) const {
    return onFresh([=](TnHandle h) { return TnGetLongValue(h, id, value, TN_CURRENT_VALUE); });
  }
  TnStatus writeNow(int64_t value, int id = kInteger) const {
    return onFresh([=](TnHandle h) { return TnSetLongValue(h, id, value, TN_CURRENT_VALUE); });
  }
  int32_t valueNow(int id = kInteger) const {
    int32_t value = INT32_MIN;
    EXPECT_EQ(TN_SUCCESS, readNow(&value, id));
    return value;
  }

  const TempFolder temporary;
  const fs::path folder = temporary.path();
  const std::string store = temporary / "store.db";
  TnHandle handle = TN_NO_HANDLE;
};

TEST_F(TuningLibrary, RefusesWhatACallerMustNotPass) {
  const int off = settingsWith([](const Setting& s) { return !s.available; }).at(0).id;
  const int one = idOfType<TN_TYPE_SINGLE_SELECTION>();
  const TnHandle h = handle;
  const TnHandle closed = connect("");
  EXPECT_EQ(TN_SUCCESS, TnDisconnect(closed));
  EXPECT_NE(closed, connect("")) << "a handle was given out twice";
  EXPECT_EQ(TN_INVALID_HANDLE, TnDisconnect(closed));
  EXPECT_EQ(TN_INVALID_HANDLE, TnDisconnect(-7));

  int n = 30;
  int negative = -1;
  int ids[TN_SETTING_CAPACITY];
  int32_t value = 0;
  char text[TN_TEXT_SIZE];
  TnCategoryRecord category{};
  TnSettingRecord record{};
  const TnStatus null = TN_INVALID_ARGUMENT;
  const std::tuple<const char*, TnStatus, TnStatus> cases[] = {
      {"null server", null, TnConnectServer(nullptr, "", "", &value)},
      {"null category count", null, TnGetCategoryListCount(h, nullptr)},
      {"null category record", null, TnGetCategoryInfo(h, 1, nullptr)},
      {"null text", null, TnGetStringValue(h, kMayBeEmpty, &n, nullptr, 2)},
      {"null integer", null, TnGetLongValue(h, kInteger, nullptr, 2)},
      {"null word", null, TnGetBooleanStrings(h, kInteger, &n, text, &n, nullptr)},
      {"null item text", null, TnGetSelectionString(h, one, 0, &n, nullptr)},
      {"null new text", null, TnSetStringValue(h, kMayBeEmpty, nullptr, 2)},
      {"null new items", null, TnSetSelectionValue(h, one, 1, nullptr, 2)},
      {"negative capacity", null, TnGetCategoryList(h, &negative, ids)},
      {"boolean of 2", null, TnSetBooleanValue(h, kInteger, 2, 2)},
      {"closed handle", TN_INVALID_HANDLE, TnGetSettingInfo(closed, kInteger, &record)},
      {"no category", TN_UNKNOWN_CATEGORY, TnGetCategoryInfo(h, kNoSetting, &category)},
      {"help of none", TN_UNKNOWN_SETTING, TnGetSettingHelp(INT_MIN, &n, text)},
      {"value of none", TN_UNKNOWN_SETTING, TnGetLongValue(h, kNoSetting, &value, 2)},
      {"selector 0", TN_INVALID_SELECTOR, TnGetLongValue(h, kInteger, &value, 0)},
      {"new default", TN_DEFAULT_NOT_WRITABLE, TnSetLongValue(h, kInteger, 5, 1)},
      {"new default items", TN_DEFAULT_NOT_WRITABLE, TnSetSelectionValue(h, one, 1, &value, 1)},
      {"unavailable, read", TN_SETTING_UNAVAILABLE, TnGetLongValue(h, off, &value, 1)},
      {"integer for text", TN_WRONG_VALUE_TYPE, TnSetLongValue(h, kMayBeEmpty, 5, 2)},
      {"item -1", TN_UNKNOWN_ITEM, TnGetSelectionString(h, one, -1, &n, text)},
      {"item of none", TN_UNKNOWN_ITEM, TnGetSelectionString(h, one, INT_MAX, &n, text)},
  };
  for (const auto& [what, expected, actual] : cases) EXPECT_EQ(expected, actual) << what;
  EXPECT_EQ(0, TnIsSettingAvailable(h, kNoSetting));
  TnStop(0);
  EXPECT_EQ(0, TnIsSettingAvailable(h, kInteger)) << "it is still open";
  EXPECT_NE(0, TnIsSettingAvailable(TN_LOCAL_HANDLE, kInteger));
}

TEST_F(TuningLibrary, TellsTheNeededCapacityAndCutsNothing) {
  const int boolean = idOfType<TN_TYPE_BOOLEAN>();
  const int one = idOfType<TN_TYPE_SINGLE_SELECTION>();
  const TnHandle h = handle;
  char text[4096];
  int32_t list[TN_SELECTION_CAPACITY];
  int other = TN_WORD_SIZE;
  char word[TN_WORD_SIZE];
  ASSERT_EQ(TN_SUCCESS, TnSetStringValue(h, kMayBeEmpty, "some text", TN_CURRENT_VALUE));
  const std::tuple<const char*, int, std::function<TnStatus(int*)>> cases[] = {
      {"categories", 0, [&](int* n) { return TnGetCategoryList(h, n, list); }},
      {"text", 1, [&](int* n) { return TnGetStringValue(h, kMayBeEmpty, n, text, 2); }},
      {"true word", 1,
       [&](int* n) { return TnGetBooleanStrings(h, boolean, n, text, &other, word); }},
      {"false word", 1,
       [&](int* n) { return TnGetBooleanStrings(h, boolean, &other, word, n, text); }},
      {"items", 0, [&](int* n) { return TnGetAllPossibleSelections(h, one, n, list); }},
      {"help", 1, [&](int* n) { return TnGetSettingHelp(kInteger, n, text); }},
  };
  for (const auto& [what, terminator, call] : cases) {
    SCOPED_TRACE(what);
    int needed = 0;
    std::memset(text, '#', sizeof text);
    std::memset(list, '#', sizeof list);
    ASSERT_EQ(TN_BUFFER_TOO_SMALL, call(&needed));
    int less = needed - 1;
    other = TN_WORD_SIZE;
    EXPECT_EQ(TN_BUFFER_TOO_SMALL, call(&less));
    EXPECT_EQ(needed, less);
    EXPECT_TRUE(text[0] == '#' && list[0] == 0x23232323) << "something was written";
    other = TN_WORD_SIZE;
    int written = needed;
    EXPECT_EQ(TN_SUCCESS, call(&written));
    EXPECT_EQ(needed - terminator, written);
    EXPECT_TRUE(terminator == 0 || static_cast<size_t>(written) == std::strlen(text));
  }
}

TEST_F(TuningLibrary, TakesIntegersWithinTheirLimitsOnly) {
  // One of each: limits that are numbers, and each symbolic maximum.
  std::vector<Setting> settings = {*kCatalogue->setting(kInteger)};
  for (const Setting& setting : settingsWith([](const Setting& s) { return s.maximum < 0; })) {
    const auto sameMaximum = [&](const Setting& s) { return s.maximum == setting.maximum; };
    if (std::ranges::none_of(settings, sameMaximum)) settings.push_back(setting);
  }
  ASSERT_EQ(4U, settings.size());
  for (const Setting& setting : settings) {
    const int64_t maximum = setting.maximum < 0 ? INT32_MAX : setting.maximum;
    const int64_t refused[] = {maximum + 1,
                               int64_t{INT32_MAX} + 1,
                               int64_t{setting.minimum} - 1,
                               int64_t{INT32_MIN} - 1,
                               (int64_t{1} << 32) + maximum,
                               INT64_MAX};
    for (const int64_t limit : {int64_t{setting.minimum}, maximum}) {
      EXPECT_EQ(TN_SUCCESS, writeNow(limit, setting.id)) << setting.name << limit;
      for (const int64_t value : refused) {
        EXPECT_EQ(TN_VALUE_OUT_OF_RANGE, writeNow(value, setting.id)) << value;
      }
      EXPECT_EQ(limit, valueNow(setting.id));
    }
  }
}

TEST_F(TuningLibrary, KeepsTextByteForByteOrRefusesIt) {
  const auto isText = [](const Setting& s) { return s.type == TN_TYPE_STRING && s.minimum > 0; };
  const int filled = settingsWith(isText).at(0).id;
  const auto longest = static_cast<size_t>(kCatalogue->setting(kMayBeEmpty)->maximum);
  const std::tuple<int, std::string, TnStatus> cases[] = {
      {kMayBeEmpty, "", TN_SUCCESS},
      {filled, "", TN_EMPTY_VALUE},
      {filled, " \t", TN_EMPTY_VALUE},
      {kMayBeEmpty, std::string(longest, 'y'), TN_SUCCESS},
      {kMayBeEmpty, std::string(longest + 1, 'y'), TN_VALUE_TOO_LONG},
      {kMayBeEmpty, std::string(100'000, 'y'), TN_VALUE_TOO_LONG},
      {kMayBeEmpty, "a\nb", TN_CONTROL_CHARACTER},
      {kMayBeEmpty, "\x7f", TN_CONTROL_CHARACTER},
      {kMayBeEmpty, "';DROP TABLE \"x\\", TN_SUCCESS}};
  for (const auto& [id, value, expected] : cases) {
    SCOPED_TRACE(value.substr(0, 20));
    EXPECT_EQ(expected, TnSetStringValue(handle, id, value.c_str(), TN_CURRENT_VALUE));
    if (expected != TN_SUCCESS) continue;
    char text[TN_TEXT_SIZE];
    int size = sizeof text;
    const TnHandle fresh = connect("file:" + store);
    EXPECT_EQ(TN_SUCCESS, TnGetStringValue(fresh, id, &size, text, TN_CURRENT_VALUE));
    EXPECT_EQ(value, text);
    TnDisconnect(fresh);
  }
}

TEST_F(TuningLibrary, TakesSelectionsOfExistingItems) {
  const int one = idOfType<TN_TYPE_SINGLE_SELECTION>();
  const int any = idOfType<TN_TYPE_MULTIPLE_SELECTION>();
  const int itemsOfOne = static_cast<int>(kCatalogue->setting(one)->words.size());
  const int itemsOfAny = static_cast<int>(kCatalogue->setting(any)->words.size());
  const std::tuple<int, std::vector<int32_t>, TnStatus> cases[] = {
      {one, {itemsOfOne - 1}, TN_SUCCESS},
      {one, {itemsOfOne}, TN_NOT_A_CHOICE},
      {one, {-1}, TN_NOT_A_CHOICE},
      {one, {0, 1}, TN_ONE_CHOICE_REQUIRED},
      {any, {itemsOfAny - 1, 0}, TN_SUCCESS},
      {any, {0, 1, 0}, TN_DUPLICATE_CHOICE},
      {any, {}, TN_EMPTY_VALUE},
      {any, std::vector<int32_t>(TN_SELECTION_CAPACITY + 1), TN_VALUE_TOO_LONG}};
  for (const auto& [id, items, expected] : cases) {
    const int count = static_cast<int>(items.size());
    EXPECT_EQ(expected, TnSetSelectionValue(handle, id, count, items.data(), 2));
    if (expected != TN_SUCCESS) continue;
    std::vector<int32_t> kept(TN_SELECTION_CAPACITY);
    int size = TN_SELECTION_CAPACITY;
    EXPECT_EQ(TN_SUCCESS, TnGetSelectionValue(handle, id, &size, kept.data(), 2));
    kept.resize(static_cast<size_t>(size));
    EXPECT_EQ(items, kept);
  }
}

TEST_F(TuningLibrary, WritesChangesOnly) {
  ASSERT_EQ(TN_SUCCESS, writeNow(kDefault));
  EXPECT_FALSE(fs::exists(store));
  const struct {
    int32_t byOthers;  // set through another connection first, of which this one has no news
    int32_t value;
    bool written;
  } steps[] = {{kDefault, 5, true}, {5, 5, false}, {5, kDefault, true}, {6, kDefault, true}};
  for (const auto& step : steps) {
    ASSERT_EQ(TN_SUCCESS, writeNow(step.byOthers));
    const std::string before = readFile(store);
    ASSERT_EQ(TN_SUCCESS, TnSetLongValue(handle, kInteger, step.value, TN_CURRENT_VALUE));
    EXPECT_EQ(step.written, readFile(store) != before);
    EXPECT_EQ(step.value, valueNow());
  }
}

TEST_F(TuningLibrary, LeavesAStoreThatItCannotUseAsItIs) {
  ASSERT_EQ(TN_SUCCESS, writeNow(5));
  const std::string good = readFile(store);
  std::string holed = good;
  holed.replace(4096, 2000, std::string(2000, '\x5a'));
  const std::string zeroed = good.substr(0, good.size() - 20) + std::string(20, '\0');
  const auto file = [this](const std::string& bytes) {
    return [this, bytes] { writeFile(store, bytes); };
  };
  const auto sql = [this, &good](const std::string& statements) {
    return [this, &good, statements] {
      writeFile(store, good);
      runSql(store, statements);
    };
  };
  const std::tuple<TnStatus, std::function<void()>> cases[] = {
      {TN_STORE_NOT_A_FILE, [&] { fs::create_directory(store); }},
      {TN_STORE_NOT_A_FILE, [&] { mkfifo(store.c_str(), 0666); }},
      {TN_STORE_PATH_UNUSABLE, [&] { fs::create_symlink(store, store); }},
      {TN_STORE_FOREIGN, file("Setting ID: 25\n")},
      {TN_STORE_FOREIGN, [&] { runSql(store, "CREATE TABLE setting (id, value)"); }},
      {TN_STORE_NEWER, sql("PRAGMA user_version = 2")},
      {TN_STORE_DAMAGED, file(holed)},
      {TN_STORE_DAMAGED, file(std::string(8192, '\0'))},
      {TN_STORE_DAMAGED, file(zeroed)},
      {TN_STORE_DAMAGED, file(good.substr(0, good.size() - 20))},
      {TN_STORE_DAMAGED, file(good.substr(0, 4097))},
      {TN_STORE_DAMAGED, sql("ALTER TABLE setting RENAME TO x")},
      {TN_STORE_DAMAGED, sql("CREATE TABLE other (x)")},
      {TN_STORE_DAMAGED, sql("CREATE TRIGGER t BEFORE UPDATE ON setting"
                             " BEGIN SELECT RAISE(IGNORE); END")},
      {TN_STORE_DAMAGED, sql("DROP TABLE setting; CREATE VIEW setting (id, value) AS WITH RECURSIVE"
                             " n(i) AS (SELECT 1 UNION ALL SELECT i FROM n) SELECT i, '' FROM n")},
      {TN_STORE_DAMAGED, sql("DROP TABLE setting; CREATE TABLE setting (id, value)")},
      {TN_STORE_DAMAGED, sql("INSERT INTO setting VALUES (1 << 40, '')")},
      {TN_SUCCESS, sql("INSERT INTO setting VALUES (9999, 'of a later release')")},
      {TN_SUCCESS, file("")},
  };
  for (size_t i = 0; i < std::size(cases); ++i) {
    SCOPED_TRACE(i);
    const auto& [expected, prepare] = cases[i];
    fs::remove(store);
    prepare();
    std::error_code unknown;
    const bool readable = fs::is_regular_file(store, unknown);
    const std::string before = readable ? readFile(store) : "";
    int32_t value = 0;
    EXPECT_EQ(expected, onFresh([](TnHandle) -> TnStatus { return TN_SUCCESS; }));
    EXPECT_EQ(expected, readNow(&value));
    EXPECT_EQ(expected, writeNow(6));
    EXPECT_TRUE(expected != TN_SUCCESS || valueNow() == 6);
    EXPECT_TRUE(expected == TN_SUCCESS || !readable || before == readFile(store));
  }
  sql("UPDATE setting SET value = 'five'")();
  int32_t value = 0;
  EXPECT_EQ(TN_STORE_DAMAGED, readNow(&value));
  EXPECT_EQ(TN_SUCCESS, writeNow(6)) << "setting it anew repairs it";
}

TEST_F(TuningLibrary, NamesTheRightThatIsMissing) {
  ASSERT_EQ(TN_SUCCESS, writeNow(5));
  const std::tuple<unsigned, unsigned, TnStatus, TnStatus> cases[] = {
      {0777, 0000, TN_STORE_NOT_READABLE, TN_STORE_NOT_READABLE},
      {0777, 0444, TN_SUCCESS, TN_STORE_NOT_WRITABLE},
      {0555, 0666, TN_SUCCESS, TN_STORE_NOT_WRITABLE},
      {0000, 0666, TN_STORE_NOT_READABLE, TN_STORE_NOT_READABLE},
  };
  int32_t current = 0;
  for (const auto& [folderMode, fileMode, onRead, onWrite] : cases) {
    SCOPED_TRACE(onWrite);
    fs::permissions(store, fs::perms(fileMode));
    fs::permissions(folder, fs::perms(folderMode));
    EXPECT_EQ(onRead, inChild([&] { return readNow(&current); }, kNobody));
    EXPECT_EQ(onWrite, inChild([&] { return writeNow(6); }, kNobody));
    EXPECT_EQ(onRead, inChild([&] { return writeNow(5); }, kNobody)) << "5 is current already";
    fs::permissions(folder, fs::perms(0755));
  }
  const TnHandle nowhere = connect("file:" + (folder / "missing/store.db").string());
  EXPECT_EQ(TN_SUCCESS, TnGetLongValue(nowhere, kInteger, &current, TN_CURRENT_VALUE));
  EXPECT_EQ(TN_STORE_NO_FOLDER, TnSetLongValue(nowhere, kInteger, 5, TN_CURRENT_VALUE));
}

TEST_F(TuningLibrary, MakesNoFileUnderAPathThatIsTooLong) {
  EXPECT_EQ(TN_STORE_PATH_UNUSABLE, inChild([this] {
              const std::string part(200, 'd');
              fs::create_directories(folder / part / part / part);
              fs::current_path(folder / part / part / part);
              const TnHandle deep = connect("file:x.db");
              const int status = TnSetLongValue(deep, kInteger, 6, TN_CURRENT_VALUE);
              return fs::exists("x.db") ? -2 : status;
            }));
}

// A child changes much, so that pages reach the file before the end of the transaction, and ends.
TEST_F(TuningLibrary, UndoesAFirstChangeThatWasCutOff) {
  inChild([&]() -> int {
    sqlite3* database = nullptr;
    sqlite3_open(store.c_str(), &database);
    sqlite3_exec(database,
                 "PRAGMA cache_size = 1; BEGIN;"
                 "PRAGMA application_id = 0x6b6e6f62; PRAGMA user_version = 1;"
                 "CREATE TABLE setting (id INTEGER PRIMARY KEY, value BLOB NOT NULL);"
                 "WITH RECURSIVE n(i) AS (SELECT 1000 UNION ALL SELECT i + 1 FROM n WHERE i < 1200)"
                 " INSERT INTO setting SELECT i, zeroblob(1000) FROM n",
                 nullptr, nullptr, nullptr);
    _exit(0);
  });
  ASSERT_GT(fs::file_size(store), 100'000U) << "nothing was cut off";
  fs::permissions(store, fs::perms(0444));
  int32_t value = 0;
  EXPECT_EQ(TN_STORE_NOT_WRITABLE, inChild([&] { return readNow(&value); }, kNobody));
  fs::permissions(store, fs::perms(0644));
  EXPECT_EQ(kDefault, valueNow());
}

TEST_F(TuningLibrary, KnowsTheFormsOfServerNames) {
  char host[256] = {};
  ASSERT_EQ(0, gethostname(host, sizeof host - 1));
  for (const char* name : {"LocalHost", static_cast<const char*>(host)}) connect(name);
  TnHandle none = TN_NO_HANDLE;
  EXPECT_EQ(TN_UNKNOWN_SERVER_FORM, TnConnectServer("file:", "", "", &none));
  EXPECT_EQ(TN_LOCAL_ENGINE_HAS_NO_USERS, TnConnectServer("file:x", "", "secret", &none));
  EXPECT_EQ(TN_NO_HANDLE, none);
  const fs::path before = fs::current_path();
  fs::current_path(folder);
  for (const char* name : {":memory:", "file:x", "x?mode=ro", "a b", "\xff"}) {
    const TnHandle opened = connect(std::string("file:") + name);
    EXPECT_EQ(TN_SUCCESS, TnSetLongValue(opened, kInteger, 5, TN_CURRENT_VALUE)) << name;
    EXPECT_TRUE(fs::exists(folder / name)) << name;
  }
  fs::current_path(before);
}

// A copy of the library in a folder of its own looks for its modules there. It stays loaded, as the
// library does not free its table of handles.
TEST_F(TuningLibrary, TellsWhatIsWrongWithAnEngineModule) {
  const std::string original = programFolder() + "/" KNOB_LIBRARY_PATH "/libtn.so.1";
  const fs::path module = folder / KNOB_MODULE_PATH / "libtn-postgresql.so";
  fs::copy_file(original, folder / "libtn.so.1");
  fs::create_directories(module.parent_path());
  void* const copy = dlopen((folder / "libtn.so.1").c_str(), RTLD_NOW | RTLD_LOCAL);
  ASSERT_NE(nullptr, copy) << dlerror();
  const auto status = [&](const char* server) {
    TnHandle opened = TN_NO_HANDLE;
    void* const symbol = dlsym(copy, "TnConnectServer");
    return reinterpret_cast<decltype(&TnConnectServer)>(symbol)(server, "", "", &opened);
  };
  EXPECT_EQ(TN_MODULE_NOT_INSTALLED, status("postgres://x"));
  writeFile(module, "not a library");
  EXPECT_EQ(TN_MODULE_UNUSABLE, status("postgresql://x"));
  fs::remove(module);
  fs::copy_file(original, module);
  EXPECT_EQ(TN_MODULE_UNUSABLE, status("postgresql://x")) << "it has no entry";
}

}  // namespace
