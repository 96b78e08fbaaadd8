// Settings of a whole cluster: the program on a running one, and the parts on doubles of the REST
// API that answer as a real one cannot be made to.
#include <algorithm>
#include <atomic>
#include <chrono>
#include <gtest/gtest.h>
#include <set>
#include <thread>

#include "http/HttpDouble.h"
#include "patroni/PatroniCluster.h"
#include "support/StatusOf.h"
#include "tuning/patroni/Address.h"
#include "tuning/patroni/PatroniEngine.h"
#include "tuning/patroni/RestApi.h"

namespace {

using tn::patroni::Address;
using tn::patroni::PatroniEngine;
using tn::patroni::RestApi;
using Words = std::vector<std::string>;

TEST(PatroniAddress, LeavesTheServersToTheCluster) {
  const Address address =
      Address::parse("patroni://me@one,[::1]:8009/db?sslmode=disable&service=s");
  EXPECT_EQ((Words{"http://one:8008", "http://[::1]:8009"}), address.endpoints);
  EXPECT_EQ(
      "postgresql://me@/db?sslmode=disable&service=s&host=fe80%3A%3A1&hostaddr=&port=5&"
      "target_session_attrs=any",
      address.serverUri("fe80::1", 5));
  EXPECT_EQ(Words{"https://one:8008"}, Address::parse("patronis://one").endpoints);
  for (std::string const wrong :
       {"", "one:0", "one:x", "one,", "me@", "a b", "one/db?host=two", "one?x=1&hos%74addr=two",
        "one?port=1", "one?target_session_attrs=any", "one?a%zz=1"}) {
    EXPECT_EQ(TN_PATRONI_ADDRESS_INVALID, statusOf([&] { Address::parse("patroni://" + wrong); }))
        << wrong;
  }
}

// What comes of reading and of changing where a member answers requests for one path in one way and
// all others as a Patroni does.
struct Trouble {
  std::string path;
  Reply reply;
  TnStatus reading;
  TnStatus changing;
};

// Copying it level by level would exhaust the stack.
std::string nested(const std::string& before) {
  return before + std::string(1000000, '[') + std::string(1000000, ']') + '}';
}

const char kSignOfLife[] = R"({"state":"running","patroni":{"version":"3.0.2"}})";

HttpDouble::Script troubled(const Trouble& trouble) {
  return [trouble](const std::string& request) -> Reply {
    if (request.find(trouble.path) != request.npos) return trouble.reply;
    if (request.find(" /patroni ") != request.npos) return {httpAnswer(200, kSignOfLife)};
    return {
        httpAnswer(200, request.find(" /cluster ") != request.npos ? R"({"members":[]})" : "{}")};
  };
}

TEST(PatroniApi, TellsFailuresApart) {
  const std::string endless = "HTTP/1.1 200 -\r\nContent-Length: 52428800\r\n\r\n";
  const Trouble troubles[] = {
      {"PATCH", {httpAnswer(401, "no auth header received")}, TN_SUCCESS, TN_PATRONI_LOGIN_NEEDED},
      {"PATCH", {httpAnswer(401, "not authenticated")}, TN_SUCCESS, TN_PATRONI_LOGIN_REFUSED},
      {"PATCH", {httpAnswer(403, "Access is denied")}, TN_SUCCESS, TN_PATRONI_NOT_PERMITTED},
      {"PATCH",
       {httpAnswer(403, "client certificate required")},
       TN_SUCCESS,
       TN_PATRONI_TLS_REFUSED},
      {"PATCH", {httpAnswer(503, "")}, TN_SUCCESS, TN_PATRONI_STORE_DOWN},
      {"PATCH", {"", true}, TN_SUCCESS, TN_PATRONI_OUTCOME_UNKNOWN},
      {"GET /cl", {httpAnswer(500, "")}, TN_PATRONI_STORE_DOWN, TN_SUCCESS},
      {"GET /cl",
       {"HTTP/1.1 200 -\r\nContent-Length: 9\r\n\r\n{", true},
       TN_PATRONI_STORE_DOWN,
       TN_SUCCESS},
      {"GET /co", {httpAnswer(502, "")}, TN_PATRONI_CONFIG_NOT_READABLE, TN_SUCCESS},
      {" /", {httpAnswer(500, "")}, TN_PATRONI_FOREIGN, TN_PATRONI_OUTCOME_UNKNOWN},
      {" /",
       {httpAnswer(302, "", "Location: http://127.0.0.1:1/\r\n")},
       TN_PATRONI_FOREIGN,
       TN_PATRONI_FOREIGN},
      {" /", {"", true}, TN_PATRONI_FOREIGN, TN_PATRONI_OUTCOME_UNKNOWN},
      {" /", {httpAnswer(200, "<html>")}, TN_PATRONI_FOREIGN, TN_PATRONI_FOREIGN},
      {" /", {httpAnswer(200, "[1]")}, TN_PATRONI_FOREIGN, TN_PATRONI_FOREIGN},
      {" /", {endless + std::string(1 << 20, ' ')}, TN_PATRONI_FOREIGN, TN_PATRONI_FOREIGN},
      {" /cluster", {httpAnswer(200, "{}")}, TN_PATRONI_FOREIGN, TN_SUCCESS},
      {" /cluster", {httpAnswer(200, R"({"members":[{"port":-1}]})")}, TN_PATRONI_FOREIGN, 0},
      {" /cluster", {httpAnswer(200, nested(R"({"members":)"))}, TN_PATRONI_FOREIGN, TN_SUCCESS},
      {"GET /config", {httpAnswer(200, nested(R"({"a":)"))}, TN_PATRONI_FOREIGN, TN_SUCCESS},
  };
  for (const Trouble& trouble : troubles) {
    SCOPED_TRACE(trouble.path + trouble.reply.bytes.substr(0, 80));
    const HttpDouble member(troubled(trouble));
    const Address address = Address::parse("patroni://" + member.address());
    RestApi api(address);
    EXPECT_EQ(trouble.reading, statusOf([&] { api.members(), api.configuration(); }));
    EXPECT_EQ(trouble.changing, statusOf([&] { RestApi(address).change({{"a", 1}}); }));
  }
  const std::string nobody = "127.0.0.1:" + std::to_string(freePort());
  EXPECT_EQ(TN_PATRONI_UNREACHABLE,
            statusOf([&] { RestApi(Address::parse("patroni://" + nobody)).members(); }));
}

TEST(PatroniApi, TriesAgainWhileOthersChangeTheConfigurationAndElsewhereWhenOneMemberFails) {
  std::atomic<int> conflicts = 3;
  const HttpDouble member(
      [&](const std::string&) -> Reply { return {httpAnswer(conflicts-- > 0 ? 409 : 200, "{}")}; });
  const HttpDouble cutOff([](const std::string&) -> Reply { return {httpAnswer(503, "")}; });
  RestApi api(Address::parse("patroni://" + cutOff.address() + "," + member.address()));
  api.change({{"a", 1}});
  EXPECT_EQ(4, member.requests().size());
  EXPECT_EQ(1, cutOff.requests().size());
  EXPECT_EQ(TN_VALUE_REFUSED, statusOf([&] { api.change({{"a", "\xff"}}); }));
}

TEST(PatroniApi, GivesUpOnAClusterWithoutALeaderOrWithoutAnEndOfConflicts) {
  const HttpDouble member(troubled({"PATCH", {httpAnswer(409, "")}, 0, 0}));
  const std::string address = "patroni://" + member.address();
  std::thread conflicts([&] {
    EXPECT_EQ(TN_PATRONI_CONFLICT, statusOf([&] {
                RestApi(Address::parse(address)).change({{"a", 1}});
              }));
  });
  EXPECT_EQ(TN_PATRONI_NO_LEADER, statusOf([&] { PatroniEngine::open(address.c_str(), "", ""); }));
  conflicts.join();
}

class Patroni : public testing::Test {
 protected:
  void SetUp() override {
    const std::string obstacle = PatroniCluster::obstacle();
    if (!obstacle.empty()) GTEST_SKIP() << obstacle;
  }
  static PatroniCluster& cluster() { return PatroniCluster::shared(); }
  static std::string shown(std::size_t member, const std::string& setting) {
    return cluster().knob(member, {PatroniCluster::id(setting)}).run().out;
  }
  static bool holds(const std::string& text, const std::string& part) {
    return text.find(part) != text.npos;
  }
};

struct Value {
  std::string setting;
  std::string word;    // as a settings file has it
  std::string stored;  // as the servers tell it
};

std::string settingsFile(const std::vector<Value>& values) {
  std::string text;
  for (const auto& [setting, word, stored] : values) {
    text += "Setting ID: " + PatroniCluster::id(setting) + "\nCurrent Value: " + word + "\n";
  }
  return text;
}

TEST_F(Patroni, SetsOnAnyMembersAddressForAll) {
  const Value values[] = {{"work_mem", "5000", "5000"},
                          {"DateStyle", "iso,dmy", "ISO, DMY"},
                          {"log_line_prefix", "a\\'b %m", "a\\'b %m"},
                          {"log_destination", "stderr,csvlog", "stderr,csvlog"},
                          {"client_encoding", "LATIN1", "LATIN1"},
                          {"search_path", "\"$user\", A", "\"$user\", \"A\""}};
  for (std::size_t i = 0; i < std::size(values); ++i) {
    const auto& [setting, word, stored] = values[i];
    const Outcome set = cluster().set(i % 2, setting, {word});
    EXPECT_EQ(0, set.status) << setting << set.err;
    for (const std::size_t member : {0U, 1U}) EXPECT_EQ(stored, cluster().value(member, setting));
    EXPECT_TRUE(holds(shown(0, setting), "Set in the cluster's configuration."))
        << shown(0, setting);
  }
  EXPECT_EQ("0", cluster().sql(0,
                               "SELECT count(*) FROM pg_file_settings WHERE sourcefile LIKE "
                               "'%auto.conf'"));
}

TEST_F(Patroni, ImportsWhatASingleServerExportsAndTakesItsOwnExportAsNothingNew) {
  const std::vector<Value> values = {
      {"work_mem", "4100", "4100"},
      {"maintenance_work_mem", "70000", "70000"},
      {"shared_buffers", "8192", "8192"},
      {"max_connections", "120", "120"},
      {"max_locks_per_transaction", "70", "70"},
      {"max_prepared_transactions", "5", "5"},
      {"max_wal_senders", "12", "12"},
      {"max_replication_slots", "11", "11"},
      {"max_worker_processes", "9", "9"},
      {"wal_keep_size", "160", "160"},
      {"track_commit_timestamp", "on", "on"},
      {"wal_level", "2", "logical"},
      {"archive_mode", "1", "on"},
      {"huge_pages", "0", "off"},
      {"autovacuum_max_workers", "4", "4"},
      {"superuser_reserved_connections", "4", "4"},
      {"track_activity_query_size", "2048", "2048"},
      {"wal_buffers", "600", "600"},
      {"shared_preload_libraries", "auto_explain", "auto_explain"},
      {"archive_command", "/bin/true  %p", "/bin/true %p"},
      {"archive_timeout", "3600", "3600"},
      {"checkpoint_timeout", "600", "600"},
      {"checkpoint_completion_target", "0.8", "0.8"},
      {"autovacuum_vacuum_scale_factor", "0.25", "0.25"},
      {"autovacuum_naptime", "30", "30"},
      {"log_connections", "on", "on"},
      {"log_checkpoints", "off", "off"},
      {"log_lock_waits", "on", "on"},
      {"log_min_duration_statement", "1000", "1000"},
      {"log_min_messages", "6", "notice"},
      {"log_timezone", "Europe/Berlin", "Europe/Berlin"},
      {"log_filename", "x-%Y.log", "x-%Y.log"},
      {"random_page_cost", "1.5", "1.5"},
      {"seq_page_cost", "1.25", "1.25"},
      {"effective_cache_size", "40000", "40000"},
      {"enable_hashjoin", "off", "off"},
      {"default_statistics_target", "200", "200"},
      {"TimeZone", "Asia/Tokyo", "Asia/Tokyo"},
      {"statement_timeout", "60000", "60000"},
      {"application_name", "app \\ 'x'", "app \\ 'x'"},
  };
  const TempFolder folder;
  writeFile(folder / "in.txt", settingsFile(values));
  const Outcome import = cluster().knob(1, {"-I", folder / "in.txt"}).run();
  EXPECT_EQ("", import.err);
  EXPECT_TRUE(holds(shown(0, "max_connections"), "A change waits for a restart."));
  cluster().restart();
  for (const auto& [setting, word, stored] : values) {
    if (setting == "application_name") continue;  // a session's own
    for (const std::size_t member : {0U, 1U}) {
      EXPECT_EQ(stored, cluster().value(member, setting)) << setting;
    }
  }

  const auto before = cluster().configuration();
  EXPECT_EQ(0, cluster().knob(0, {"-O", folder / "out.txt"}).run().status);
  const std::string empty = "the file has no value for it";
  const Outcome again = cluster().knob(0, {"-I", folder / "out.txt", "-E"}).run();
  std::istringstream lines(again.err);
  for (std::string line; std::getline(lines, line);) EXPECT_TRUE(holds(line, empty)) << line;
  EXPECT_EQ(before, cluster().configuration());
}

struct Refusal {
  std::string setting;
  std::string value;
  TnStatus status;
};

TEST_F(Patroni, RefusesWhatTheClusterWouldIgnore) {
  const std::size_t replica = 1 - cluster().leader();
  cluster().sql(replica, "ALTER SYSTEM SET temp_buffers = 900");
  cluster().configure(R"({"postgresql":{"parameters":{"fsync":"on"}},"synchronous_mode":true})");
  const Refusal refusals[] = {
      {"listen_addresses", "*", TN_PATRONI_SETS_IT},
      {"port", "1", TN_PATRONI_SETS_IT},
      {"cluster_name", "x", TN_PATRONI_SETS_IT},
      {"hot_standby", "off", TN_PATRONI_SETS_IT},
      {"wal_log_hints", "off", TN_PATRONI_SETS_IT},
      {"hba_file", "/x", TN_PATRONI_SETS_IT},
      {"data_directory", "/x", TN_PATRONI_SETS_IT},
      {"primary_conninfo", "x", TN_PATRONI_SETS_IT},
      {"restore_command", "x", TN_PATRONI_SETS_IT},
      {"recovery_min_apply_delay", "1", TN_PATRONI_SETS_IT},
      {"max_connections", "24", TN_PATRONI_BELOW_MINIMUM},
      {"max_wal_senders", "2", TN_PATRONI_BELOW_MINIMUM},
      {"max_replication_slots", "3", TN_PATRONI_BELOW_MINIMUM},
      {"max_worker_processes", "1", TN_PATRONI_BELOW_MINIMUM},
      {"max_locks_per_transaction", "31", TN_PATRONI_BELOW_MINIMUM},
      {"wal_keep_size", "15", TN_PATRONI_BELOW_MINIMUM},
      {"wal_level", "0", TN_PATRONI_WAL_LEVEL},
      {"synchronous_standby_names", "x", TN_PATRONI_SYNCHRONOUS},
      {"temp_buffers", "901", TN_PATRONI_OVERRIDDEN},
      {"temp_buffers", "1024", TN_PATRONI_OVERRIDDEN},  // the leader has it
      {"fsync", "on", TN_PATRONI_NOT_TAKEN},
      {"unix_socket_directories", "/tmp", TN_PATRONI_SET_BY_MEMBER},
      {"server_version", "16", TN_SETTING_READ_ONLY},
      {"transaction_read_only", "on", TN_SETTING_READ_ONLY},
      {"external_pid_file", "/x", TN_SETTING_READ_ONLY},
      {"vacuum_cost_limit", "0", TN_VALUE_OUT_OF_RANGE},
      {"vacuum_cost_delay", "500", TN_VALUE_OUT_OF_RANGE},
      {"autovacuum_analyze_scale_factor", "x", TN_VALUE_REFUSED},
      {"default_text_search_config", "no such", TN_VALUE_REFUSED},
      {"lc_messages", "nowhere", TN_VALUE_REFUSED},
      {"syslog_ident", "\xff", TN_VALUE_REFUSED},
      {"log_directory", "a\nb", TN_CONTROL_CHARACTER},
      {"log_destination", "nonsense", TN_VALUE_REFUSED},
      {"max_connections", "262143", TN_VALUE_REFUSED},
      {"bonjour", "on", TN_VALUE_REFUSED},
  };
  const auto before = cluster().configuration();
  for (const auto& [setting, value, status] : refusals) {
    const Outcome refused = cluster().set(0, setting, {value});
    EXPECT_NE(0, refused.status) << setting;
    EXPECT_TRUE(holds(refused.out + refused.err, std::to_string(status) + ": "))
        << setting << refused.out << refused.err;
  }
  EXPECT_EQ(before, cluster().configuration());
  cluster().sql(cluster().leader(), "CREATE ROLE plain LOGIN");
  const Outcome hidden =
      cluster().knob(0, {PatroniCluster::id("commit_delay"), "3", "-U", "plain"}).run();
  EXPECT_TRUE(holds(hidden.out + hidden.err, std::to_string(TN_PATRONI_SOURCES_HIDDEN)));
  EXPECT_TRUE(holds(shown(0, "fsync"), "Overridden on the leader by the member's own"));
  cluster().sql(replica, "ALTER SYSTEM RESET ALL");
  cluster().configure(R"({"postgresql":{"parameters":{"fsync":null}},"synchronous_mode":null})");
}

TEST_F(Patroni, LosesNothingOfTwoAtOnce) {
  const Words settings = {"bgwriter_delay", "vacuum_cost_delay"};
  std::vector<std::thread> programs;
  for (const std::size_t member : {0U, 1U}) {
    programs.emplace_back([&, member] {
      std::string text;
      for (int i = 0; i < 20; ++i) {
        text += settingsFile({{settings[member], std::to_string(i + 20), ""}});
      }
      const TempFolder folder;
      writeFile(folder / "in.txt", text);
      EXPECT_EQ("", cluster().knob(member, {"-I", folder / "in.txt"}).run().err);
    });
  }
  for (std::thread& program : programs) program.join();
  const auto stored = cluster().configuration()["postgresql"]["parameters"];
  EXPECT_EQ(39, stored["bgwriter_delay"]);
  EXPECT_EQ("39", stored["vacuum_cost_delay"]);
}

TEST_F(Patroni, TellsOfAMemberThatDoesNotFollowAndDoesNotWaitForItTwice) {
  const std::size_t replica = 1 - cluster().leader();
  cluster().signal(replica, SIGSTOP);
  const TempFolder folder;
  writeFile(folder / "in.txt", settingsFile({{"commit_siblings", "6", ""},
                                             {"geqo_threshold", "14", ""},
                                             {"geqo_seed", "0.5", ""}}));
  const auto begin = std::chrono::steady_clock::now();
  const Outcome import = cluster().knob(1 - replica, {"-I", folder / "in.txt"}).run();
  cluster().signal(replica, SIGCONT);
  EXPECT_GT(std::chrono::seconds(10), std::chrono::steady_clock::now() - begin);
  EXPECT_EQ(1, std::count(import.err.begin(), import.err.end(), '\n')) << import.err;
  EXPECT_TRUE(holds(import.err, "7513: ")) << import.err;
  EXPECT_EQ("14", cluster().value(1 - replica, "geqo_threshold"));
}

TEST_F(Patroni, StoresOrNamesEverySettingWhenTheLeaderIsLost) {
  const std::size_t leader = cluster().leader();
  std::vector<Value> values;
  for (const char* const setting :
       {"cursor_tuple_fraction", "cpu_index_tuple_cost", "cpu_operator_cost", "parallel_setup_cost",
        "parallel_tuple_cost", "recursive_worktable_factor", "hash_mem_multiplier",
        "jit_above_cost", "jit_inline_above_cost", "jit_optimize_above_cost"}) {
    for (int i = 0; i < 5; ++i) values.push_back({setting, std::to_string(i + 1), ""});
  }
  for (std::size_t i = 0; i < 10; ++i) values[i * 5 + 4].word = "0.5";
  for (Value& value : values) {
    if (value.setting == "hash_mem_multiplier" && value.word == "0.5") value.word = "9";
    if (value.setting == "cursor_tuple_fraction") value.word = "0." + value.word.substr(0, 1) + "1";
  }
  const TempFolder folder;
  writeFile(folder / "in.txt", settingsFile(values));
  Outcome import;
  std::thread program([&] { import = cluster().knob(leader, {"-I", folder / "in.txt"}).run(); });
  const auto stored = [&] { return cluster().configuration()["postgresql"]["parameters"]; };
  while (!stored().contains("cpu_operator_cost")) std::this_thread::yield();
  cluster().kill(leader);
  program.join();
  EXPECT_NE(leader, cluster().leader());
  const auto all = stored();
  for (std::size_t i = 4; i < values.size(); i += 5) {
    const bool named = holds(import.err, "etting " + PatroniCluster::id(values[i].setting) + " ");
    EXPECT_TRUE(named || all.value(values[i].setting, "") == values[i].word)
        << values[i].setting << import.err << all;
  }
  cluster().start(leader);
  cluster().awaitMembers();
}

TEST_F(Patroni, SaysThatTheStoreIsDown) {
  cluster().etcd().end(0);
  for (const Words& words : {Words{"7"}, Words{}}) {
    const auto begin = std::chrono::steady_clock::now();
    const Outcome told = cluster().set(0, "commit_siblings", words);
    EXPECT_TRUE(holds(told.out + told.err, "7509: ")) << told.out << told.err;
    EXPECT_GT(std::chrono::seconds(15), std::chrono::steady_clock::now() - begin);
  }
  cluster().etcd().start(0);
}

}  // namespace
