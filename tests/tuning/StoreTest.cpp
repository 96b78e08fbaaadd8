// What becomes of the local engine's store: real files, also damaged ones, other processes that
// hold or replace them, rights that are missing.
#include <fcntl.h>
#include <functional>
#include <gtest/gtest.h>
#include <optional>
#include <set>
#include <sqlite3.h>
#include <sys/stat.h>
#include <tuple>
#include <unistd.h>

#include "support/Process.h"
#include "support/TempFolder.h"
#include "tuning/StoreConnection.h"

namespace {

namespace fs = std::filesystem;

std::function<void()> onSleep;  // in the place of sleeping, if there is one

}  // namespace

// The tuning library's calls of these functions end here.
#pragma GCC visibility push(default)
extern "C" int fdatasync(int /*file*/) { return 0; }
extern "C" int usleep(useconds_t /*microseconds*/) {
  if (onSleep) onSleep();
  return 0;
}
#pragma GCC visibility pop

namespace {

// Runs SQL on the file as any other program would.
void runSql(const std::string& file, const std::string& sql) {
  sqlite3* database = nullptr;
  ASSERT_EQ(SQLITE_OK, sqlite3_open(file.c_str(), &database));
  EXPECT_EQ(SQLITE_OK, sqlite3_exec(database, sql.c_str(), nullptr, nullptr, nullptr)) << sql;
  sqlite3_close(database);
}

// The lock of an SQLite process that has begun to change the file. It belongs to the descriptor,
// so it stands in the way of this process too.
struct WritersLock {
  explicit WritersLock(const std::string& path) : file(open(path.c_str(), O_RDWR)) {
    struct flock lock {
      F_WRLCK, SEEK_SET, 0x40000001, 1, 0
    };
    EXPECT_EQ(0, fcntl(file, F_OFD_SETLK, &lock));
  }
  ~WritersLock() { close(file); }
  const int file;
};

struct Store : testing::Test {
  Store() {
    const Connection first(server);
    EXPECT_EQ(TN_SUCCESS, first.set(5));
    EXPECT_EQ(TN_SUCCESS, first.set("some text"));
  }
  ~Store() override {
    onSleep = nullptr;
    TnStop(0);
  }

