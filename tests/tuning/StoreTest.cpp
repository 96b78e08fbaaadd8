// What becomes of the local engine's store when something goes wrong under it: damaged files, other
// processes that hold or replace it, a system that cannot make a change last.
#include <chrono>
#include <functional>
#include <gtest/gtest.h>
#include <set>
#include <sqlite3.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <thread>
#include <tuple>
#include <unistd.h>

#include "service/TuningInterface.h"
#include "support/Process.h"
#include "support/TempFolder.h"

namespace {

namespace fs = std::filesystem;

constexpr int kNumber = 25;
constexpr int kDefaultNumber = 20;
constexpr int kText = 74;

bool syncsSkipped = false;

std::function<void()> onSleep;  // in the place of sleeping, if there is one

}  // namespace

// The tuning library's calls of these functions end here.
#pragma GCC visibility push(default)
extern "C" int fdatasync(int file) {
  return syncsSkipped ? 0 : static_cast<int>(syscall(SYS_fdatasync, file));
}
extern "C" int usleep(useconds_t microseconds) {
  if (onSleep) {
    onSleep();
  } else {
    std::this_thread::sleep_for(std::chrono::microseconds(microseconds));
  }
  return 0;
}
#pragma GCC visibility pop

namespace {

// A process that has begun to change the store and completes that when told to.
class OtherWriter {
 public:
  OtherWriter(const std::string& file, const std::string& change) {
    int begun[2] = {-1, -1};
    EXPECT_TRUE(pipe(begun) == 0 && pipe(go_) == 0);
    child_ = fork();
    char byte = 0;
    if (child_ == 0) {
      sqlite3* database = nullptr;
      const auto run = [&](const std::string& sql) {
        if (sqlite3_exec(database, sql.c_str(), nullptr, nullptr, nullptr) != SQLITE_OK) _exit(1);
      };
      sqlite3_open(file.c_str(), &database);
      run("BEGIN IMMEDIATE;" + change);
      if (write(begun[1], &byte, 1) == 1 && read(go_[0], &byte, 1) == 1) run("COMMIT");
      _exit(0);
    }
    close(begun[1]);
    EXPECT_EQ(1, read(begun[0], &byte, 1));
    close(begun[0]);
  }
  ~OtherWriter() {
    complete();
    close(go_[0]);
    close(go_[1]);
  }

  void complete() {
    if (child_ == 0) return;
    int status = -1;
    EXPECT_EQ(1, write(go_[1], "", 1));
    waitpid(child_, &status, 0);
    EXPECT_EQ(0, status);
    child_ = 0;
  }

 private:
  int go_[2] = {-1, -1};
  pid_t child_ = 0;
};

class Store : public testing::Test {
 protected:
  struct Connection {
    explicit Connection(const std::string& server)
        : status(TnConnectServer(server.c_str(), "", "", &handle)) {}
    ~Connection() {
      if (status == TN_SUCCESS) TnDisconnect(handle);
    }
    TnStatus set(int64_t value) const {
      return status != TN_SUCCESS ? status
                                  : TnSetLongValue(handle, kNumber, value, TN_CURRENT_VALUE);
    }
    int32_t number() const {
      int32_t value = 0;
      return TnGetLongValue(handle, kNumber, &value, TN_CURRENT_VALUE) == TN_SUCCESS ? value : -1;
    }
    std::string text() const {
      char value[TN_TEXT_SIZE];
      int size = sizeof value;
      const TnStatus read = TnGetStringValue(handle, kText, &size, value, TN_CURRENT_VALUE);
      return read == TN_SUCCESS ? value : "refused";
    }

    TnHandle handle = TN_NO_HANDLE;
    TnStatus status;
  };

  Store() {
    const Connection first(server);
    EXPECT_EQ(TN_SUCCESS, first.set(5));
    EXPECT_EQ(TN_SUCCESS, TnSetStringValue(first.handle, kText, "some text", TN_CURRENT_VALUE));
  }
  ~Store() override {
    syncsSkipped = false;
    onSleep = nullptr;
    TnStop(0);
  }

  // In place, which is faster than anew.
  void overwrite(const std::string& bytes) const {
    fs::resize_file(file, bytes.size());
    std::fstream(file, std::ios::in | std::ios::out | std::ios::binary) << bytes;
  }

