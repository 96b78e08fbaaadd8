// Settings of a whole cluster: the program on a running one, and the parts on doubles of the REST
// API that answer as a real one cannot be made to.
#include <algorithm>
#include <atomic>
#include <chrono>
#include <csignal>
#include <gtest/gtest.h>
#include <map>
#include <regex>
#include <sstream>
#include <thread>
#include <tuple>

#include "http/HttpDouble.h"
#include "patroni/PatroniCluster.h"
#include "support/StatusOf.h"
#include "tuning/patroni/PatroniEngine.h"
#include "tuning/patroni/RestApi.h"

namespace {

using tn::patroni::Address;
using tn::patroni::PatroniEngine;
using tn::patroni::RestApi;
using Clock = std::chrono::steady_clock;
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
  for (const std::string wrong : {"", "one,", "me@", "one/db?host=two", "one?x=1&hos%74addr=two",
                                  "one?port=1", "one?target_session_attrs=any", "one?a%zz=1"}) {
    EXPECT_EQ(TN_PATRONI_ADDRESS_INVALID, statusOf([&] { Address::parse("patroni://" + wrong); }))
        << wrong;
  }
}

// A member that answers requests that hold a text in one way and all others as a Patroni does.
HttpDouble::Table troubled(const std::string& request, const Reply& reply) {
  return {{request, reply},
          {" /patroni ", {httpAnswer(200, R"({"state":"running","patroni":{"version":"3.0.2"}})")}},
          {" /cluster ", {httpAnswer(200, R"({"members":[]})")}},
          {"", {httpAnswer(200, "{}")}}};
}

RestApi apiOf(const std::string& hosts) { return RestApi(Address::parse("patroni://" + hosts)); }

TEST(PatroniApi, TellsFailuresApart) {
  // Copying it level by level would exhaust the stack.
  const std::string nested = std::string(1000000, '[') + std::string(1000000, ']') + '}';
  // What is asked, how it is answered (0: the connection ends instead), what comes of reading and
  // of changing the configuration.
  const std::tuple<std::string, int, std::string, TnStatus, TnStatus> troubles[] = {
      {"PATCH", 401, "no auth header received", TN_SUCCESS, TN_PATRONI_LOGIN_NEEDED},
      {"PATCH", 401, "not authenticated", TN_SUCCESS, TN_PATRONI_LOGIN_REFUSED},
      {"PATCH", 403, "Access is denied", TN_SUCCESS, TN_PATRONI_NOT_PERMITTED},
      {"PATCH", 403, "client certificate required", TN_SUCCESS, TN_PATRONI_TLS_REFUSED},
      {"PATCH", 503, "", TN_SUCCESS, TN_PATRONI_STORE_DOWN},
      {"PATCH", 504, "", TN_SUCCESS, TN_PATRONI_OUTCOME_UNKNOWN},
      {"PATCH", 0, "", TN_SUCCESS, TN_PATRONI_OUTCOME_UNKNOWN},
      {"GET /cl", 500, "", TN_PATRONI_STORE_DOWN, TN_SUCCESS},
      {"GET /cl", 200, "{}", TN_PATRONI_FOREIGN, TN_SUCCESS},
      {"GET /cl", 200, R"({"members":[{"port":-1}]})", TN_PATRONI_FOREIGN, TN_SUCCESS},
      {"GET /cl", 200, R"({"members":)" + nested, TN_PATRONI_FOREIGN, TN_SUCCESS},
      {"GET /co", 200, R"({"a":)" + nested, TN_PATRONI_FOREIGN, TN_SUCCESS},
      {"GET /co", 502, "", TN_PATRONI_CONFIG_NOT_READABLE, TN_SUCCESS},
      {" /", 500, "", TN_PATRONI_FOREIGN, TN_PATRONI_OUTCOME_UNKNOWN},
      {" /", 302, "", TN_PATRONI_FOREIGN, TN_PATRONI_FOREIGN},
      {" /", 0, "", TN_PATRONI_FOREIGN, TN_PATRONI_OUTCOME_UNKNOWN},
      {" /", 200, "[1]", TN_PATRONI_FOREIGN, TN_PATRONI_FOREIGN},
      {" /", 200, std::string(5 << 20, ' '), TN_PATRONI_FOREIGN, TN_PATRONI_FOREIGN},
  };
  for (const auto& [request, code, body, reading, changing] : troubles) {
    SCOPED_TRACE(request + std::to_string(code) + body.substr(0, 80));
    const Reply reply = code == 0 ? Reply{"", true} : Reply{httpAnswer(code, body)};
    const HttpDouble member(troubled(request, reply));
    RestApi api = apiOf(member.address());
    EXPECT_EQ(reading, statusOf([&] { api.members(), api.configuration(); }));
    EXPECT_EQ(changing, statusOf([&] { apiOf(member.address()).change({{"a", 1}}); }));
  }
  EXPECT_EQ(TN_PATRONI_UNREACHABLE, statusOf([] { apiOf(local(freePort())).members(); }));
}

