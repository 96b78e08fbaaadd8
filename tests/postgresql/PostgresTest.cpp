// The program on running PostgreSQL servers.
#include <csignal>
#include <functional>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <set>
#include <sstream>
#include <sys/stat.h>
#include <sys/wait.h>
#include <thread>

#include "postgresql/Server.h"
#include "support/Proxy.h"

namespace {

using nlohmann::json;

constexpr char kPooler[] = "/usr/sbin/pgbouncer";

class Postgres : public testing::Test {
 protected:
  void SetUp() override {
    const std::string obstacle = Server::obstacle();
    if (!obstacle.empty()) GTEST_SKIP() << obstacle;
    server().reset();
  }
  void TearDown() override {
    if (!configured) return;
    server().sql(
        "ALTER ROLE postgres RESET ALL\nALTER ROLE ALL RESET ALL\n"
        "ALTER DATABASE postgres RESET ALL\n"
        "ALTER ROLE postgres IN DATABASE postgres RESET ALL");
    configure("");
  }
  // Starts the server with more lines in its file and with options, until the end of the test.
  void configure(const std::string& lines, const std::string& options = "") {
    const std::string file = server().data("postgresql.conf");
    if (!configured) main = readFile(file);
    configured = true;
    server().stop();
    writeFile(file, main + lines);
    server().start(options);
  }
  static Server& server() { return Server::shared(); }
  static json exported(const Server& from) {
    EXPECT_EQ(0, from.knob({"-O", from.folder() + "/out.json", "-JSON"}).run().status);
    return json::parse(readFile(from.folder() + "/out.json"));
  }
  static std::string exportedText(const Server& from) {
    EXPECT_EQ(0, from.knob({"-O", from.folder() + "/out.txt", "-F"}).run().status);
    return readFile(from.folder() + "/out.txt");
  }
  static Outcome import(const Server& into, const std::string& text) {
    writeFile(into.folder() + "/in.txt", text);
    return into.knob({"-I", into.folder() + "/in.txt", "-E"}).run();
  }
  static std::string entry(const std::string& id, const std::string& value) {
    return "Setting ID: " + id + "\nCurrent Value: " + value + "\n";
  }
  static void connectsOrTellsWhy();
  // An import of what the steps write, as slowly as they do it.
  static Outcome importing(const std::function<void(std::ostream&)>& steps) {
    const TempFolder folder;
    EXPECT_EQ(0, mkfifo((folder / "pipe").c_str(), 0666));
    Outcome run;
    std::thread program([&] { run = server().knob({"-I", folder / "pipe"}).run(); });
    std::ofstream file(folder / "pipe");
    steps(file);
    file.close();
    program.join();
    return run;
  }