  const TempFolder folder;
  const std::string file = folder / "store.db";
  const std::string server = "file:" + file;
};

// With small pages, for fewer bits.
TEST_F(Store, LosesNoSettingToAFlippedBit) {
  runSql(file, "PRAGMA page_size = 512; VACUUM");
  const std::string good = readFile(file);
  ASSERT_EQ(1024U, good.size());
  // A row begins with its length, its id and the lengths of its columns. With a bit of the id
  // changed it is the row of another setting: nothing in the file could tell.
  const std::set<size_t> ids = {good.find(std::string("\x4a\x03\x00\x1e", 4) + "some text"),
                                good.find(std::string("\x19\x03\x00\x0e", 4) + "5")};
  ASSERT_FALSE(ids.contains(good.npos));
  std::string wrong;
  int refused = 0;
  for (size_t bit = 0; bit < good.size() * 8; ++bit) {
    if (ids.contains(bit / 8)) continue;
    std::string flipped = good;
    flipped[bit / 8] = static_cast<char>(flipped[bit / 8] ^ (1 << bit % 8));
    // In place, which is faster than anew.
    fs::resize_file(file, flipped.size());
    std::fstream(file, std::ios::in | std::ios::out | std::ios::binary) << flipped;
    const Connection damaged(server);
    const int32_t number = damaged.number();
    const std::string text = damaged.text();
    const bool opened = damaged.status == TN_SUCCESS;
    refused += opened ? 0 : 1;
    const bool lost = opened && (number == kDefaultNumber || text.empty() ||
                                 (number != 5 && text != "some text"));
    bool kept = damaged.set(6) == TN_SUCCESS;
    if (kept) {
      const Connection after(server);
      kept = after.number() == 6 && after.text() == text;
    }
    if (lost || !(kept || readFile(file) == flipped)) wrong += std::to_string(bit) + " ";
  }
  EXPECT_EQ("", wrong);
  EXPECT_GT(refused, 1000);
}

TEST_F(Store, IsWaitedForWhileOthersChangeItButInVainOnlyOnce) {
  const Connection connection(server);
  std::optional<WritersLock> lock(file);
  onSleep = [&] {
    lock.reset();
    EXPECT_EQ(TN_SUCCESS, inChild([&] { return Connection(server).set("of another"); }));
  };
  EXPECT_EQ(TN_SUCCESS, connection.set(6));
  EXPECT_EQ(6, connection.number());
  EXPECT_EQ("of another", connection.text());

  lock.emplace(file);
  int sleeps = 0;
  onSleep = [&] { ++sleeps; };
  EXPECT_EQ(TN_STORE_BUSY, connection.set(7));
  EXPECT_GT(sleeps, 0);
  sleeps = 0;
  EXPECT_EQ(TN_STORE_BUSY, connection.set(7));
  EXPECT_EQ(0, sleeps);
  EXPECT_EQ(6, connection.number()) << "reading needs no lock";
  lock.reset();
  EXPECT_EQ(TN_SUCCESS, connection.set(7));
}

TEST_F(Store, IsTheFileThatLiesAtThePathNow) {
  const Connection connection(server);
  fs::copy_file(file, folder / "copy.db");
  ASSERT_EQ(TN_SUCCESS, connection.set(7));
  fs::rename(folder / "copy.db", file);
  EXPECT_EQ(TN_SUCCESS, connection.set(7)) << "the file in its place holds 5";
  EXPECT_EQ(7, Connection(server).number());
  fs::remove(file);
  EXPECT_EQ(TN_SUCCESS, connection.set(7));
  EXPECT_EQ(7, Connection(server).number());
  writeFile(file, "Setting ID: 25\n");
  EXPECT_NE(TN_SUCCESS, connection.set(8)) << "it was overwritten, not replaced";
  EXPECT_EQ("Setting ID: 25\n", readFile(file));
}

TEST_F(Store, IsWrittenForAChangeOnly) {
  const Connection connection(server);
  // Set through another connection, of which this one has no news.
  for (const auto& [byOthers, value] :
       {std::pair{5, 5}, {5, kDefaultNumber}, {6, kDefaultNumber}}) {
    ASSERT_EQ(TN_SUCCESS, Connection(server).set(byOthers));
    const std::string before = readFile(file);
    EXPECT_EQ(TN_SUCCESS, connection.set(value));
    EXPECT_EQ(byOthers == value, readFile(file) == before);
    EXPECT_EQ(value, Connection(server).number());
  }
}

TEST_F(Store, ThatCannotBeUsedIsLeftAsItIs) {
  const std::string good = readFile(file);
  const std::tuple<TnStatus, std::string, const char*> cases[] = {
      {TN_STORE_FOREIGN, "Setting ID: 25\n", ""},
      {TN_STORE_FOREIGN, "", "CREATE TABLE setting (id, value)"},
      {TN_STORE_NEWER, good, "PRAGMA user_version = 2"},
      {TN_STORE_DAMAGED, std::string(8192, '\0'), ""},
      {TN_STORE_DAMAGED, good.substr(0, good.size() - 20), ""},
      {TN_STORE_DAMAGED, good,
       "CREATE TRIGGER t BEFORE UPDATE ON setting BEGIN SELECT RAISE(IGNORE); END"},
      {TN_STORE_DAMAGED, good,
       "DROP TABLE setting; CREATE VIEW setting (id, value) AS"
       " WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i FROM n) SELECT i, '' FROM n"},
      {TN_STORE_DAMAGED, good, "DROP TABLE setting; CREATE TABLE setting (id, value)"},
      {TN_STORE_DAMAGED, good, "INSERT INTO setting VALUES (1 << 40, '')"},
      {TN_SUCCESS, good, "INSERT INTO setting VALUES (9999, 'of a later release')"},
      {TN_SUCCESS, good, "UPDATE setting SET value = 'five' WHERE id = 25"},
      {TN_SUCCESS, "", ""}};
  for (const auto& [expected, content, sql] : cases) {
    SCOPED_TRACE(content.substr(0, 20) + sql);
    writeFile(file, content);
    runSql(file, sql);
    const std::string before = readFile(file);
    EXPECT_EQ(expected, Connection(server).set(6));
    EXPECT_TRUE(expected == TN_SUCCESS ? Connection(server).number() == 6
                                       : readFile(file) == before);
  }
  runSql(file, "UPDATE setting SET value = '07'");
  EXPECT_EQ(-1, Connection(server).number());
  fs::remove(file);
  mkfifo(file.c_str(), 0666);
  EXPECT_EQ(TN_STORE_NOT_A_FILE, Connection(server).set(6));
}

TEST_F(Store, NamesTheRightOrTheFolderThatIsMissing) {
  const std::tuple<unsigned, unsigned, TnStatus, TnStatus> cases[] = {
      {0777, 0000, TN_STORE_NOT_READABLE, TN_STORE_NOT_READABLE},
      {0777, 0444, TN_SUCCESS, TN_STORE_NOT_WRITABLE},
      {0555, 0666, TN_SUCCESS, TN_STORE_NOT_WRITABLE},
      {0000, 0666, TN_STORE_NOT_READABLE, TN_STORE_NOT_READABLE}};
  for (const auto& [folderMode, fileMode, onRead, onWrite] : cases) {
    SCOPED_TRACE(onWrite);
    fs::permissions(file, fs::perms(fileMode));
    fs::permissions(folder.path(), fs::perms(folderMode));
    EXPECT_EQ(onRead, inChild([&] { return Connection(server).set(5); }, kNobody)) << "it is 5";
    EXPECT_EQ(onWrite, inChild([&] { return Connection(server).set(6); }, kNobody));
    fs::permissions(folder.path(), fs::perms(0755));
  }
  EXPECT_EQ(TN_STORE_NO_FOLDER, Connection("file:" + folder / "missing/store.db").set(5));
}

}  // namespace