TEST(PatroniApi, TriesAgainWhileOthersChangeTheConfigurationAndElsewhereWhenOneMemberFails) {
  std::atomic<int> conflicts = 3;
  const HttpDouble member(
      [&](const std::string&) -> Reply { return {httpAnswer(conflicts-- > 0 ? 409 : 200, "{}")}; });
  const HttpDouble cutOff(Reply{httpAnswer(503, "")});
  RestApi api = apiOf(cutOff.address() + "," + member.address());
  api.change({{"a", 1}});
  EXPECT_EQ(4, member.requests().size());
  EXPECT_EQ(1, cutOff.requests().size());
  EXPECT_EQ(TN_VALUE_REFUSED, statusOf([&] { api.change({{"a", "\xff"}}); }));
}

TEST(PatroniApi, GivesUpOnAClusterWithoutALeaderOrWithoutAnEndOfConflicts) {
  const HttpDouble member(troubled("PATCH", {httpAnswer(409, "")}));
  const std::string address = "patroni://" + member.address();
  std::thread conflicts([&] {
    EXPECT_EQ(TN_PATRONI_CONFLICT, statusOf([&] { apiOf(member.address()).change({{"a", 1}}); }));
  });
  EXPECT_EQ(TN_PATRONI_NO_LEADER, statusOf([&] { PatroniEngine::open(address.c_str(), "", ""); }));
  conflicts.join();
}

// Settings by name, with their values.
using Values = std::vector<std::pair<std::string, std::string>>;

// From "NAME=VALUE; NAME=VALUE".
Values valuesIn(const std::string& text) {
  static const std::regex one("(\\w+)=([^;]*)");
  Values values;
  for (std::sregex_iterator found(text.begin(), text.end(), one), end; found != end; ++found) {
    values.emplace_back((*found)[1], (*found)[2]);
  }
  return values;
}

class Patroni : public testing::Test {
 protected:
  void SetUp() override {
    const std::string obstacle = PatroniCluster::obstacle();
    if (!obstacle.empty()) GTEST_SKIP() << obstacle;
  }
  static PatroniCluster& cluster() {
    static PatroniCluster cluster;
    return cluster;
  }
  static std::string shown(const std::string& setting) { return cluster().set(0, setting, {}).out; }
  static bool holds(const std::string& text, const std::string& part) {
    return text.find(part) != text.npos;
  }
  // What a run that imports the values has to say.
  static std::string import(std::size_t member, const Values& values) {
    std::string text;
    for (const auto& [setting, value] : values) {
      text += "Setting ID: " + PatroniCluster::id(setting) + "\nCurrent Value: " + value + "\n";
    }
    const TempFolder folder;
    writeFile(folder / "in.txt", text);
    return cluster().knob(member, {"-I", folder / "in.txt"}).run().err;
  }
  static nlohmann::json parameters() {
    return cluster().configuration()["postgresql"]["parameters"];
  }
};