  bool configured = false;
  std::string main{};  // the server's file as it was
};

// No code: it succeeds.
void expectCode(const std::string& code, const Outcome& run) {
  EXPECT_EQ(code.empty() ? 0 : 1, run.status) << run.out << run.err;
  const std::string said = code.empty() ? "" : code + ": ";
  EXPECT_NE(std::string::npos, (run.out + run.err).find(said)) << run.out << run.err;
}

bool comes(const std::function<bool()>& event) {
  for (int i = 0; i < 500 && !event(); ++i) usleep(10000);
  return event();
}

void Postgres::connectsOrTellsWhy() {
  const std::string here = "host=" + server().folder() + "&port=" + server().port();
  const std::string tcp = "127.0.0.1:" + server().port();
  const struct {
    std::string code, address;
    std::vector<std::string> login;
  } cases[] = {
      {"7401", "/postgres?" + here + "&nonsense=1", {}},
      {"7401", "/postgres?" + here + "&service=nowhere", {}},
      {"7402", "/postgres?host=/nonexistent", {}},
      {"7402", "127.0.0.1:1/postgres?connect_timeout=2", {}},
      {"7403", "/postgres?" + here, {"-U", "stranger"}},
      {"7403", "secret:wrong@" + tcp + "/postgres", {}},
      {"7403", "secret:right@" + tcp + "/postgres", {"-P", "wrong"}},
      {"7403", "secret@" + tcp + "/postgres", {}},
      {"7403", "/template0?" + here, {"-U", "postgres"}},
      {"7404", "/nothing?" + here, {"-U", "postgres"}},
      {"7406", "/postgres?" + here, {"-U", "full"}},
      {"7402", "127.0.0.1:1/postgres?channel_binding=require", {}},
      {"7407", "postgres@" + tcp + "/postgres?sslmode=require", {}},
      {"7407", "postgres@" + tcp + "/postgres?channel_binding=require", {}},
      {"7407", "/postgres?" + here + "&gssencmode=require", {"-U", "postgres"}},
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

TEST_F(Postgres, TellsWhyItCannotConnectInAnyLanguage) {
  connectsOrTellsWhy();
  const std::string locales = server().folder() + "/locales";
  std::filesystem::create_directory(locales);
  const Outcome made = Process{
      {"/usr/bin/localedef", "-i", "de_DE", "-f", "UTF-8", locales + "/de_DE.UTF-8"},
      {}}.run();
  if (made.status != 0) GTEST_SKIP() << "no second language without the package locales";
  const json english = exported(server());
  server().sql("ALTER SYSTEM SET lc_messages = 'de_DE.UTF-8'\nSELECT pg_reload_conf()");
  connectsOrTellsWhy();
  const json german = exported(server());
  ASSERT_EQ(english["category_list"].size(), german["category_list"].size());
  for (std::size_t i = 0; i < english["category_list"].size(); ++i) {
    EXPECT_EQ(english["category_list"][i]["name"], german["category_list"][i]["name"]);
  }
  EXPECT_NE(english.dump(), german.dump()) << "the server did not change its language";
  expectCode("7413", server().set("hba_file", "/elsewhere"));
}

TEST_F(Postgres, TakesEverySettingsOwnValueAndTellsOfARestartRightly) {
  std::map<std::string, std::string> contexts;
  std::istringstream rows(server().sql("SELECT name || ' ' || context FROM pg_settings"));
  for (std::string name, context; rows >> name >> context;) contexts[name] = context;
  std::set<int> ids;
  std::size_t settings = 0;
  const json all = exported(server());
  for (const json& category : all["category_list"]) {
    EXPECT_LE(category["settings_list"].size(), 50U);
    for (const json& setting : category["settings_list"]) {
      ++settings;
      const std::string name = setting["name"];
      const std::string context = contexts[name];
      ids.insert(setting["id"].get<int>());
      EXPECT_EQ(context == "user" || context == "superuser" || context.ends_with("backend"),
                setting["clientserver"] == "Client");
      const std::string value = setting["value"];
      if (value.starts_with("-")) continue;  // an option, on a command line
      const Outcome run = server().knob({std::to_string(setting["id"].get<int>()), value}).run();
      EXPECT_EQ(0, run.status) << name << run.err;
      // Where the announcement holds for other versions, the description has the last word.
      const std::string description = setting["description"];
      const bool announced = run.out.find("restart") != std::string::npos;
      const bool told = description.ends_with(announced ? "takes a change without a restart."
                                                        : "when the server is restarted.");
      EXPECT_EQ(context == "postmaster", announced != told) << name;
    }
  }
  EXPECT_EQ(contexts.size(), settings);
  EXPECT_EQ(contexts.size(), ids.size());
  EXPECT_EQ("", server().written());
  import(server(), exportedText(server()));
  EXPECT_EQ("log_line_prefix = '%m [%p]'\n", server().written()) << "but for its last blank";
}

TEST_F(Postgres, ShowsTheServersValuesWhateverTheSessionHas) {
  const std::pair<const char*, const char*> cases[] = {{"work_mem", "7168"},
                                                       {"statement_timeout", "3600000"},
                                                       {"random_page_cost", "1.5"},
                                                       {"geqo", "off"},
                                                       {"search_path", "$user, public"},
                                                       {"application_name", ""},
                                                       {"client_encoding", "SQL_ASCII"},
                                                       {"TimeZone", "Etc/UTC"},
                                                       {"log_file_mode", "416"},
                                                       {"archive_command", "cp %p x"},
                                                       {"client_min_messages", "8"},
                                                       {"temp_buffers", "1000"}};
  writeFile(server().data("extra.conf"),
            "work_mem = 7MB\nstatement_timeout = 1h\ngeqo = no\nclient_min_messages = ERROR\n"
            "random_page_cost = 1.50\nlog_file_mode = 0640\narchive_command = 'cp %p x'\n"
            "temp_buffers = 5000\n");
  configure("include 'extra.conf'\n", "-c temp_buffers=1000");
  const auto check = [&](const std::map<std::string, std::string>& environment) {
    for (auto const& [name, value] : cases) {
      EXPECT_EQ(value, server().value(name, environment)) << name;
    }
  };
  check({});
  server().sql(
      "ALTER ROLE postgres SET work_mem = '1GB'\nALTER ROLE ALL SET geqo = on\n"
      "ALTER DATABASE postgres SET statement_timeout = 70000\nALTER ROLE postgres SET temp_buffers "
      "= 200\n"
      "ALTER ROLE postgres IN DATABASE postgres SET random_page_cost = 9\n"
      "CREATE SCHEMA evil\nCREATE VIEW evil.pg_settings AS SELECT 1 AS name\n"
      "ALTER ROLE postgres SET search_path = evil, pg_catalog\n"
      "ALTER ROLE postgres SET standard_conforming_strings = off");
  check({{"PGAPPNAME", "x"},
         {"PGTZ", "Asia/Tokyo"},
         {"PGCLIENTENCODING", "LATIN1"},
         {"PGOPTIONS", "-c client_min_messages=debug1"}});
  EXPECT_EQ(0, server().set("log_line_prefix", "a\\'b").status);
  EXPECT_EQ("a\\'b", server().sql("SHOW log_line_prefix"));
  // A role that may not look into the files sees the default, and is told so.
  server().sql("ALTER ROLE plain SET work_mem = '1GB'\nALTER SYSTEM SET client_encoding = LATIN1");
  server().restart();
  EXPECT_EQ("4096", server().value("work_mem", {}, "plain"));
  EXPECT_EQ("LATIN1", server().value("client_encoding", {}, "plain")) << "not the program's own";
  server().sql("DROP SCHEMA evil CASCADE\nALTER ROLE plain RESET ALL");
}

TEST_F(Postgres, StoresTextExactlyOrRefusesIt) {
  for (std::string const text :
       {"it's $$x$$ $a$ E'\\n' || x \"q\" 'q' '' größe € a\tb /* x %% %s", "a\\'; DROP TABLE t; --",
        "'); SELECT pg_sleep(9) --", "\\", "DEFAULT", ""}) {
    for (std::string const name : {"log_line_prefix", "archive_command"}) {
      EXPECT_EQ(0, server().set(name, text).status) << text;
      EXPECT_EQ(text,
                server().sql("SELECT reset_val FROM pg_settings WHERE name = '" + name + "'"));
    }
  }
  const std::string before = server().written();
  for (std::string const text : {"a\nb", "a\rb", "\x01"}) {
    expectCode("7207", server().set("archive_command", text));
  }
  server().sql(
      "CREATE DATABASE narrow ENCODING LATIN1 LC_COLLATE 'C' LC_CTYPE 'C' TEMPLATE template0");
  const std::string id = server().id("archive_command");
  expectCode("7412", server().knob({id, "€"}, "narrow").run());
  EXPECT_EQ(before, server().written());
  EXPECT_EQ(0, server().knob({id, "größe"}, "narrow").run().status);
  const json shown = json::parse(server().knob({id, "-JSON"}, "narrow").run().out);
  EXPECT_EQ("größe", shown["value"]);
  // Bytes pass a database without an encoding, whatever the client's is said to be.
  server().sql("CREATE DATABASE bytes ENCODING SQL_ASCII TEMPLATE template0");
  Process process = server().knob({id, "é日"}, "bytes");
  process.environment["PGCLIENTENCODING"] = "SJIS";
  EXPECT_EQ(0, process.run().status);
  EXPECT_EQ("é日", server().value("archive_command"));
  // One that cannot say a character of a value cannot be asked, which is no fault of a value.
  server().sql(
      "CREATE DATABASE other ENCODING EUC_JP LC_COLLATE 'C' LC_CTYPE 'C' TEMPLATE template0");
  EXPECT_EQ(0, server().knob({id, "ü"}, "narrow").run().status);
  expectCode("7410", server().knob({id}, "other").run());
}

TEST_F(Postgres, WritesListsNameByName) {
  const struct {
    std::string setting, value, code, written;
  } cases[] = {
      {"search_path", "\"$user\", Mixed", "", "search_path = '\"$user\", \"Mixed\"'\n"},
      {"search_path", "$user, Mixed", "", "search_path = '\"$user\", \"Mixed\"'\n"},
      {"search_path", "", "7416", "search_path = '\"$user\", \"Mixed\"'\n"},
      {"search_path", "a,,b", "7417", "search_path = '\"$user\", \"Mixed\"'\n"},
      {"search_path", "a\", 'b", "", "search_path = '\"a\"\"\", \"''b\"'\n"},
      {"search_path", "\"\"", "", "search_path = '\"\"'\n"},
      {"search_path", "\"\"", "", "search_path = '\"\"'\n"},
      {"session_preload_libraries", "\"\"", "7417", "search_path = '\"\"'\n"},
      {"search_path", "$user, public", "", "search_path = '\"$user\", public'\n"},
      {"session_preload_libraries", "", "", "search_path = '\"$user\", public'\n"},
      {"session_preload_libraries", "auto_explain", "",
       "search_path = '\"$user\", public'\nsession_preload_libraries = 'auto_explain'\n"},
      {"auto_explain.log_format", "2", "",
       "search_path = '\"$user\", public'\nsession_preload_libraries = 'auto_explain'\n"
       "auto_explain.log_format = 'json'\n"},
      {"session_preload_libraries", "", "",
       "search_path = '\"$user\", public'\nauto_explain.log_format = 'json'\n"},
  };
  for (const auto& c : cases) {
    expectCode(c.code, server().set(c.setting, c.value));
    EXPECT_EQ(c.written, server().written()) << c.setting << c.value;
  }
  server().sql("ALTER SYSTEM SET shared_preload_libraries = pg_stat_statements");
  server().restart();
  EXPECT_EQ("300", server().id("pg_stat_statements.max"));
  EXPECT_EQ("pg_stat_statements", server().value("shared_preload_libraries"));
  EXPECT_EQ(0, server().set("shared_preload_libraries", "").status);
  server().restart();
  EXPECT_EQ("", server().value("shared_preload_libraries"));
}

TEST_F(Postgres, ChangesWhatItMayAndWhatHelps) {
  // Refused, nothing written: fixed, out of range, not a choice, and a role without rights.
  const struct {
    std::string setting, value, code;
  } refused[] = {
      {"data_directory", "/x", "7413"},    {"block_size", "8193", "7413"},
      {"server_version", "x", "7413"},     {"transaction_isolation", "0", "7413"},
      {"external_pid_file", "/x", "7413"}, {"work_mem", "63", "7202"},
      {"wal_level", "9", "7203"},          {"random_page_cost", "x", "7412"},
      {"DateStyle", "nonsense", "7412"},   {"default_text_search_config", "no such", "7412"}};
  for (const auto& c : refused) expectCode(c.code, server().set(c.setting, c.value));
  const std::string id = server().id("work_mem");
  expectCode("7414", server().knob({id, "5000", "-U", "plain"}).run());
  EXPECT_EQ(0, server().knob({id, "-U", "plain"}).run().status);
  EXPECT_EQ("", server().written());
  server().sql("GRANT EXECUTE ON FUNCTION pg_reload_conf() TO plain");
  expectCode("7409", server().knob({id, "5000", "-U", "plain"}).run());
  if (server().version() >= 15) {
    server().sql("GRANT ALTER SYSTEM ON PARAMETER work_mem TO plain");
    EXPECT_EQ(0, server().knob({id, "5000", "-U", "plain"}).run().status);
    EXPECT_EQ("5000", server().value("work_mem"));
  }
  server().sql("REVOKE EXECUTE ON FUNCTION pg_conf_load_time() FROM public");
  expectCode("7414", server().knob({id, "5500", "-U", "plain"}).run());
  server().sql("GRANT EXECUTE ON FUNCTION pg_conf_load_time() TO public");
  // An error in a file: the server would load nothing.
  const std::string sound = readFile(server().data("postgresql.conf"));
  writeFile(server().data("postgresql.conf"), sound + "no_such_setting = 1\n");
  expectCode("7415", server().set("work_mem", "6000"));
  writeFile(server().data("postgresql.conf"), sound);
  // A change that waits for a restart is no error, and is taken back by the running value.
  const std::string connections = server().id("max_connections");
  import(server(), entry(connections, "150") + entry(id, "7000"));
  EXPECT_EQ("7000", server().value("work_mem"));
  const std::string waits = "SELECT name FROM pg_settings WHERE pending_restart";
  EXPECT_EQ("max_connections", server().sql(waits));
  EXPECT_EQ(0, server().set("max_connections", "100").status);
  EXPECT_EQ("", server().sql(waits));
  import(server(), entry(connections, "150") + entry(connections, "100"));
  EXPECT_EQ("", server().sql(waits));
  // So is one that is stored and that the server has not read yet.
  server().reset();
  server().sql("ALTER SYSTEM SET work_mem = '8MB'");
  EXPECT_EQ(0, server().set("work_mem", "4096").status);
  EXPECT_EQ("work_mem = '4096'\n", server().written());
  // And one that the server cannot read, which is not the default.
  writeFile(server().data("postgresql.auto.conf"), "work_mem = 'zzz'\n");
  EXPECT_EQ(0, server().set("work_mem", "4096").status);
  EXPECT_EQ("work_mem = '4096'\n", server().written());
}

TEST_F(Postgres, ReportsAServerThatGoesAwayDuringAnImport) {
  const std::string first = server().id("work_mem");
  const std::string second = server().id("geqo");
  const Outcome run = importing([&](std::ostream& file) {
    file << entry(first, "5000") << std::flush;
    EXPECT_TRUE(comes([] { return server().written() == "work_mem = '5000'\n"; }));
    server().stop("immediate");
    file << entry(second, "off") << entry(first, "6000");
  });
  EXPECT_EQ(0, run.status);
  const std::size_t lost = run.err.find("7408: ");
  EXPECT_NE(std::string::npos, run.err.find("7426: ", lost + 1)) << run.err;
  server().start();
  EXPECT_EQ("5000", server().value("work_mem"));
}

TEST_F(Postgres, RefusesAChangeThatCouldNotTakeEffect) {
  struct Case {
    std::string options, line, setting, value, code;
  };
  const std::string ofPatroni =
      "-c cluster_name=c -c hot_standby=on -c max_locks_per_transaction=64 -c wal_level=replica "
      "-c max_prepared_transactions=0 -c track_commit_timestamp=off -c wal_log_hints=on";
  std::vector<Case> cases{
      {"-c wal_log_hints=on", "", "wal_log_hints", "off", "7420"},
      {"-c wal_log_hints=on", "", "wal_log_hints", "on", ""},
      {"-c work_mem=9MB", "work_mem = 7MB", "work_mem", "7168", "7420"},
      {"-c work_mem=9MB", "work_mem = 7MB", "work_mem", "9216", ""},
      {"-c temp_buffers=2000", "", "temp_buffers", "3000", "7420"},  // hidden by the role's own
      {"-c temp_buffers=2000", "", "temp_buffers", "2000", ""},
      {ofPatroni, "", "wal_log_hints", "off", "7421"},
      {ofPatroni, "", "cluster_name", "other", "7421"},
  };
  if (server().version() >= 17) {
    cases.push_back({"", "allow_alter_system = off", "work_mem", "5000", "7422"});
    cases.push_back({"", "allow_alter_system = off", "work_mem", "4096", ""});
  }
  server().sql("ALTER ROLE postgres SET temp_buffers = 500");
  for (const Case& c : cases) {
    SCOPED_TRACE(c.options + c.line + c.value);
    configure(c.line + "\n", c.options);
    expectCode(c.code, server().set(c.setting, c.value));
    EXPECT_EQ("", server().written());
    const std::string shown = server().knob({server().id(c.setting)}).run().out;
    EXPECT_EQ(!c.options.empty(), shown.find("command line") != std::string::npos) << shown;
  }
  configure("");
  // Nobody can tell what the command line gives a setting that the role's own hides.
  std::filesystem::remove(server().data("postmaster.opts"));
  expectCode("7424", server().set("temp_buffers", "3000"));
  const std::string shown = server().knob({server().id("temp_buffers")}).run().out;
  EXPECT_NE(std::string::npos, shown.find("cannot be told")) << shown;
  configure("");
  server().reset();
  const std::string file = server().data("postgresql.auto.conf");
  ASSERT_EQ(0, chmod(file.c_str(), 0400));
  expectCode("7423", server().set("work_mem", "5000"));
  ASSERT_EQ(0, chmod(file.c_str(), 0600));
  EXPECT_EQ("", server().written());
}

TEST_F(Postgres, LeavesNothingWaitingWhenAListIsSetBack) {
  configure("shared_preload_libraries = 'auto_explain,pg_stat_statements'\n");
  const std::string waits = "SELECT name FROM pg_settings WHERE pending_restart";
  EXPECT_EQ(0, server().set("shared_preload_libraries", "auto_explain").status);
  EXPECT_EQ("shared_preload_libraries", server().sql(waits));
  const std::string running = server().value("shared_preload_libraries");
  EXPECT_EQ("auto_explain, pg_stat_statements", running);
  EXPECT_EQ(0, server().set("shared_preload_libraries", running).status);
  EXPECT_EQ("", server().sql(waits));
  EXPECT_EQ("", server().written());
}

TEST_F(Postgres, HasTheFirstChangeInForceAndTheOthersAfterALostConnection) {
  const std::string changes[] = {entry(server().id("work_mem"), "5000"),
                                 entry(server().id("geqo"), "off")};
  const Outcome run = importing([&](std::ostream& file) {
    file << changes[0] << std::flush;
    EXPECT_TRUE(comes([] { return server().sql("SHOW work_mem") == "5000kB"; }));
    file << changes[1] << std::flush;
    EXPECT_TRUE(comes([] { return server().written().find("geqo") != std::string::npos; }));
    EXPECT_EQ("on", server().sql("SHOW geqo"));
    server().sql(
        "SELECT pg_terminate_backend(pid) FROM pg_stat_activity"
        " WHERE backend_type = 'client backend' AND pid <> pg_backend_pid()");
  });
  EXPECT_EQ(0, run.status) << run.err;
  EXPECT_EQ("off", server().sql("SHOW geqo"));
}

TEST_F(Postgres, SeesALoadWhateverNumbersTheRoleIsShown) {
  configure("");
  server().sql("ALTER ROLE postgres SET extra_float_digits = -5");
  for (std::string const value : {"5000", "6000", "7000"}) {
    EXPECT_EQ(0, server().set("work_mem", value).status);
  }
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

// A pgbouncer in front of the shared server, in transaction mode, which gives every statement to
// the next of its server processes.
class Pooler {
 public:
  Pooler() {
    writeFile(file("users"), "\"postgres\" \"\"\n");
    writeFile(file("pooler.ini"),
              "[databases]\n* = host=" + server.folder() + " port=" + server.port() +
                  "\n[pgbouncer]\nauth_type = trust\npool_mode = transaction\n"
                  "server_round_robin = 1\nlisten_addr =\nlisten_port = 6432\nunix_socket_dir = " +
                  server.folder() + "\nauth_file = " + file("users") +
                  "\npidfile = " + file("pooler.pid") + "\nlogfile = " + file("pooler.log") + "\n");
    const Outcome run = server.run({kPooler, "-d", "-q", file("pooler.ini")});
    EXPECT_EQ(0, run.status) << run.err;
    // As many server processes as there are sessions at one time.
    std::vector<std::thread> sessions;
    sessions.reserve(3);
    for (int i = 0; i < 3; ++i) {
      sessions.emplace_back([this] {
        EXPECT_EQ(0, server.run({"/usr/bin/psql", "-XAtqc", "SELECT pg_sleep(0.5)", uri()}).status);
      });
    }
    for (std::thread& session : sessions) session.join();
  }
  ~Pooler() { kill(std::stoi(readFile(file("pooler.pid"))), SIGKILL); }

  std::string uri() const {
    return "postgresql://postgres@/postgres?host=" + server.folder() + "&port=6432";
  }

 private:
  std::string file(const std::string& name) const { return server.folder() + "/" + name; }

  const Server& server = Server::shared();
};

TEST_F(Postgres, WaitsForTheServerBehindAPooler) {
  if (access(kPooler, X_OK) != 0) GTEST_SKIP() << "there is no " << kPooler << " (pgbouncer)";
  const Pooler pooler;
  const std::string id = server().id("work_mem");
  const int postmaster = std::stoi(readFile(server().data("postmaster.pid")));
  const auto set = [&](const std::string& value) {
    return knob(server().folder(), {id, value, "-S", pooler.uri()}).run();
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
    const Outcome shown = knob(server().folder(), {id, "-JSON", "-S", pooler.uri()}).run();
    EXPECT_EQ("5000", json::parse(shown.out)["value"]);
  }
  ASSERT_EQ(0, kill(postmaster, SIGSTOP));
  run = set("6000");
  ASSERT_EQ(0, kill(postmaster, SIGCONT));
  expectCode("7424", run);
  EXPECT_EQ("work_mem = '6000'\n", server().written());
}

TEST_F(Postgres, CarriesAConfigurationToAnotherServer) {
  // Every type and context, several to a line.
  std::string settings =
      R"(autovacuum=off|fsync=off|log_checkpoints=off|geqo=off|log_connections=on|
ignore_system_indexes=on|hot_standby=off|track_commit_timestamp=on|wal_log_hints=on|
work_mem=5000|max_connections=60|shared_buffers=2000|max_wal_senders=5|statement_timeout=99000|
log_file_mode=416|deadlock_timeout=2000|temp_file_limit=1000000|checkpoint_timeout=600|
wal_buffers=100|random_page_cost=1.25|autovacuum_vacuum_scale_factor=0.05|
cursor_tuple_fraction=0.5|vacuum_cost_delay=15|wal_level=2|synchronous_commit=1|archive_mode=1|
log_statement=2|huge_pages=0|IntervalStyle=3|cluster_name=a b|
log_line_prefix=%m 'x' \ %q|archive_command=test ! -f /a/%f && cp "%p" /a/%f|
search_path=$user, "a,b", Public|DateStyle=German, DMY|TimeZone=Europe/Berlin|
shared_preload_libraries=auto_explain, pg_stat_statements|log_destination=stderr,csvlog|
synchronous_standby_names=FIRST 1 ("x y", b)|post_auth_delay=0|)";
  if (server().version() >= 12)
    settings += "vacuum_cost_delay=1.5|jit=off|ssl_max_protocol_version=4|";
  std::istringstream changes(settings);
  for (std::string change; std::getline(changes, change, '|');) {
    if (change.starts_with('\n')) change.erase(0, 1);
    const std::size_t sign = change.find('=');
    EXPECT_EQ(0, server().set(change.substr(0, sign), change.substr(sign + 1)).status) << change;
  }
  server().restart();
  const std::string from = exportedText(server());
  Server other;
  import(other, from);
  other.restart();
  std::istringstream left(from), right(exportedText(other));
  std::set<std::string> differing;
  std::string name;
  for (std::string a, b; std::getline(left, a) && std::getline(right, b);) {
    if (a == b && !a.empty() && a[0] != '\t' && a[0] != '=') name = a;
    if (a != b && a.find("Settings exported to") == std::string::npos) differing.insert(name);
  }
  // Places of the server's own files, and what the command line gives.
  EXPECT_EQ((std::set<std::string>{"CONFIG_FILE", "DATA_DIRECTORY", "HBA_FILE", "IDENT_FILE",
                                   "PORT", "UNIX_SOCKET_DIRECTORIES"}),
            differing);
  server().reset();
  server().restart();
}

TEST_F(Postgres, FindsThePrimary) {
  const Server standby(&server());
  const auto hosts = [](const Server& one, const Server& two) {
    return "host=" + one.folder() + "," + two.folder() + "&port=" + one.port() + "," + two.port();
  };
  for (const std::string& order : {hosts(server(), standby), hosts(standby, server())}) {
    const std::string address =
        "postgresql://postgres@/postgres?" + order + "&target_session_attrs=read-write";
    const Outcome run =
        knob(server().folder(), {server().id("port"), "-JSON", "-S", address}).run();
    EXPECT_EQ(server().port(), json::parse(run.out)["value"]);
  }
  EXPECT_EQ("t", standby.sql("SELECT pg_is_in_recovery()"));
  EXPECT_EQ(0, standby.set("work_mem", "5000").status);
  EXPECT_EQ("5000", standby.value("work_mem"));
}

}  // namespace