  const TempFolder folder;
  const std::string file = folder / "store.db";
  const std::string server = "file:" + file;
};

// With small pages, for fewer bits.
TEST_F(Store, LosesNoSettingToAFlippedBit) {
  sqlite3* database = nullptr;
  sqlite3_open(file.c_str(), &database);
  sqlite3_exec(database, "PRAGMA page_size = 512; VACUUM", nullptr, nullptr, nullptr);
  sqlite3_close(database);
  const std::string good = readFile(file);
  ASSERT_EQ(1024U, good.size());
  // A row begins with its length, its id and the lengths of its columns. With a bit of the id
  // changed it is the row of another setting: nothing in the file could tell.
  const std::set<size_t> ids = {good.find("some text") - 4, good.find("\x00\x0e"
                                                                      "5",
                                                                      0, 3) -
                                                                2};
  ASSERT_EQ(kNumber, good[*ids.rbegin()]);
  ASSERT_EQ(kText, good[*ids.begin()]);
  syncsSkipped = true;
  std::string wrong;
  int refused = 0;
  for (size_t bit = 0; bit < good.size() * 8; ++bit) {
    if (ids.contains(bit / 8)) continue;
    std::string flipped = good;
    flipped[bit / 8] = static_cast<char>(flipped[bit / 8] ^ (1 << bit % 8));
    overwrite(flipped);
    bool lost = false;
    bool kept = false;
    if (const Connection damaged(server); damaged.status != TN_SUCCESS) {
      ++refused;
    } else {
      const int32_t number = damaged.number();
      const std::string text = damaged.text();
      lost = number == kDefaultNumber || text.empty() || (number != 5 && text != "some text");
      if (damaged.set(6) == TN_SUCCESS) {
        const Connection after(server);
        kept = after.number() == 6 && after.text() == text;
      }
    }
    if (lost || !(kept || readFile(file) == flipped)) {
      wrong += std::to_string(bit / 8) + ":" + std::to_string(bit % 8) + " ";
    }
  }
  EXPECT_EQ("", wrong);
  EXPECT_GT(refused, 1000);
}

TEST_F(Store, WaitsForAChangeThatBeganFirst) {
  const Connection connection(server);
  OtherWriter other(file, "UPDATE setting SET value = 'other' WHERE id = 74");
  onSleep = [&] { other.complete(); };
  EXPECT_EQ(TN_SUCCESS, connection.set(6));
  EXPECT_EQ(6, connection.number());
  EXPECT_EQ("other", connection.text());
}

TEST_F(Store, WaitsOnceForALockedStore) {
  const Connection connection(server);
  OtherWriter other(file, "UPDATE setting SET value = 'other' WHERE id = 74");
  int sleeps = 0;
  onSleep = [&] { ++sleeps; };
  EXPECT_EQ(TN_STORE_BUSY, connection.set(6));
  EXPECT_GT(sleeps, 0);
  sleeps = 0;
  EXPECT_EQ(TN_STORE_BUSY, connection.set(6));
  EXPECT_EQ(0, sleeps);
  EXPECT_EQ(5, connection.number()) << "reading needs no lock";
  other.complete();
  EXPECT_EQ(TN_SUCCESS, connection.set(6));
  EXPECT_EQ("other", connection.text());
}

TEST_F(Store, UsesTheFileThatLiesAtThePathNow) {
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

// Descriptions need no store, and no place for one.
TEST_F(Store, IsReadWhenConnectingOrWhenAValueIsAskedFor) {
  fs::create_directory(folder / "knob");
  writeFile(folder / "knob/settings.db", "Setting ID: 25\n");
  ASSERT_EQ(0, setenv("XDG_STATE_HOME", folder.path().c_str(), 1));
  EXPECT_EQ(TN_STORE_FOREIGN, Connection("").status);
  char text[TN_TEXT_SIZE];
  int size = sizeof text;
  TnSettingRecord record{};
  int32_t value = 0;
  EXPECT_EQ(TN_SUCCESS, TnGetSettingHelp(kNumber, &size, text));
  EXPECT_EQ(TN_SUCCESS, TnGetSettingInfo(TN_LOCAL_HANDLE, kNumber, &record));
  EXPECT_EQ(TN_STORE_FOREIGN, TnGetLongValue(TN_LOCAL_HANDLE, kNumber, &value, TN_CURRENT_VALUE));
}

}  // namespace