TEST_F(Patroni, ImportsWhatASingleServerExportsAndTakesItsOwnExportAsNothingNew) {
  const Values values = valuesIn(
      "work_mem=4100; shared_buffers=8192; max_connections=120; max_locks_per_transaction=70; "
      "max_prepared_transactions=5; max_wal_senders=12; max_replication_slots=11; "
      "max_worker_processes=9; wal_keep_size=16; track_commit_timestamp=on; wal_level=2; "
      "archive_mode=1; wal_buffers=600; shared_preload_libraries=auto_explain; "
      "archive_command=/bin/true  %p; checkpoint_timeout=600; checkpoint_completion_target=0.8; "
      "log_connections=on; log_checkpoints=off; log_min_messages=6; log_timezone=Europe/Berlin; "
      "log_filename=x-%Y.log; random_page_cost=1.5; TimeZone=Asia/Tokyo; statement_timeout=60000; "
      "DateStyle=iso,dmy; log_line_prefix=a\\'b %m; log_destination=stderr,csvlog; "
      "search_path=\"$user\", A; client_encoding=LATIN1; application_name=app \\ 'x'");
  std::map<std::string, std::string> told(values.begin(), values.end());
  for (const auto& [setting, value] :
       valuesIn("wal_level=logical; archive_mode=on; archive_command=/bin/true %p; "
                "log_min_messages=notice; DateStyle=ISO, DMY; search_path=\"$user\", \"A\"")) {
    told[setting] = value;
  }
  EXPECT_EQ("", import(1, values));
  EXPECT_TRUE(holds(shown("max_connections"), "A change waits for a restart."));
  cluster().restart();
  for (const auto& [setting, value] : told) {
    EXPECT_TRUE(holds(shown(setting), "Set in the cluster's configuration.")) << shown(setting);
    if (setting == "application_name") continue;  // a session's own
    for (const std::size_t member : {0U, 1U}) {
      EXPECT_EQ(value, cluster().value(member, setting)) << setting;
    }
  }
  const char byOthers[] = "SELECT name FROM pg_file_settings WHERE sourcefile LIKE '%auto.conf'";
  EXPECT_EQ("", cluster().sql(0, byOthers));

  const auto before = cluster().configuration();
  const TempFolder folder;
  EXPECT_EQ(0, cluster().knob(0, {"-O", folder / "out.txt"}).run().status);
  std::istringstream lines(cluster().knob(0, {"-I", folder / "out.txt", "-E"}).run().err);
  for (std::string line; std::getline(lines, line);) {
    EXPECT_TRUE(holds(line, "the file has no value for it")) << line;
  }
  EXPECT_EQ(before, cluster().configuration());
}

TEST_F(Patroni, RefusesWhatTheClusterWouldIgnore) {
  const std::size_t replica = 1 - cluster().leader();
  cluster().sql(replica, "ALTER SYSTEM SET temp_buffers = 900");
  cluster().configure(R"({"postgresql":{"parameters":{"fsync":"on"}},"synchronous_mode":true})");
  const std::pair<TnStatus, std::string> refusals[] = {
      {TN_PATRONI_SETS_IT,
       "listen_addresses=*; port=1; hot_standby=off; hba_file=/x; primary_conninfo=x"},
      {TN_PATRONI_BELOW_MINIMUM, "max_connections=24; max_wal_senders=2; wal_keep_size=15"},
      {TN_PATRONI_WAL_LEVEL, "wal_level=0"},
      {TN_PATRONI_SYNCHRONOUS, "synchronous_standby_names=x"},
      {TN_PATRONI_OVERRIDDEN, "temp_buffers=901; temp_buffers=1024"},  // the leader has 1024
      {TN_PATRONI_NOT_TAKEN, "fsync=on"},
      {TN_PATRONI_SET_BY_MEMBER, "unix_socket_directories=/tmp"},
      {TN_SETTING_READ_ONLY, "server_version=16; transaction_read_only=on; external_pid_file=/x"},
      {TN_VALUE_OUT_OF_RANGE, "vacuum_cost_limit=0; vacuum_cost_delay=500"},
      {TN_VALUE_REFUSED,
       "autovacuum_analyze_scale_factor=x; default_text_search_config=no such; "
       "lc_messages=nowhere; syslog_ident=\xff; log_destination=nonsense; "
       "max_connections=262143; bonjour=on"},
  };
  const auto before = cluster().configuration();
  for (const auto& [status, values] : refusals) {
    for (const auto& [setting, value] : valuesIn(values)) {
      const Outcome refused = cluster().set(0, setting, {value});
      EXPECT_NE(0, refused.status) << setting;
      EXPECT_TRUE(holds(refused.out + refused.err, std::to_string(status) + ": "))
          << setting << refused.out << refused.err;
    }
  }
  EXPECT_EQ(before, cluster().configuration());
  cluster().sql(cluster().leader(), "CREATE ROLE plain LOGIN");
  const Outcome hidden = cluster().set(0, "commit_delay", {"3", "-U", "plain"});
  EXPECT_TRUE(holds(hidden.out + hidden.err, std::to_string(TN_PATRONI_SOURCES_HIDDEN)));
  EXPECT_TRUE(holds(shown("fsync"), "Overridden on the leader by the member's own"));
  cluster().sql(replica, "ALTER SYSTEM RESET ALL");
  cluster().configure(R"({"postgresql":{"parameters":{"fsync":null}},"synchronous_mode":null})");
}

