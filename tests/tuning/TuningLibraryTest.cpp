// The tuning library with the local engine, as a caller of the C functions meets it: real store
// files in a folder of their own, other processes where it takes some.
#include <algorithm>
#include <chrono>
#include <climits>
#include <csignal>
#include <cstring>
#include <dlfcn.h>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <functional>
#include <gtest/gtest.h>
#include <iterator>
#include <sqlite3.h>
#include <string>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <system_error>
#include <thread>
#include <tuple>
#include <unistd.h>
#include <utility>
#include <vector>

#include "service/TuningInterface.h"

namespace {

namespace fs = std::filesystem;

constexpr int kInteger = 25;      // an integer that takes 5, which is not its default
constexpr int kMayBeEmpty = 74;   // the one text that may be empty
constexpr int kNoSetting = 9999;  // no setting or category has this id
constexpr TnValueType kAnyType = -1;
constexpr uid_t kNobody = 65534;

struct Setting {
  int id = 0;
  TnSettingRecord record{};
  bool available = false;
  int32_t maximum = 0;
  int32_t minimum = 0;
  int items = 0;
};

std::vector<int> categoryIds() {
  std::vector<int> ids(TN_CATEGORY_CAPACITY);
  int count = TN_CATEGORY_CAPACITY;
  EXPECT_EQ(TN_SUCCESS, TnGetCategoryList(TN_LOCAL_HANDLE, &count, ids.data()));
  ids.resize(static_cast<size_t>(count));
  return ids;
}

std::vector<Setting> allSettings() {
  std::vector<Setting> all;
  for (const int category : categoryIds()) {
    int ids[TN_SETTING_CAPACITY];
    int count = TN_SETTING_CAPACITY;
    EXPECT_EQ(TN_SUCCESS, TnGetSettingList(TN_LOCAL_HANDLE, category, &count, ids));
    for (int i = 0; i < count; ++i) {
      Setting found{.id = ids[i]};
      EXPECT_EQ(TN_SUCCESS, TnGetSettingInfo(TN_LOCAL_HANDLE, found.id, &found.record));
      found.available = TnIsSettingAvailable(TN_LOCAL_HANDLE, found.id) != 0;
      TnGetValueLimit(TN_LOCAL_HANDLE, found.id, &found.maximum, &found.minimum);
      TnCountSelectionItems(TN_LOCAL_HANDLE, found.id, &found.items);
      all.push_back(found);
    }
  }
  return all;
}

// The first setting that is (not) available, of the type and with the property asked for.
Setting settingWith(
    TnValueType type, bool available = true,
    const std::function<bool(const Setting&)>& property = [](const Setting&) { return true; }) {
  for (const Setting& setting : allSettings()) {
    const bool fits = type == kAnyType || setting.record.type == type;
    if (fits && setting.available == available && property(setting)) return setting;
  }
  ADD_FAILURE() << "no setting of type " << type << " fits";
  return {};
}

// What `action` returns when a process of its own runs it; as a user without special rights, if so
// asked for and this one may change users.
TnStatus inChild(const std::function<TnStatus()>& action, bool withoutRights = false) {
  int ends[2];
  if (pipe(ends) != 0) return -1;
  const pid_t child = fork();
  if (child == 0) {
    TnStatus status = -1;
    if (!withoutRights || geteuid() != 0 || setresuid(kNobody, kNobody, kNobody) == 0) {
      status = action();
    }
    _exit(write(ends[1], &status, sizeof status) == sizeof status ? 0 : 1);
  }
  close(ends[1]);
  TnStatus status = -1;
  if (read(ends[0], &status, sizeof status) != sizeof status) status = -1;
  close(ends[0]);
  waitpid(child, nullptr, 0);
  return status;
}

std::string contents(const fs::path& file) {
  std::ifstream in(file, std::ios::binary);
  return {std::istreambuf_iterator<char>(in), {}};
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
  TuningLibrary() {
    std::string pattern = (fs::temp_directory_path() / "tuning-XXXXXX").string();
    folder = mkdtemp(pattern.data());
    fs::permissions(folder, fs::perms(0755));
    store = folder / "store.db";
    handle = connect("file:" + store.string());
  }
  ~TuningLibrary() override {
    TnStop(0);
    fs::permissions(folder, fs::perms(0755));
    fs::remove_all(folder);
  }

  static TnHandle connect(const std::string& server) {
    TnHandle opened = TN_NO_HANDLE;
    EXPECT_EQ(TN_SUCCESS, TnConnectServer(server.c_str(), "", "", &opened)) << server;
    return opened;
  }
  // Reads and writes see what the file holds now, not what an earlier read of `handle` saw.
  TnStatus readNow(int32_t* value, int id = kInteger) const {
    const TnHandle fresh = connect("file:" + store.string());
    const TnStatus status = TnGetLongValue(fresh, id, value, TN_CURRENT_VALUE);
    TnDisconnect(fresh);
    return status;
  }
  TnStatus writeNow(int64_t value, int id = kInteger) const {
    const TnHandle fresh = connect("file:" + store.string());
    const TnStatus status = TnSetLongValue(fresh, id, value, TN_CURRENT_VALUE);
    TnDisconnect(fresh);
    return status;
  }
  int32_t valueNow(int id = kInteger) const {
    int32_t value = INT32_MIN;
    EXPECT_EQ(TN_SUCCESS, readNow(&value, id));
    return value;
  }

  fs::path folder;
  fs::path store;
  TnHandle handle = TN_NO_HANDLE;
};

TEST_F(TuningLibrary, RefusesWhatACallerMustNotPass) {
  const int off = settingWith(kAnyType, false).id;
  const int one = settingWith(TN_TYPE_SINGLE_SELECTION).id;
  const TnHandle h = handle;
  const TnHandle closed = connect("");
  TnDisconnect(closed);
  EXPECT_NE(closed, connect("")) << "a handle was given out twice";
  TnDisconnect(-7);

  int n = 30;
  int negative = -1;
  int ids[TN_SETTING_CAPACITY];
  int32_t value = 0;
  int16_t truth = 0;
  char text[TN_TEXT_SIZE];
  TnCategoryRecord category{};
  TnSettingRecord record{};
  const int32_t item = 0;
  const TnStatus null = TN_INVALID_ARGUMENT;
  const std::tuple<const char*, TnStatus, TnStatus> cases[] = {
      {"null server", null, TnConnectServer(nullptr, "", "", &value)},
      {"null user", null, TnConnectServer("", nullptr, "", &value)},
      {"null password", null, TnConnectServer("", "", nullptr, &value)},
      {"null handle", null, TnConnectServer("", "", "", nullptr)},
      {"null category count", null, TnGetCategoryListCount(h, nullptr)},
      {"null category ids", null, TnGetCategoryList(h, &n, nullptr)},
      {"null category record", null, TnGetCategoryInfo(h, 1, nullptr)},
      {"null setting count", null, TnGetSettingList(h, 1, nullptr, ids)},
      {"null setting record", null, TnGetSettingInfo(h, kInteger, nullptr)},
      {"null text", null, TnGetStringValue(h, kMayBeEmpty, &n, nullptr, 2)},
      {"null integer", null, TnGetLongValue(h, kInteger, nullptr, 2)},
      {"null boolean", null, TnGetBooleanValue(h, kInteger, nullptr, 2)},
      {"null word", null, TnGetBooleanStrings(h, kInteger, &n, text, &n, nullptr)},
      {"null items", null, TnGetSelectionValue(h, one, &n, nullptr, 2)},
      {"null item count", null, TnCountSelectionItems(h, one, nullptr)},
      {"null item list", null, TnGetAllPossibleSelections(h, one, &n, nullptr)},
      {"null item text", null, TnGetSelectionString(h, one, 0, &n, nullptr)},
      {"null maximum", null, TnGetValueLimit(h, kInteger, nullptr, &value)},
      {"null help size", null, TnGetSettingHelp(kInteger, nullptr, text)},
      {"null new text", null, TnSetStringValue(h, kMayBeEmpty, nullptr, 2)},
      {"null new items", null, TnSetSelectionValue(h, one, 1, nullptr, 2)},
      {"negative item count", null, TnSetSelectionValue(h, one, -1, &item, 2)},
      {"negative capacity", null, TnGetCategoryList(h, &negative, ids)},
      {"boolean of 2", null, TnSetBooleanValue(h, kInteger, 2, 2)},
      {"closed handle", TN_INVALID_HANDLE, TnGetSettingInfo(closed, kInteger, &record)},
      {"handle 0", TN_INVALID_HANDLE, TnSetLongValue(0, kInteger, 5, 2)},
      {"no handle", TN_INVALID_HANDLE, TnGetCategoryListCount(TN_NO_HANDLE, &n)},
      {"no category", TN_UNKNOWN_CATEGORY, TnGetCategoryInfo(h, kNoSetting, &category)},
      {"settings of none", TN_UNKNOWN_CATEGORY, TnGetSettingList(h, kNoSetting, &n, ids)},
      {"no setting", TN_UNKNOWN_SETTING, TnGetSettingInfo(h, kNoSetting, &record)},
      {"help of none", TN_UNKNOWN_SETTING, TnGetSettingHelp(INT_MIN, &n, text)},
      {"value of none", TN_UNKNOWN_SETTING, TnGetLongValue(h, kNoSetting, &value, 2)},
      {"selector 0", TN_INVALID_SELECTOR, TnGetLongValue(h, kInteger, &value, 0)},
      {"selector 3 to set", TN_INVALID_SELECTOR, TnSetLongValue(h, kInteger, 5, 3)},
      {"new default", TN_DEFAULT_NOT_WRITABLE, TnSetLongValue(h, kInteger, 5, 1)},
      {"unavailable, read", TN_SETTING_UNAVAILABLE, TnGetLongValue(h, off, &value, 1)},
      {"unavailable, set", TN_SETTING_UNAVAILABLE, TnSetLongValue(h, off, 5, 2)},
      {"text of integer", TN_WRONG_VALUE_TYPE, TnGetStringValue(h, kInteger, &n, text, 2)},
      {"truth of integer", TN_WRONG_VALUE_TYPE, TnGetBooleanValue(h, kInteger, &truth, 2)},
      {"limits of text", TN_WRONG_VALUE_TYPE, TnGetValueLimit(h, kMayBeEmpty, &value, &value)},
      {"integer for text", TN_WRONG_VALUE_TYPE, TnSetLongValue(h, kMayBeEmpty, 5, 2)},
      {"item -1", TN_UNKNOWN_ITEM, TnGetSelectionString(h, one, -1, &n, text)},
      {"item of none", TN_UNKNOWN_ITEM, TnGetSelectionString(h, one, INT_MAX, &n, text)},
  };
  for (const auto& [what, expected, actual] : cases) EXPECT_EQ(expected, actual) << what;
  EXPECT_EQ(0, TnIsSettingAvailable(h, kNoSetting));
  EXPECT_EQ(0, TnIsSettingAvailable(closed, kInteger));
  TnStop(0);
  EXPECT_EQ(0, TnIsSettingAvailable(h, kInteger)) << "it is still open";
  EXPECT_NE(0, TnIsSettingAvailable(TN_LOCAL_HANDLE, kInteger));
  EXPECT_FALSE(fs::exists(store));
}

TEST_F(TuningLibrary, TellsTheNeededCapacityAndCutsNothing) {
  const int boolean = settingWith(TN_TYPE_BOOLEAN).id;
  const int one = settingWith(TN_TYPE_SINGLE_SELECTION).id;
  const int category = categoryIds()[0];
  const TnHandle h = handle;
  char text[4096];
  int32_t list[TN_SELECTION_CAPACITY];
  int other = TN_WORD_SIZE;
  char word[TN_WORD_SIZE];
  ASSERT_EQ(TN_SUCCESS, TnSetStringValue(h, kMayBeEmpty, "some text", TN_CURRENT_VALUE));
  const std::tuple<const char*, int, std::function<TnStatus(int*)>> cases[] = {
      {"categories", 0, [&](int* n) { return TnGetCategoryList(h, n, list); }},
      {"settings", 0, [&](int* n) { return TnGetSettingList(h, category, n, list); }},
      {"text", 1, [&](int* n) { return TnGetStringValue(h, kMayBeEmpty, n, text, 2); }},
      {"true word", 1,
       [&](int* n) { return TnGetBooleanStrings(h, boolean, n, text, &other, word); }},
      {"false word", 1,
       [&](int* n) { return TnGetBooleanStrings(h, boolean, &other, word, n, text); }},
      {"items selected", 0, [&](int* n) { return TnGetSelectionValue(h, one, n, list, 2); }},
      {"items", 0, [&](int* n) { return TnGetAllPossibleSelections(h, one, n, list); }},
      {"item text", 1, [&](int* n) { return TnGetSelectionString(h, one, 0, n, text); }},
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
  const auto plainLimits = [](const Setting& s) { return s.maximum > 0 && s.maximum < INT32_MAX; };
  const Setting plain = settingWith(TN_TYPE_INTEGER, true, plainLimits);
  std::vector<std::pair<Setting, int32_t>> settings = {{plain, plain.maximum}};
  for (const int32_t symbolic : {TN_MAX_MEMORY, TN_MAX_DISK, TN_MAX_MEMORY_AND_DISK}) {
    const auto isSymbolic = [=](const Setting& s) { return s.maximum == symbolic; };
    settings.emplace_back(settingWith(TN_TYPE_INTEGER, true, isSymbolic), INT32_MAX);
  }
  for (const auto& [setting, maximum] : settings) {
    const int64_t refused[] = {int64_t{maximum} + 1,
                               int64_t{INT32_MAX} + 1,
                               int64_t{setting.minimum} - 1,
                               int64_t{INT32_MIN} - 1,
                               (int64_t{1} << 32) + maximum,
                               INT64_MAX,
                               INT64_MIN};
    for (const int64_t limit : {int64_t{setting.minimum}, int64_t{maximum}}) {
      EXPECT_EQ(TN_SUCCESS, writeNow(limit, setting.id)) << setting.record.name << limit;
      for (const int64_t value : refused) {
        EXPECT_EQ(TN_VALUE_OUT_OF_RANGE, writeNow(value, setting.id)) << value;
      }
      EXPECT_EQ(limit, valueNow(setting.id));
    }
  }
}

TEST_F(TuningLibrary, KeepsTextByteForByteOrRefusesIt) {
  // The longest text is the setting's own business: ask it.
  size_t longest = TN_TEXT_SIZE - 1;
  while (TnSetStringValue(handle, kMayBeEmpty, std::string(longest, 'x').c_str(), 2) != 0) {
    ASSERT_GT(--longest, 0U);
  }
  const int filled =
      settingWith(TN_TYPE_STRING, true, [](const Setting& s) { return s.id != kMayBeEmpty; }).id;
  const std::tuple<int, std::string, TnStatus> cases[] = {
      {kMayBeEmpty, "", TN_SUCCESS},
      {filled, "", TN_EMPTY_VALUE},
      {kMayBeEmpty, std::string(longest, 'y'), TN_SUCCESS},
      {kMayBeEmpty, std::string(longest + 1, 'y'), TN_VALUE_TOO_LONG},
      {kMayBeEmpty, std::string(1024, 'y'), TN_VALUE_TOO_LONG},
      {kMayBeEmpty, std::string(100'000, 'y'), TN_VALUE_TOO_LONG},
      {kMayBeEmpty, "a\tb", TN_SUCCESS},
      {kMayBeEmpty, "a\nb", TN_CONTROL_CHARACTER},
      {kMayBeEmpty, "a\r", TN_CONTROL_CHARACTER},
      {kMayBeEmpty, "\x1b[m", TN_CONTROL_CHARACTER},
      {kMayBeEmpty, "\x7f", TN_CONTROL_CHARACTER},
      {kMayBeEmpty, "\xc3\xa4\xe2\x82\xac\xf0\x9f\x90\x98", TN_SUCCESS},
      {kMayBeEmpty, "\xff\x80\xc3", TN_SUCCESS},
      {kMayBeEmpty, "';DROP TABLE \"x\\", TN_SUCCESS}};
  for (const auto& [id, value, expected] : cases) {
    SCOPED_TRACE(value.substr(0, 20));
    EXPECT_EQ(expected, TnSetStringValue(handle, id, value.c_str(), TN_CURRENT_VALUE));
    if (expected != TN_SUCCESS) continue;
    char text[TN_TEXT_SIZE];
    int size = sizeof text;
    const TnHandle fresh = connect("file:" + store.string());
    EXPECT_EQ(TN_SUCCESS, TnGetStringValue(fresh, id, &size, text, TN_CURRENT_VALUE));
    EXPECT_EQ(value, text);
    TnDisconnect(fresh);
  }
}

TEST_F(TuningLibrary, TakesSelectionsOfExistingItems) {
  const Setting one = settingWith(TN_TYPE_SINGLE_SELECTION);
  const Setting any =
      settingWith(TN_TYPE_MULTIPLE_SELECTION, true, [](const Setting& s) { return s.items > 2; });
  const std::tuple<int, std::vector<int32_t>, TnStatus> cases[] = {
      {one.id, {one.items - 1}, TN_SUCCESS},
      {one.id, {one.items}, TN_NOT_A_CHOICE},
      {one.id, {-1}, TN_NOT_A_CHOICE},
      {one.id, {}, TN_ONE_CHOICE_REQUIRED},
      {one.id, {0, 1}, TN_ONE_CHOICE_REQUIRED},
      {any.id, {any.items - 1, 0}, TN_SUCCESS},
      {any.id, {1}, TN_SUCCESS},
      {any.id, {0, any.items}, TN_NOT_A_CHOICE},
      {any.id, {0, 1, 0}, TN_DUPLICATE_CHOICE},
      {any.id, {}, TN_EMPTY_VALUE},
      {any.id, std::vector<int32_t>(TN_SELECTION_CAPACITY + 1), TN_VALUE_TOO_LONG}};
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

TEST_F(TuningLibrary, WritesChangesOnlyAndCountsThem) {
  int category = 0;
  TnCategoryRecord record{};
  for (const int id : categoryIds()) {
    int ids[TN_SETTING_CAPACITY];
    int count = TN_SETTING_CAPACITY;
    ASSERT_EQ(TN_SUCCESS, TnGetSettingList(handle, id, &count, ids));
    if (std::count(ids, ids + count, kInteger) == 1) category = id;
  }
  const int32_t byDefault = valueNow();
  ASSERT_EQ(TN_SUCCESS, writeNow(byDefault));
  EXPECT_FALSE(fs::exists(store));
  const struct {
    int32_t byOthers;  // set through another connection first, of which this one has no news
    int32_t value;
    bool written;
    int changed;
  } steps[] = {{byDefault, byDefault, false, 0}, {byDefault, 5, true, 1}, {5, 5, false, 1},
               {5, byDefault, true, 0},          {5, byDefault, true, 0}, {5, 5, false, 1}};
  for (const auto& step : steps) {
    ASSERT_EQ(TN_SUCCESS, writeNow(step.byOthers));
    const std::string before = contents(store);
    ASSERT_EQ(TN_SUCCESS, TnSetLongValue(handle, kInteger, step.value, TN_CURRENT_VALUE));
    EXPECT_EQ(step.written, contents(store) != before);
    ASSERT_EQ(TN_SUCCESS, TnGetCategoryInfo(handle, category, &record));
    EXPECT_EQ(step.changed, record.extraInfo);
    EXPECT_EQ(step.value, valueNow());
    int32_t kept = 0;
    ASSERT_EQ(TN_SUCCESS, TnGetLongValue(handle, kInteger, &kept, TN_DEFAULT_VALUE));
    EXPECT_EQ(byDefault, kept);
  }
}

TEST_F(TuningLibrary, LeavesAStoreThatItCannotUseAsItIs) {
  ASSERT_EQ(TN_SUCCESS, writeNow(5));
  const std::string good = contents(store);
  std::string holed = good;
  holed.replace(4096, 2000, std::string(2000, '\x5a'));
  const auto file = [this](const std::string& bytes) {
    return [this, bytes] { std::ofstream(store, std::ios::binary) << bytes; };
  };
  const auto sql = [this, &good](const std::string& statements) {
    return [this, &good, statements] {
      std::ofstream(store, std::ios::binary) << good;
      runSql(store, statements);
    };
  };
  const std::tuple<TnStatus, std::function<void()>> cases[] = {
      {TN_STORE_NOT_A_FILE, [&] { fs::create_directory(store); }},
      {TN_STORE_NOT_A_FILE, [&] { mkfifo(store.c_str(), 0666); }},
      {TN_STORE_NOT_A_FILE, [&] { fs::create_symlink("/dev/zero", store); }},
      {TN_STORE_IO_ERROR, [&] { fs::create_symlink(store, store); }},
      {TN_STORE_FOREIGN, file("Setting ID: 25\n")},
      {TN_STORE_FOREIGN, file(std::string(9000, 'x'))},
      {TN_STORE_FOREIGN, [&] { runSql(store, "CREATE TABLE setting (id, value)"); }},
      {TN_STORE_NEWER, sql("PRAGMA user_version = 2")},
      {TN_STORE_DAMAGED, file(good.substr(0, 4096))},
      {TN_STORE_DAMAGED, file(holed)},
      {TN_STORE_DAMAGED, file(std::string(8192, '\0'))},
      {TN_STORE_DAMAGED, sql("ALTER TABLE setting RENAME TO x")},
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
    const std::string before = readable ? contents(store) : "";
    int32_t value = 0;
    EXPECT_EQ(expected, readNow(&value));
    EXPECT_EQ(expected, writeNow(6));
    EXPECT_TRUE(expected != TN_SUCCESS || valueNow() == 6);
    EXPECT_TRUE(expected == TN_SUCCESS || !readable || before == contents(store));
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
  for (const auto& [folderMode, fileMode, onRead, onWrite] : cases) {
    SCOPED_TRACE(onWrite);
    fs::permissions(store, fs::perms(fileMode));
    fs::permissions(folder, fs::perms(folderMode));
    int32_t current = 0;
    EXPECT_EQ(onRead, inChild([&] { return readNow(&current); }, true));
    EXPECT_EQ(onWrite, inChild([&] { return writeNow(6); }, true));
    EXPECT_EQ(onRead, inChild([&] { return writeNow(5); }, true)) << "5 is current already";
    fs::permissions(folder, fs::perms(0755));
  }
  fs::remove(store);
  fs::permissions(folder, fs::perms(0555));
  EXPECT_EQ(TN_STORE_NOT_WRITABLE, inChild([&] { return writeNow(6); }, true));
  const TnHandle nowhere = connect("file:" + (folder / "missing/store.db").string());
  int32_t value = 0;
  EXPECT_EQ(TN_SUCCESS, TnGetLongValue(nowhere, kInteger, &value, TN_CURRENT_VALUE));
  EXPECT_EQ(TN_STORE_NO_FOLDER, TnSetLongValue(nowhere, kInteger, 5, TN_CURRENT_VALUE));
  EXPECT_TRUE(fs::is_empty(folder));
}

TEST_F(TuningLibrary, SurvivesAFullDisk) {
  ASSERT_EQ(TN_SUCCESS, writeNow(5));
  const auto full = [this] {
    const rlimit limit{100, 100};
    signal(SIGXFSZ, SIG_IGN);
    setrlimit(RLIMIT_FSIZE, &limit);
    return writeNow(6);
  };
  EXPECT_EQ(TN_STORE_FULL, inChild(full));
  EXPECT_EQ(5, valueNow());
}

// A child changes much, so that pages reach the file before the end of the transaction, and ends.
TEST_F(TuningLibrary, UndoesAChangeThatWasCutOff) {
  const int32_t byDefault = valueNow();
  const std::string create =
      "PRAGMA application_id = 0x6b6e6f62; PRAGMA user_version = 1;"
      "CREATE TABLE setting (id INTEGER PRIMARY KEY, value BLOB NOT NULL);";
  const auto cutOff = [this](const std::string& start) {
    const std::string sql = "PRAGMA cache_size = 1; BEGIN;" + start +
                            "WITH RECURSIVE n(i) AS"
                            " (SELECT 1000 UNION ALL SELECT i + 1 FROM n WHERE i < 1200)"
                            " INSERT INTO setting SELECT i, zeroblob(1000) FROM n";
    inChild([&]() -> TnStatus {
      sqlite3* database = nullptr;
      sqlite3_open(store.c_str(), &database);
      sqlite3_exec(database, sql.c_str(), nullptr, nullptr, nullptr);
      _exit(0);
    });
  };
  cutOff(create);
  ASSERT_GT(fs::file_size(store), 100'000U) << "nothing was cut off";
  EXPECT_EQ(byDefault, valueNow());

  ASSERT_EQ(TN_SUCCESS, writeNow(5));
  const std::string before = contents(store);
  cutOff("UPDATE setting SET value = '6';");
  ASSERT_NE(before, contents(store)) << "nothing was cut off";
  fs::permissions(store, fs::perms(0444));
  int32_t value = 0;
  EXPECT_EQ(TN_STORE_NOT_WRITABLE, inChild([&] { return readNow(&value); }, true));
  fs::permissions(store, fs::perms(0644));
  EXPECT_EQ(5, valueNow());
  EXPECT_EQ(before, contents(store));
}

TEST_F(TuningLibrary, LosesNoChangeOfProcessesThatWriteAtOnce) {
  std::vector<std::pair<int, int32_t>> changes;
  for (const Setting& s : allSettings()) {
    if (s.record.type != TN_TYPE_INTEGER || !s.available || changes.size() == 20) continue;
    int32_t byDefault = 0;
    ASSERT_EQ(TN_SUCCESS, TnGetLongValue(handle, s.id, &byDefault, TN_DEFAULT_VALUE));
    changes.emplace_back(s.id, byDefault == s.minimum ? s.minimum + 1 : s.minimum);
  }
  ASSERT_EQ(20U, changes.size());
  std::vector<pid_t> children;
  for (const auto& [id, value] : changes) {
    children.push_back(fork());
    if (children.back() == 0) _exit(writeNow(value, id) == TN_SUCCESS ? 0 : 1);
  }
  for (const pid_t child : children) {
    int status = -1;
    waitpid(child, &status, 0);
    EXPECT_EQ(0, status);
  }
  for (const auto& [id, value] : changes) EXPECT_EQ(value, valueNow(id)) << id;
}

// A writer that counts up and tells each value that it has set is killed again and again.
TEST_F(TuningLibrary, KeepsTheOldOrTheNewValueWhenAWriterIsKilled) {
  const auto wide = [](const Setting& s) { return s.maximum == TN_MAX_MEMORY; };
  const Setting counter = settingWith(TN_TYPE_INTEGER, true, wide);
  int reported[2];
  ASSERT_EQ(0, pipe(reported));
  int32_t last = counter.minimum;
  ASSERT_EQ(TN_SUCCESS, writeNow(last, counter.id));
  for (int round = 0; round < 40; ++round) {
    const pid_t writer = fork();
    if (writer == 0) {
      for (int32_t next = last + 1;; ++next) {
        if (writeNow(next, counter.id) != TN_SUCCESS) _exit(1);
        if (write(reported[1], &next, sizeof next) != sizeof next) _exit(1);
      }
    }
    int32_t told = last;
    ASSERT_EQ(static_cast<ssize_t>(sizeof told), read(reported[0], &told, sizeof told));
    std::this_thread::sleep_for(std::chrono::microseconds(137 * round));
    kill(writer, SIGKILL);
    int status = 0;
    waitpid(writer, &status, 0);
    ASSERT_TRUE(WIFSIGNALED(status)) << "the writer failed";
    fcntl(reported[0], F_SETFL, O_NONBLOCK);
    while (read(reported[0], &told, sizeof told) == sizeof told) continue;
    fcntl(reported[0], F_SETFL, 0);
    last = valueNow(counter.id);
    ASSERT_TRUE(last == told || last == told + 1) << last << " after " << told;
  }
  close(reported[0]);
  close(reported[1]);
}

TEST_F(TuningLibrary, FindsTheDefaultStore) {
  const std::string home = (folder / "home").string();
  const std::string state = (folder / "state").string();
  const std::tuple<std::string, std::string, std::string> cases[] = {
      {home, "", home + "/.local/state"},
      {home, state, state},
      {home, "state", home + "/.local/state"},
      {"", state, state},
  };
  for (size_t i = 0; i < std::size(cases); ++i) {
    SCOPED_TRACE(i);
    const std::string expected = std::get<2>(cases[i]);
    fs::create_directory(home);
    const auto change = [&, i]() -> TnStatus {
      umask(0);
      setenv("HOME", std::get<0>(cases[i]).c_str(), 1);
      setenv("XDG_STATE_HOME", std::get<1>(cases[i]).c_str(), 1);
      int32_t before = 0;
      const TnStatus read = TnGetLongValue(TN_LOCAL_HANDLE, kInteger, &before, TN_CURRENT_VALUE);
      if (read != TN_SUCCESS || fs::exists(expected)) return -2;
      const TnStatus written = TnSetLongValue(TN_LOCAL_HANDLE, kInteger, 5, TN_CURRENT_VALUE);
      TnGetLongValue(connect("LocalHost"), kInteger, &before, TN_CURRENT_VALUE);
      return before == 5 ? written : TnStatus{-3};
    };
    EXPECT_EQ(TN_SUCCESS, inChild(change));
    EXPECT_TRUE(fs::exists(expected + "/knob/settings.db"));
    EXPECT_EQ(fs::perms(0700), fs::status(expected + "/knob").permissions());
    fs::remove_all(home);
    fs::remove_all(state);
  }
}

TEST_F(TuningLibrary, KnowsTheFormsOfServerNames) {
  char host[256] = {};
  ASSERT_EQ(0, gethostname(host, sizeof host - 1));
  const std::string longest(TN_CONNECT_TEXT_SIZE - 1, 'x');
  const std::tuple<std::string, std::string, std::string, TnStatus> cases[] = {
      {"", "", "", TN_SUCCESS},
      {"LOCALHOST", "", "", TN_SUCCESS},
      {host, "", "", TN_SUCCESS},
      {"file::memory:", "", "", TN_SUCCESS},
      {"file:", "", "", TN_UNKNOWN_SERVER_FORM},
      {"FILE:x", "", "", TN_UNKNOWN_SERVER_FORM},
      {"other://x", "", "", TN_UNKNOWN_SERVER_FORM},
      {"postgres:/x", "", "", TN_UNKNOWN_SERVER_FORM},
      {"other.example", "", "", TN_UNKNOWN_SERVER_FORM},
      {"", "me", "", TN_LOCAL_ENGINE_HAS_NO_USERS},
      {"file:x", "", "secret", TN_LOCAL_ENGINE_HAS_NO_USERS},
      {longest, longest, longest, TN_UNKNOWN_SERVER_FORM},
      {longest + "x", "", "", TN_SERVER_NAME_TOO_LONG},
      {"", longest + "x", "", TN_USER_NAME_TOO_LONG},
      {"", "", longest + "x", TN_PASSWORD_TOO_LONG}};
  for (const auto& [server, user, password, expected] : cases) {
    TnHandle opened = TN_NO_HANDLE;
    EXPECT_EQ(expected, TnConnectServer(server.c_str(), user.c_str(), password.c_str(), &opened))
        << server << "|" << user << "|" << password;
    EXPECT_EQ(expected == TN_SUCCESS, opened > 0);
  }
}

TEST_F(TuningLibrary, TakesStoreNamesLiterally) {
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
  Dl_info original{};
  ASSERT_NE(0, dladdr(reinterpret_cast<void*>(&TnStart), &original));
  const fs::path library = folder / "libtn.so.1";
  const fs::path module = folder / "knob/libtn-postgresql.so";
  fs::copy_file(original.dli_fname, library);
  void* copy = dlopen(library.c_str(), RTLD_NOW | RTLD_LOCAL);
  ASSERT_NE(nullptr, copy) << dlerror();
  const auto connectCopy =
      reinterpret_cast<decltype(&TnConnectServer)>(dlsym(copy, "TnConnectServer"));
  TnHandle opened = TN_NO_HANDLE;
  const auto status = [&](const char* server) { return connectCopy(server, "", "", &opened); };

  EXPECT_EQ(TN_MODULE_NOT_INSTALLED, status("postgresql://x"));
  fs::create_directory(folder / "knob");
  EXPECT_EQ(TN_MODULE_NOT_INSTALLED, status("postgres://x"));
  std::ofstream(module) << "not a library";
  EXPECT_EQ(TN_MODULE_UNUSABLE, status("postgresql://x"));
  fs::remove(module);
  fs::copy_file(original.dli_fname, module);
  EXPECT_EQ(TN_MODULE_UNUSABLE, status("postgresql://x")) << "it has no entry";
  EXPECT_EQ(TN_SUCCESS, status("file:x")) << "the local engine needs no module";
}

}  // namespace
