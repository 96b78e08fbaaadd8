// The program on running PostgreSQL servers.
#include <functional>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <set>
#include <sstream>
#include <sys/stat.h>
#include <thread>

#include "postgresql/Server.h"
#include "support/Daemon.h"
#include "support/Proxy.h"

namespace {

using nlohmann::json;

constexpr char kPooler[] = "/usr/sbin/pgbouncer";
constexpr char kWaiting[] = "SELECT name FROM pg_settings WHERE pending_restart";

// No code: it succeeds.
void expectCode(const std::string& code, const Outcome& run) {
  EXPECT_EQ(code.empty() ? 0 : 1, run.status) << run.out << run.err;
  const std::string said = code.empty() ? "" : code + ": ";
  EXPECT_NE(std::string::npos, (run.out + run.err).find(said)) << run.out << run.err;
}

class Postgres : public testing::Test {
 protected:
  void SetUp() override {
    const std::string obstacle = Server::obstacle();
    if (!obstacle.empty()) GTEST_SKIP() << obstacle;
    server().reset();
    server().restart();
  }
  static Server& server() { return Server::shared(); }
  static void import(const std::string& text) {
    writeFile(server().folder() + "/in", text);
    server().knob({"-I", server().folder() + "/in", "-E"}).run();
  }
  static std::string entry(const std::string& id, const std::string& value) {
    return "Setting ID: " + id + "\nCurrent Value: " + value + "\n";
  }
  static void expectSet(const std::string& name, const std::string& value, const std::string& code,
                        const std::string& written = "") {
    SCOPED_TRACE(name + " = " + value);
    expectCode(code, server().set(name, value));
    EXPECT_EQ(written, server().written());
  }
};

bool comes(const std::function<bool()>& event) {
  for (int i = 0; i < 500 && !event(); ++i) usleep(10000);
  return event();
}

TEST_F(Postgres, TellsWhyItCannotConnect) {
  const std::string here = "host=" + server().folder() + "&port=" + server().port();
  const std::string tcp = "127.0.0.1:" + server().port();
  const struct {
    std::string code, address;
    std::vector<std::string> login;
  } cases[] = {
      {"7401", "/postgres?" + here + "&options=-cnonsense=1", {"-U", "postgres"}},
      {"7402", "127.0.0.1:1/postgres?channel_binding=require&connect_timeout=1", {}},
      {"7403", "secret:right@" + tcp + "/postgres", {"-P", "wrong"}},
      {"7403", "/template0?" + here, {"-U", "postgres"}},
      {"7404", "/nothing?" + here, {"-U", "postgres"}},
      {"7406", "/postgres?" + here, {"-U", "full"}},
      {"7407", "postgres@" + tcp + "/postgres?sslmode=require", {}},
      {"7407", "/postgres?" + here + "&requirepeer=nobody-here", {"-U", "postgres"}},
      {"7409", "/closed?" + here, {"-U", "plain"}},
      {"7418", "postgres@" + tcp + "/postgres?target_session_attrs=standby", {}},
      {"", "secret:wrong@" + tcp + "/postgres", {"-P", "right"}},
      {"", "stranger@127.0.0.1:1," + tcp + "/postgres", {"-U", "postgres"}},
  };
  for (const auto& c : cases) {
    std::vector<std::string> arguments{"103", "-S", "postgresql://" + c.address};
    arguments.insert(arguments.end(), c.login.begin(), c.login.end());
    SCOPED_TRACE(c.address);
    expectCode(c.code, knob(server().folder(), arguments).run());
  }
}

TEST_F(Postgres, ShowsTheServersValuesWhateverTheSessionHas) {
  const std::pair<std::string, std::string> cases[] = {
      {"work_mem", "716800"},           {"statement_timeout", "3600000"},
      {"random_page_cost", "1.5"},      {"enable_sort", "off"},
      {"search_path", "$user, public"}, {"application_name", ""},
      {"client_encoding", "SQL_ASCII"}, {"timezone", "Etc/UTC"},
      {"log_file_mode", "416"},         {"archive_command", "cp %p x"},
      {"client_min_messages", "8"},     {"temp_buffers", "1000"}};
  server().restart(
      "work_mem = 700MB\nstatement_timeout = 1h\nenable_sort = no\nclient_min_messages = ERROR\n"
      "random_page_cost = 1.50\nlog_file_mode = 0640\narchive_command = 'cp %p x'\n"
      "temp_buffers = 5000\n",
      "-c temp_buffers=1000");
  const auto check = [&](const std::map<std::string, std::string>& environment) {
    auto all = server().settings(environment);
    for (const auto& [name, value] : cases) EXPECT_EQ(value, all[name]["Current Value"]) << name;
  };
  check({});
  server().sql(
      "ALTER ROLE postgres SET work_mem = '1GB'; ALTER ROLE ALL SET enable_sort = on;"
      "ALTER DATABASE postgres SET statement_timeout = 70000;"
      "ALTER ROLE postgres SET temp_buffers = 200;"
      "ALTER ROLE postgres SET extra_float_digits = -15;"
      "ALTER ROLE postgres IN DATABASE postgres SET random_page_cost = 9;"
      "CREATE SCHEMA evil; CREATE VIEW evil.pg_settings AS SELECT 1 AS name;"
      "ALTER ROLE postgres SET search_path = evil, pg_catalog;"
      "ALTER ROLE postgres SET standard_conforming_strings = off");
  check({{"PGAPPNAME", "x"},
         {"PGTZ", "Asia/Tokyo"},
         {"PGCLIENTENCODING", "LATIN1"},
         {"PGOPTIONS", "-c client_min_messages=debug5"}});
  EXPECT_EQ(0, server().set("log_line_prefix", "a\\'b").status);
  EXPECT_EQ("a\\'b", server().sql("SHOW log_line_prefix"));
  // A role that may not look into the files sees the default, and is told so.
  server().sql("ALTER ROLE plain SET work_mem = '1GB'; ALTER SYSTEM SET client_encoding = LATIN1");
  server().restart();
  auto plain = server().settings({}, "plain");
  EXPECT_EQ("4096", plain["work_mem"]["Current Value"]);
  EXPECT_EQ("LATIN1", plain["client_encoding"]["Current Value"]) << "not the program's own";
  server().sql("ALTER ROLE plain RESET ALL");
}

TEST_F(Postgres, StoresTextExactlyOrRefusesIt) {
  for (std::string const text : {"it's $$x$$ $a$ E'\\n' || x \"q\" 'q' '' größe € a\tb /* x %% %s",
                                 "a\\'; DROP TABLE t; --", "\\", "DEFAULT", ""}) {
    EXPECT_EQ(0, server().set("log_line_prefix", text).status) << text;
    EXPECT_EQ(text, server().sql("SHOW log_line_prefix"));
  }
  const std::string before = server().written();
  expectCode("7207", server().set("log_line_prefix", "a\nb"));
  server().sql(
      "CREATE DATABASE narrow ENCODING LATIN1 LC_COLLATE 'C' LC_CTYPE 'C' TEMPLATE template0");
  const std::string id = server().id("archive_command");
  expectCode("7412", server().knob({id, "€"}, "narrow").run());
  EXPECT_EQ(before, server().written());
  EXPECT_EQ(0, server().knob({id, "größe"}, "narrow").run().status);
  const std::string shown = server().knob({id}, "narrow").run().out;
  EXPECT_NE(std::string::npos, shown.find("Current Value: größe\n")) << shown;
  // Bytes pass a database without an encoding, whatever the client's is said to be.
  server().sql("CREATE DATABASE bytes ENCODING SQL_ASCII TEMPLATE template0");
  Process process = server().knob({id, "é日"}, "bytes");
  process.environment["PGCLIENTENCODING"] = "SJIS";
  EXPECT_EQ(0, process.run().status);
  EXPECT_EQ("é日", server().value("archive_command"));
}

TEST_F(Postgres, WritesListsNameByName) {
  const std::string path = "search_path = '\"$user\", \"a\"\"\", \"''b\", public'\n";
  const std::string library = "session_preload_libraries = 'auto_explain'\n";
  const std::string format = "auto_explain.log_format = 'json'\n";
  const std::string names = "\"$user\", \"a\"\"\", 'b,public";
  expectSet("random_page_cost", "4.0", "");  // as it is
  expectSet("search_path", names, "", path);
  expectSet("search_path", "", "7416", path);
  expectSet("search_path", "a,,b", "7417", path);
  expectSet("session_preload_libraries", "auto_explain", "", path + library);
  expectSet("search_path", names, "", path + library);  // not again
  expectSet("auto_explain.log_format", "2", "", path + library + format);
  expectSet("session_preload_libraries", "", "", path + format);
  expectSet("search_path", "\"\"", "", format + "search_path = '\"\"'\n");
  // The server compares the texts of a list that waits for a restart, and writes its own.
  server().restart("shared_preload_libraries = 'auto_explain,pg_stat_statements'\n");
  server().reset();
  EXPECT_EQ("300", server().id("pg_stat_statements.max"));
  EXPECT_EQ(0, server().set("shared_preload_libraries", "auto_explain").status);
  EXPECT_EQ("shared_preload_libraries", server().sql(kWaiting));
  const std::string running = server().value("shared_preload_libraries");
  EXPECT_EQ("auto_explain, pg_stat_statements", running);
  expectSet("shared_preload_libraries", running, "");
  EXPECT_EQ("", server().sql(kWaiting));
}

TEST_F(Postgres, ChangesWhatItMayAndWhatHelps) {
  expectSet("data_directory", "/x", "7413");
  expectSet("block_size", "8193", "7413");
  expectSet("transaction_isolation", "0", "7413");
  expectSet("work_mem", "63", "7202");
  expectSet("wal_level", "9", "7203");
  expectSet("random_page_cost", "x", "7412");
  expectSet("default_text_search_config", "no such", "7412");
  const std::string id = server().id("work_mem");
  const Process byPlain = server().knob({id, "5000", "-U", "plain"});
  expectCode("7414", byPlain.run());
  EXPECT_EQ("", server().written());
  server().sql("GRANT EXECUTE ON FUNCTION pg_reload_conf() TO plain");
  expectCode("7409", byPlain.run());
  if (server().version() >= 15) {
    server().sql("GRANT ALTER SYSTEM ON PARAMETER work_mem TO plain");
    EXPECT_EQ(0, byPlain.run().status);
    EXPECT_EQ("5000", server().value("work_mem"));
  }
  // An error in a file: the server would load nothing.
  writeFile(server().data("test.conf"), "no_such_setting = 1\n");
  expectCode("7415", server().set("work_mem", "6000"));
  writeFile(server().data("test.conf"), "");
  // A change that waits for a restart is no error, and is taken back by the running value.
  const std::string connections = server().id("max_connections");
  import(entry(connections, "150") + entry(id, "7000"));
  EXPECT_EQ("7000", server().value("work_mem"));
  EXPECT_EQ("max_connections", server().sql(kWaiting));
  EXPECT_EQ(0, server().set("max_connections", "100").status);
  EXPECT_EQ("", server().sql(kWaiting));
  // One that the server writes in another way is in force as well.
  EXPECT_EQ(0, server().set("datestyle", "german").status);
  EXPECT_EQ("German, DMY", server().value("datestyle"));
  // Taken back is also what stands in a file that the server has not read yet, or cannot read.
  const std::pair<const char*, const char*> unread[] = {
      {"postgresql.auto.conf", "8MB"}, {"postgresql.auto.conf", "zzz"}, {"test.conf", "9MB"}};
  for (const auto& [file, value] : unread) {
    server().reset();
    writeFile(server().data(file), std::string("work_mem = ") + value + "\n");
    expectSet("work_mem", "4096", "", "work_mem = '4096'\n");
  }
}

TEST_F(Postgres, RefusesAChangeThatCouldNotTakeEffect) {
  const std::string ofPatroni =
      "-c cluster_name=c -c hot_standby=on -c max_locks_per_transaction=64 -c wal_level=replica "
      "-c max_prepared_transactions=0 -c track_commit_timestamp=off -c wal_log_hints=on";
  // The role has values of its own for temp_buffers, work_mem and geqo.
  const struct {
    std::string options, line, setting, value, code;
  } cases[] = {
      {"-c wal_log_hints=on", "", "wal_log_hints", "off", "7420"},
      {"-c wal_log_hints=on", "", "wal_log_hints", "on", ""},
      {"-S 9216", "work_mem = 7MB", "work_mem", "7168", "7420"},
      {"-c temp_buffers=2000", "", "temp_buffers", "3000", "7420"},
      {"--temp-buffers=2000", "", "temp_buffers", "2000", ""},
      {"-cgeqo=off", "", "geqo", "on", "7420"},
      {ofPatroni, "", "wal_log_hints", "off", "7421"},
      {"", "allow_alter_system = off", "work_mem", "5000", "7422"},
  };
  server().sql(
      "ALTER ROLE postgres SET temp_buffers = 500; ALTER ROLE postgres SET work_mem = 500;"
      "ALTER ROLE postgres SET geqo = on");
  for (const auto& c : cases) {
    if (c.options.empty() && server().version() < 17) continue;
    SCOPED_TRACE(c.options + c.line + c.value);
    server().restart(c.line + "\n", c.options);
    expectSet(c.setting, c.value, c.code);
    const std::string shown = server().knob({server().id(c.setting)}).run().out;
    EXPECT_EQ(!c.options.empty(), shown.find("command line") != std::string::npos) << shown;
  }
  server().restart();
  // Nobody can tell what the command line gives a setting that the role's own hides.
  std::filesystem::remove(server().data("postmaster.opts"));
  expectCode("7424", server().set("temp_buffers", "3000"));
  server().restart();
  server().reset();
  const std::string file = server().data("postgresql.auto.conf");
  ASSERT_EQ(0, chmod(file.c_str(), 0400));
  expectSet("work_mem", "5000", "7423");
  ASSERT_EQ(0, chmod(file.c_str(), 0600));
}

TEST_F(Postgres, HasTheFirstChangeInForceAndTheOthersAfterALostConnection) {
  const std::string pipe = server().folder() + "/pipe";
  ASSERT_EQ(0, mkfifo(pipe.c_str(), 0666));
  const std::string first = server().id("work_mem"), second = server().id("geqo");
  Outcome run;
  std::thread program([&] { run = server().knob({"-I", pipe}).run(); });
  std::ofstream file(pipe);
  file << entry(first, "5000") << std::flush;
  EXPECT_TRUE(comes([] { return server().sql("SHOW work_mem") == "5000kB"; }));
  file << entry(second, "off") << std::flush;
  EXPECT_TRUE(comes([] { return server().written().find("geqo") != std::string::npos; }));
  EXPECT_EQ("on", server().sql("SHOW geqo"));
  server().sql(
      "SELECT pg_terminate_backend(pid) FROM pg_stat_activity"
      " WHERE backend_type = 'client backend' AND pid <> pg_backend_pid()");
  file << entry(first, "6000") << entry(second, "on") << std::flush;
  file.close();
  program.join();
  EXPECT_EQ(0, run.status);
  const std::size_t lost = run.err.find("7408: ");
  EXPECT_NE(std::string::npos, run.err.find("7426: ", lost + 1)) << run.err;
  EXPECT_EQ("off", server().sql("SHOW geqo"));
  EXPECT_EQ("5000", server().value("work_mem"));
}

TEST_F(Postgres, HasWhatItStoredInForceWhereverTheConnectionIsCut) {
  const std::string id = server().id("work_mem");
  const int port = std::stoi(server().port());
  const auto set = [&](const Proxy& proxy) {
    knob(server().folder(), {id, "5000", "-S",
                             "postgresql://postgres@127.0.0.1:" + std::to_string(proxy.port()) +
                                 "/postgres?sslmode=disable&gssencmode=disable"})
        .run();
    return proxy.passed(Proxy::toServer);
  };
  const long whole = set(Proxy(port));
  for (long after = whole - 900; after < whole; after += 60) {
    server().reset();
    set(Proxy(port, Proxy::Trouble::cut, Proxy::toServer, after));
    EXPECT_EQ(server().written().empty() ? "4MB" : "5000kB", server().sql("SHOW work_mem"))
        << after << " of " << whole;
  }
}

// In transaction mode a pooler gives every statement to the next of its server processes.
TEST_F(Postgres, WaitsForTheServerBehindAPooler) {
  if (access(kPooler, X_OK) != 0) GTEST_SKIP() << "there is no " << kPooler << " (pgbouncer)";
  const std::string folder = server().folder();
  const std::string uri = "postgresql://postgres@/postgres?host=" + folder + "&port=6432";
  writeFile(folder + "/pooler.ini",
            "[databases]\npostgres = user=postgres host=" + folder + " port=" + server().port() +
                "\n[pgbouncer]\nauth_type = any\npool_mode = transaction\n"
                "server_round_robin = 1\nlisten_addr =\nlisten_port = 6432\nunix_socket_dir = " +
                folder + "\n");
  Daemon pooler;
  pooler.start({kPooler, folder + "/pooler.ini"}, {}, serverUser(), folder + "/pooler.log");
  ASSERT_TRUE(comes([&] { return access((folder + "/.s.PGSQL.6432").c_str(), F_OK) == 0; }))
      << readFile(folder + "/pooler.log");
  // As many server processes as there are sessions at one time.
  const std::string session =
      serverProgram("psql") + " -XAtc 'SELECT 1, pg_sleep(0.5)' '" + uri + "' & ";
  EXPECT_EQ("1|\n1|\n1|", server().run({"/bin/sh", "-c", session + session + session + "wait"}));
  const std::string id = server().id("work_mem");
  const int postmaster = std::stoi(readFile(server().data("postmaster.pid")));
  const auto set = [&](const std::string& value) {
    return knob(folder, {id, value, "-S", uri}).run();
  };
  // A server that does not come to load what was stored: told by the next run, were it not awaited.
  ASSERT_EQ(0, kill(postmaster, SIGSTOP));
  Outcome run;
  std::thread setting([&] { run = set("5000"); });
  EXPECT_TRUE(comes([] { return !server().written().empty(); }));
  usleep(300000);
  ASSERT_EQ(0, kill(postmaster, SIGCONT));
  setting.join();
  EXPECT_EQ(0, run.status) << run.err;
  for (int i = 0; i < 3; ++i) {
    const std::string shown = knob(folder, {id, "-S", uri}).run().out;
    EXPECT_NE(std::string::npos, shown.find("Current Value: 5000\n")) << shown;
  }
  ASSERT_EQ(0, kill(postmaster, SIGSTOP));
  run = set("6000");
  ASSERT_EQ(0, kill(postmaster, SIGCONT));
  expectCode("7424", run);
  EXPECT_EQ("work_mem = '6000'\n", server().written());
}

TEST_F(Postgres, TakesBackEveryValueThatItTellsAndTellsOfARestartRightly) {
  // Every type and context, several to a line.
  std::istringstream values(
      R"(autovacuum=off|geqo=off|log_connections=on|ignore_system_indexes=on|work_mem=5000|
track_commit_timestamp=on|max_connections=60|shared_buffers=2000|statement_timeout=99000|
log_file_mode=416|temp_file_limit=1000000|checkpoint_timeout=600|random_page_cost=1.25|
wal_level=2|archive_mode=1|log_statement=2|intervalstyle=3|cluster_name=a b|
log_line_prefix=%m 'x' \ %q|archive_command=test ! -f /a/%f && cp "%p" /a/%f|
search_path=$user, "a,b", Public|datestyle=German, DMY|timezone=Europe/Berlin|
shared_preload_libraries=auto_explain, pg_stat_statements|post_auth_delay=0|
synchronous_standby_names=FIRST 1 ("x y", b)|)");
  for (std::string name, value; getline(getline(values >> std::ws, name, '='), value, '|');) {
    EXPECT_EQ(0, server().set(name, value).status) << name;
  }
  server().restart();
  const std::string written = server().written();
  auto told = server().settings();
  const json contexts =
      json::parse(server().sql("SELECT json_object_agg(lower(name), context) FROM pg_settings"));
  std::set<std::string> ids;
  for (auto& [name, setting] : told) {
    const std::string context = contexts[name], value = setting["Current Value"];
    ids.insert(setting["Setting ID"]);
    const bool client = context.ends_with("user") || context.ends_with("backend");
    const std::string text =
        setting[client ? "Description (client setting)" : "Description (server setting)"];
    EXPECT_NE("", text) << name << " is of the other kind";
    if (value.starts_with("-")) continue;  // an option, on a command line
    const Outcome run = server().knob({setting["Setting ID"], value}).run();
    EXPECT_EQ(0, run.status) << name << run.err;
    // Where the announcement holds for other versions, the description has the last word.
    const bool announced = run.out.find("restart") != std::string::npos;
    const bool corrected = text.ends_with(announced ? "takes a change without a restart."
                                                    : "when the server is restarted.");
    EXPECT_EQ(context == "postmaster", announced != corrected) << name;
  }
  EXPECT_EQ(contexts.size(), ids.size());
  EXPECT_EQ(written, server().written());
  server().reset();
  server().restart();
  import(readFile(server().exported()));
  server().restart();
  auto again = server().settings();
  for (const auto& [name, setting] : told) EXPECT_EQ(setting, again[name]) << name;
}

}  // namespace
