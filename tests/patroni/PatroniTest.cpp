// Settings of a whole cluster: the program on a running one, and the parts on doubles of the REST
// API that answer as a real one cannot be made to.
#include <algorithm>
#include <csignal>
#include <gtest/gtest.h>
#include <map>
#include <regex>
#include <thread>
#include <tuple>

#include "http/HttpDouble.h"
#include "patroni/PatroniCluster.h"
#include "support/StatusOf.h"
#include "tuning/patroni/PatroniEngine.h"
#include "tuning/patroni/RestApi.h"

namespace {

using namespace std::chrono_literals;
using namespace tn::patroni;
using Clock = std::chrono::steady_clock;
using Words = std::vector<std::string>;

RestApi apiOf(const std::string& hosts) { return RestApi(Address::parse("patroni://" + hosts)); }

// A member that answers requests that hold a text in one way and all others as a Patroni does.
HttpDouble::Script troubled(const std::string& text, const Reply& reply) {
  return [=](const std::string& request) -> Reply {
    if (request.find(text) != request.npos) return reply;
    return {httpAnswer(200, R"({"members":[],"patroni":{}})")};
  };
}

TEST(PatroniApi, TellsFailuresApart) {
  const std::string nested = std::string(1 << 20, '[') + std::string(1 << 20, ']') + '}';
  // What is asked, how it is answered (0: the connection ends instead), what comes of reading and
  // of changing the configuration.
  const std::tuple<std::string, int, std::string, TnStatus, TnStatus> troubles[] = {
      {"PATCH", 401, "no auth header received", TN_SUCCESS, TN_PATRONI_LOGIN_NEEDED},
      {"PATCH", 401, "not authenticated", TN_SUCCESS, TN_PATRONI_LOGIN_REFUSED},
      {"PATCH", 403, "client certificate required", TN_SUCCESS, TN_PATRONI_TLS_REFUSED},
      {"PATCH", 409, "", TN_SUCCESS, TN_PATRONI_CONFLICT},
      {"PATCH", 503, "", TN_SUCCESS, TN_PATRONI_STORE_DOWN},
      {"PATCH", 504, "", TN_SUCCESS, TN_PATRONI_OUTCOME_UNKNOWN},
      {"PATCH", 0, "", TN_SUCCESS, TN_PATRONI_OUTCOME_UNKNOWN},
      {"GET /cl", 500, "", TN_PATRONI_STORE_DOWN, TN_SUCCESS},
      {"GET /co", 200, R"({"a":)" + nested, TN_PATRONI_FOREIGN, TN_SUCCESS},
      {"GET /co", 502, "", TN_PATRONI_CONFIG_NOT_READABLE, TN_SUCCESS},
      {" /", 302, "", TN_PATRONI_FOREIGN, TN_PATRONI_FOREIGN},
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
  const HttpDouble leaderless(troubled("/leader", {}));
  const std::string name = "patroni://" + leaderless.address();
  EXPECT_EQ(TN_PATRONI_NO_LEADER, statusOf([&] { PatroniEngine::open(name.c_str(), "", ""); }));
}

TEST(PatroniApi, TriesAgainDuringConflictsAndElsewhereWhenOneMemberFails) {
  int conflicts = 3;
  const HttpDouble member(
      [&](const std::string&) -> Reply { return {httpAnswer(conflicts-- > 0 ? 409 : 200, "{}")}; });
  const HttpDouble cutOff(Reply{httpAnswer(503, "")});
  apiOf(cutOff.address() + "," + member.address()).change({{"a", 1}});
  EXPECT_EQ(4, member.requests());
  EXPECT_EQ(1, cutOff.requests());
}

using Values = std::vector<std::pair<std::string, std::string>>;

// Settings and their values, from "NAME=VALUE; NAME=VALUE".
Values valuesIn(const std::string& text) {
  static const std::regex one("(\\w+)=([^;]*)");
  Values values;
  for (std::sregex_iterator found(text.begin(), text.end(), one), end; found != end; ++found) {
    values.emplace_back((*found)[1], (*found)[2]);
  }
  return values;
}

// Each setting becomes 20 to 39.
Values changesOf(const Words& settings) {
  Values values;
  for (const std::string& setting : settings) {
    for (int i = 20; i < 40; ++i) values.emplace_back(setting, std::to_string(i));
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
  // The exit status of showing or setting a setting, and what is told.
  static std::string told(const std::string& setting, Words words = {}) {
    words.insert(words.begin(), PatroniCluster::id(setting));
    const Outcome run = cluster().knob(0, words);
    return std::to_string(run.status) + run.out + run.err;
  }
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
    return cluster().knob(member, {"-I", folder / "in.txt"}).err;
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
      "deadlock_timeout=2000; wal_sender_timeout=70000; vacuum_cost_limit=300; lock_timeout=5000; "
      "jit=off; geqo=off; enable_sort=off; cursor_tuple_fraction=0.5; bgwriter_lru_maxpages=50; "
      "search_path=\"$user\", A; client_encoding=LATIN1; application_name=app \\ 'x'");
  std::map<std::string, std::string> wanted(values.begin(), values.end());
  for (const auto& [setting, value] :
       valuesIn("wal_level=logical; archive_mode=on; archive_command=/bin/true %p; "
                "log_min_messages=notice; DateStyle=ISO, DMY; search_path=\"$user\", \"A\"")) {
    wanted[setting] = value;
  }
  EXPECT_EQ("", import(1, values));
  EXPECT_TRUE(holds(told("max_connections"), "A change waits for a restart."));
  cluster().restart();
  for (const auto& [setting, value] : wanted) {
    EXPECT_TRUE(holds(told(setting), "Set in the cluster's configuration.")) << setting;
    if (setting == "application_name") continue;  // a session's own
    for (const std::size_t member : {0U, 1U}) {
      EXPECT_EQ(value, cluster().value(member, setting)) << setting;
    }
  }
  const auto before = cluster().configuration();
  const TempFolder folder;
  EXPECT_EQ(0, cluster().knob(0, {"-O", folder / "out.txt"}).status);
  const std::string said = cluster().knob(0, {"-I", folder / "out.txt", "-E"}).err;
  EXPECT_EQ("", std::regex_replace(said, std::regex(".*the file has no value for it.*\n"), ""));
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
      const std::string refused = told(setting, {value});
      EXPECT_NE('0', refused.front()) << setting << refused;
      EXPECT_TRUE(holds(refused, std::to_string(status) + ": ")) << setting << refused;
    }
  }
  EXPECT_EQ(before, cluster().configuration());
  cluster().sql(cluster().leader(), "CREATE ROLE plain LOGIN");
  EXPECT_TRUE(
      holds(told("commit_delay", {"3", "-U", "plain"}), std::to_string(TN_PATRONI_SOURCES_HIDDEN)));
  EXPECT_TRUE(holds(told("fsync"), "Overridden on the leader by the member's own"));
  cluster().sql(replica, "ALTER SYSTEM RESET ALL");
  cluster().configure(R"({"postgresql":{"parameters":{"fsync":null}},"synchronous_mode":null})");
}