TEST_F(Patroni, LosesNothingOfTwoAtOnce) {
  const Words settings = {"bgwriter_delay", "vacuum_cost_delay"};
  std::vector<std::thread> programs;
  for (const std::size_t member : {0U, 1U}) {
    programs.emplace_back([&, member] {
      Values values;
      for (int i = 20; i < 40; ++i) values.emplace_back(settings[member], std::to_string(i));
      EXPECT_EQ("", import(member, values));
    });
  }
  for (std::thread& program : programs) program.join();
  EXPECT_EQ(39, parameters()["bgwriter_delay"]);
  EXPECT_EQ("39", parameters()["vacuum_cost_delay"]);
}

TEST_F(Patroni, TellsOfAMemberThatDoesNotFollowAndDoesNotWaitForItTwice) {
  const std::size_t leader = cluster().leader();
  cluster().signal(1 - leader, SIGSTOP);
  const auto begin = Clock::now();
  const std::string told =
      import(leader, valuesIn("commit_siblings=6; geqo_threshold=14; geqo_seed=0.5; "
                              "bgwriter_delay=41"));
  cluster().signal(1 - leader, SIGCONT);
  EXPECT_GT(std::chrono::seconds(10), Clock::now() - begin);
  EXPECT_EQ(1, std::count(told.begin(), told.end(), '\n')) << told;
  EXPECT_TRUE(holds(told, "7513: ")) << told;
  EXPECT_EQ("14", cluster().value(leader, "geqo_threshold"));
  EXPECT_EQ("41", cluster().value(leader, "bgwriter_delay"));
}

TEST_F(Patroni, StoresOrNamesEverySettingWhenTheLeaderIsLost) {
  const std::size_t leader = cluster().leader();
  const Words settings = {"geqo_generations",        "geqo_pool_size",
                          "gin_fuzzy_search_limit",  "vacuum_freeze_min_age",
                          "vacuum_freeze_table_age", "vacuum_cost_page_hit",
                          "vacuum_cost_page_miss",   "vacuum_cost_page_dirty",
                          "join_collapse_limit",     "from_collapse_limit"};
  Values values;
  for (std::size_t i = 0; i < 50; ++i)
    values.emplace_back(settings[i / 5], std::to_string(11 + i % 5));
  std::string told;
  std::thread program([&] { told = import(leader, values); });
  while (!parameters().contains(settings[2])) std::this_thread::yield();
  cluster().kill(leader);
  program.join();
  EXPECT_NE(leader, cluster().leader());
  for (const std::string& setting : settings) {
    const bool named = holds(told, "etting " + PatroniCluster::id(setting) + " ");
    EXPECT_TRUE(named || parameters().value(setting, 0) == 15) << setting << told << parameters();
  }
  EXPECT_EQ(15, parameters()[settings.back()]);
  cluster().start(leader);
  cluster().awaitMembers();
}

TEST_F(Patroni, SaysThatTheStoreIsDown) {
  cluster().etcd().end(0);
  for (const Words& words : {Words{"7"}, Words{}}) {
    const auto begin = Clock::now();
    const Outcome told = cluster().set(0, "commit_siblings", words);
    EXPECT_TRUE(holds(told.out + told.err, "7509: ")) << told.out << told.err;
    EXPECT_GT(std::chrono::seconds(15), Clock::now() - begin);
  }
  cluster().etcd().start(0);
}

}  // namespace