TEST_F(Patroni, LosesNothingOfTwoAtOnce) {
  std::thread another([] { EXPECT_EQ("", import(1, changesOf({"vacuum_cost_delay"}))); });
  EXPECT_EQ("", import(0, changesOf({"bgwriter_delay"})));
  another.join();
  EXPECT_EQ(39, parameters()["bgwriter_delay"]);
  EXPECT_EQ("39", parameters()["vacuum_cost_delay"]);
}

TEST_F(Patroni, TellsOfAMemberThatDoesNotFollowAndDoesNotWaitForItTwice) {
  const std::size_t leader = cluster().leader();
  cluster().signal(1 - leader, SIGSTOP);
  const auto begin = Clock::now();
  const std::string said = import(leader, valuesIn("commit_siblings=6; geqo_threshold=14; "
                                                   "geqo_seed=0.5; bgwriter_delay=41"));
  cluster().signal(1 - leader, SIGCONT);
  EXPECT_GT(10s, Clock::now() - begin);
  EXPECT_EQ(1, std::count(said.begin(), said.end(), '\n')) << said;
  EXPECT_TRUE(holds(said, "7513: ")) << said;
  EXPECT_EQ("41", cluster().value(leader, "bgwriter_delay"));
}

TEST_F(Patroni, StoresOrNamesEverySettingWhenTheLeaderIsLost) {
  const std::size_t leader = cluster().leader();
  const Words settings = {"geqo_generations", "geqo_pool_size", "vacuum_cost_page_hit"};
  std::string said;
  std::thread program([&] { said = import(leader, changesOf(settings)); });
  while (!parameters().contains(settings[1])) std::this_thread::yield();
  cluster().kill(leader);
  program.join();
  EXPECT_NE(leader, cluster().leader());
  for (const std::string& setting : settings) {
    const bool named = holds(said, "etting " + PatroniCluster::id(setting) + " ");
    EXPECT_TRUE(named || parameters().value(setting, 0) == 39) << setting << said << parameters();
  }
  EXPECT_EQ(39, parameters()[settings.back()]);
  cluster().start(leader);
  cluster().awaitMembers();
}

TEST_F(Patroni, SaysThatTheStoreIsDown) {
  cluster().etcd().end(0);
  for (const Words& words : {Words{"7"}, Words{}}) {
    const auto begin = Clock::now();
    EXPECT_TRUE(holds(told("commit_siblings", words), "7509: "));
    EXPECT_GT(15s, Clock::now() - begin);
  }
  cluster().etcd().start(0);
}

}  // namespace
