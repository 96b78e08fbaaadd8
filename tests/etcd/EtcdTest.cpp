// Settings in etcd: on running servers, through proxies that lose answers, and on doubles that
// answer as etcd does when it cannot be made to.
#include <atomic>
#include <functional>
#include <gtest/gtest.h>
#include <sstream>
#include <sys/socket.h>
#include <thread>
#include <unistd.h>

#include "etcd/Cluster.h"
#include "http/HttpDouble.h"
#include "support/StatusOf.h"
#include "tuning/etcd/EtcdStore.h"

namespace {

using tn::etcd::Address;
using tn::etcd::EtcdStore;
using Values = std::map<int32_t, std::string>;

std::string json(int status, int code, const std::string& text) {
  return httpAnswer(status, "{\"error\":\"" + text + "\",\"code\":" + std::to_string(code) + "}");
}

class Etcd : public testing::Test {
 protected:
  void SetUp() override {
    const std::string obstacle = Cluster::obstacle();
    if (!obstacle.empty()) GTEST_SKIP() << obstacle;
    cluster();  // its servers end with the thread that starts them
    prefix_ = std::string("/") + testing::UnitTest::GetInstance()->current_test_info()->name();
  }
  static Cluster& cluster() { return Cluster::shared(); }
  EtcdStore store() const { return EtcdStore(Address::parse(cluster().address(prefix_), "", "")); }
  std::string key(int id) const { return prefix_ + "/settings/" + std::to_string(id); }
  void put(int id, const std::string& value) const { cluster().ctl({"put", key(id), value}); }
  Outcome knob(std::vector<std::string> arguments) const {
    return cluster().knob(prefix_, std::move(arguments)).run();
  }

  std::string prefix_{};
};

TEST_F(Etcd, TakesTheSettingsOfTheLocalEngineAndGivesThemBack) {
  const TempFolder folder;
  std::filesystem::create_directories(folder / "a");
  std::filesystem::create_directories(folder / "b");
  const std::vector<std::vector<std::string>> changes = {
      {"3", "no"},  {"25", "7"},      {"300", "\"a\\ 'b' \xc3\xa9 \xff{}%"},
      {"203", "1"}, {"78", "5", "0"}, {"74", ""}};
  const auto run = [&](const std::string& server, std::vector<std::string> words,
                       const std::string& at) {
    words.insert(words.end(), {"-S", server});
    Process process = ::knob(folder.path(), words);
    process.folder = folder / at;
    const Outcome outcome = process.run();
    EXPECT_EQ(0, outcome.status) << outcome.err;
    return outcome.out;
  };
  const std::string file = "file:" + folder / "settings.db";
  const std::string etcd = cluster().address(prefix_);
  for (const auto& change : changes) run(file, change, "a");
  run(file, {"-O", "out.txt"}, "a");
  run(etcd, {"-I", folder / "a/out.txt"}, "b");
  run(etcd, {"-O", "out.txt"}, "b");
  EXPECT_EQ(readFile(folder / "a/out.txt"), readFile(folder / "b/out.txt"));
  EXPECT_EQ(run(file, {"-H", "limit"}, "a"), run(etcd, {"-H", "limit"}, "b"));
  EXPECT_NE(std::string::npos, run(etcd, {"25", "-JSON"}, "b").find("\"value\": \"7\""));
  EXPECT_EQ("knob-registry 1\n", cluster().ctl({"get", "--print-value-only", prefix_ + "/format"}));
}

TEST_F(Etcd, KeepsEveryByte) {
  std::string all;
  for (int byte = 0; byte < 256; ++byte) all += static_cast<char>(byte);
  Values values;
  for (int32_t length = 0; length < 5; ++length) {
    values[length] =
        all.substr(253 - static_cast<std::size_t>(length), static_cast<std::size_t>(length));
  }
  values[-7] = all + all;
  EtcdStore writing = store();
  for (const auto& [id, value] : values) writing.write(id, value);
  EXPECT_EQ(values, store().readAll());
}

TEST_F(Etcd, LosesNoChangeOfManyProcesses) {
  std::vector<std::thread> threads;
  threads.reserve(20);
  for (int i = 0; i < 20; ++i) {
    threads.emplace_back([&, i] { EXPECT_EQ(0, knob({"25", std::to_string(100 + i)}).status); });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_NE(std::string::npos,
            cluster().ctl({"get", "-w", "json", key(25)}).find("\"version\":20,"));
}

TEST_F(Etcd, LosesNoChangeWhenServersAreKilled) {
  Values expected;
  std::atomic<int> round = 0;
  std::atomic<bool> over = false;
  std::thread writer([&] {
    EtcdStore writing = store();
    for (; round < 200 || !over; ++round) {
      const int32_t id = round % 20;
      const std::string value = std::to_string(round);
      EXPECT_EQ(TN_SUCCESS, statusOf([&] { writing.write(id, value); })) << round;
      expected[id] = value;
    }
  });
  for (std::size_t node = 0; node < 3; ++node) {
    for (const int before = round; round < before + 20;) std::this_thread::yield();
    cluster().end(node);
    for (const int before = round; round < before + 20;) std::this_thread::yield();
    cluster().start(node);
    cluster().await();
  }
  over = true;
  writer.join();
  EXPECT_EQ(expected, store().readAll());
}

TEST_F(Etcd, SaysSoWithoutAQuorumAndWorksAgainLater) {
  put(25, "7");
  cluster().ctl({"put", prefix_ + "/format", "knob-registry 1"});
  cluster().signal(1, SIGSTOP);
  EXPECT_EQ(0, knob({"25", "8"}).status);
  cluster().signal(1, SIGCONT);
  EtcdStore connected = store();
  connected.readAll();
  cluster().end(1);
  cluster().end(2);
  // The rest of an import, which reads before each change, fails at once, setting by setting.
  const auto begin = std::chrono::steady_clock::now();
  for (int i = 0; i < 30; ++i) {
    EXPECT_EQ(TN_ETCD_NO_QUORUM, statusOf([&] { connected.readAll(), connected.write(25, "9"); }));
  }
  EXPECT_GT(std::chrono::seconds(25), std::chrono::steady_clock::now() - begin);
  const Outcome import = knob({"-I", "/dev/null"});
  EXPECT_NE(std::string::npos, import.err.find("7607: ")) << import.err;
  for (const std::size_t node : {1U, 2U}) cluster().start(node);
  cluster().await();
  EXPECT_EQ("8", store().readAll()[25]);
  EXPECT_EQ(0, knob({"25", "9"}).status);
}

// What a server behind a proxy answers; the connection has to end with it.
std::string forwarded(int port, std::string request) {
  request.insert(request.find("\r\n"), "\r\nConnection: close");
  const int server = connectTo(port);
  send(server, request.data(), request.size(), MSG_NOSIGNAL);
  std::string answer;
  char buffer[4096];
  for (ssize_t size = 0; (size = recv(server, buffer, sizeof buffer, 0)) > 0;) {
    answer.append(buffer, static_cast<std::size_t>(size));
  }
  close(server);
  return answer;
}

TEST_F(Etcd, NeverWritesOverWhatCameAfterALostAnswer) {
  const Reply nothing{"", true};
  const Reply part{"HTTP/1.1 200 OK\r\nContent-Length: 99\r\n\r\n{", true};
  struct Case {
    bool stored;  // by the time of the answer; otherwise it comes to the server at the very end
    Reply reply;
    std::vector<std::string> meanwhile;  // values of another machine
    TnStatus status;
    std::string value;
    int changes;  // of the key; 0: not counted
  };
  const Case cases[] = {
      {false, nothing, {}, TN_SUCCESS, "5", 1},
      {false, nothing, {"77"}, TN_SUCCESS, "5", 2},
      {false, {json(503, 14, "etcdserver: no leader")}, {"77"}, TN_SUCCESS, "5", 2},
      {true, nothing, {}, TN_SUCCESS, "5", 1},
      {true, nothing, {"77"}, TN_SUCCESS, "77", 2},
      {true, nothing, {"77", "78"}, TN_SUCCESS, "78", 3},
      {true, part, {}, TN_SUCCESS, "5", 1},
      {true, part, {"77"}, TN_SUCCESS, "77", 2},
      {true, {json(500, 2, "unknown")}, {"77"}, TN_SUCCESS, "77", 2},
      {true, {json(504, 4, "deadline exceeded")}, {"77"}, TN_SUCCESS, "77", 2},
      {true, {json(503, 14, "etcdserver: request timed out")}, {"77"}, TN_SUCCESS, "77", 2},
      {true, nothing, {"77", "compact"}, TN_ETCD_OUTCOME_UNKNOWN, "77", 2},
      {true, nothing, {"remove", "77"}, TN_ETCD_OUTCOME_UNKNOWN, "77", 0},
  };
  const std::string path = prefix_;
  for (std::size_t i = 0; i < 2 * std::size(cases); ++i) {
    const Case& c = cases[i / 2];
    const bool existing = i % 2 == 1;
    if (!existing && c.changes == 0) continue;  // what never was cannot be seen to be removed
    SCOPED_TRACE(i);
    prefix_ = path + std::to_string(i);
    store().write(existing ? 25 : 1, "1");
    const auto change = [&](const std::string& value) {
      const std::string state = cluster().ctl({"get", key(25), "-w", "json"});
      if (value == "remove") {
        cluster().ctl({"del", key(25)});
      } else if (value == "compact") {
        const std::string revision = state.substr(state.find("\"mod_revision\":") + 15);
        cluster().ctl({"compact", std::to_string(std::stoi(revision))});
      } else {
        store().write(25, value);
      }
    };
    std::string withheld;
    bool first = true;
    const int port = cluster().port(0);
    const HttpDouble proxy([&](const std::string& request) {
      const bool lost = first && request.find("request_put") != std::string::npos;
      if (!lost) return Reply{forwarded(port, request), true};
      first = false;
      if (c.stored) forwarded(port, request);
      withheld = c.stored ? "" : request;
      for (std::string const& value : c.meanwhile) change(value);
      return c.reply;
    });
    EtcdStore writing(Address::parse("etcd://" + proxy.address() + prefix_, "", ""));
    writing.readAll();
    EXPECT_EQ(c.status, statusOf([&] { writing.write(25, "5"); }));
    if (!withheld.empty()) forwarded(port, withheld);
    EXPECT_EQ(c.value, store().readAll()[25]);
    const std::string state = cluster().ctl({"get", key(25), "-w", "json"});
    const std::string version = "\"version\":" + std::to_string(c.changes + existing) + ",";
    EXPECT_TRUE(c.changes == 0 || state.find(version) != std::string::npos) << state;
  }
}

TEST_F(Etcd, LeavesWhatIsNotItsOwnAsItIs) {
  const struct {
    std::string format, setting;
    TnStatus status;
  } cases[] = {
      {"something else", "", TN_REGISTRY_FOREIGN},
      {"knob-registry 2", "", TN_REGISTRY_NEWER},
      {"knob-registry x", "", TN_REGISTRY_FOREIGN},
      {"", "25", TN_REGISTRY_DAMAGED},
      {"knob-registry 1", "", TN_REGISTRY_DAMAGED},
      {"knob-registry 1", "x", TN_REGISTRY_DAMAGED},
      {"knob-registry 1", "025", TN_REGISTRY_DAMAGED},
      {"knob-registry 1", "99999999999", TN_REGISTRY_DAMAGED},
  };
  const std::string path = prefix_;
  for (const auto& c : cases) {
    SCOPED_TRACE(c.format + "/" + c.setting);
    prefix_ = path + std::to_string(&c - cases);
    EtcdStore early = store();
    early.readAll();  // nothing yet
    if (!c.format.empty()) cluster().ctl({"put", prefix_ + "/format", c.format});
    cluster().ctl({"put", prefix_ + "/settings/" + c.setting, "7"});
    const std::string found = cluster().ctl({"get", "--prefix", prefix_});
    EXPECT_EQ(c.status, statusOf([&] { store().readAll(); }));
    EXPECT_EQ(c.status, statusOf([&] { store().write(25, "8"); }));
    EXPECT_EQ(c.status, statusOf([&] { early.write(25, "8"); }));
    EXPECT_EQ(found, cluster().ctl({"get", "--prefix", prefix_}));
  }
}

TEST_F(Etcd, GuardsSettingsWithLoginsAndCertificates) {
  Cluster secure(1, true);
  secure.certificate("client", "/O=clients");
  secure.certificate("alice", "/CN=alice");
  secure.ctl({"user", "add", "root:right"});
  secure.ctl({"user", "grant-role", "root", "root"});
  secure.ctl({"user", "add", "alice:right"});
  secure.ctl({"auth", "enable"});
  // The registry's catalogue names the cluster.
  std::string catalogue = readFile(KNOB_SOURCE_DIR "/examples/orders.toml");
  catalogue.replace(catalogue.find("orders.db"), 9, secure.address("/registry"));
  writeFile(secure.file("orders.toml"), catalogue);
  const auto client = secure.clientFiles("client");
  auto foreign = client, none = client, named = client;
  foreign["ETCDCTL_CACERT"] = "/etc/ssl/certs/ca-certificates.crt";
  none.erase("ETCDCTL_CERT");
  named["ETCDCTL_USER"] = "root:right";
  const std::vector<std::string> root = {"-U", "root", "-P", "right"};
  const struct {
    std::map<std::string, std::string> environment;
    std::vector<std::string> login;
    std::string code;
  } cases[] = {
      {client, root, ""},
      {named, {}, ""},
      {named, {"-U", "alice"}, "7603"},
      {client, {"-U", "root", "-P", "wrong"}, "7603"},
      {client, {}, "7604"},
      {client, {"-U", "alice", "-P", "right"}, "7606"},
      {secure.clientFiles("alice"), root, "7605"},
      {foreign, root, "7602"},
      {none, root, "7602"},
  };
  for (const auto& c : cases) {
    for (const bool registry : {false, true}) {
      SCOPED_TRACE(testing::PrintToString(c.login) + c.code);
      Process process = registry
                            ? ::knob(secure.file(""),
                                     {"1001", "33", "-S", "registry:" + secure.file("orders.toml")})
                            : secure.knob("/guarded", {"25", "8"});
      process.arguments.insert(process.arguments.end(), c.login.begin(), c.login.end());
      process.environment.insert(c.environment.begin(), c.environment.end());
      const Outcome run = process.run();
      EXPECT_EQ(c.code.empty(), run.status == 0) << run.err;
      EXPECT_NE(std::string::npos, run.err.find(c.code)) << run.err;
    }
  }
}

constexpr char kNoKeys[] =
    R"({"responses":[{"response_range":{}},{"response_range":{}}],"succeeded":true})";

TEST(EtcdAnswers, AreToldApart) {
  const std::pair<std::string, TnStatus> cases[] = {
      {json(400, 3, "etcdserver: request is too large"), TN_ETCD_REQUEST_TOO_LARGE},
      {json(400, 3, "etcdserver: something new"), TN_ETCD_ERROR},
      {json(403, 7, "etcdserver: permission denied"), TN_ETCD_NOT_PERMITTED},
      {json(429, 8, "etcdserver: mvcc: database space exceeded"), TN_ETCD_FULL},
      {json(401, 16, "etcdserver: invalid auth token"), TN_ETCD_LOGIN_REFUSED},
      {httpAnswer(404, "Not Found"), TN_ETCD_NO_GATEWAY},
      {httpAnswer(302, "", "Location: /\r\n"), TN_ETCD_NO_GATEWAY},
      {httpAnswer(200, "<html>"), TN_ETCD_NO_GATEWAY},
      {httpAnswer(200, std::string(5 << 20, 'x')), TN_ETCD_ANSWER_TOO_LARGE},
      {httpAnswer(200, "{}"), TN_ETCD_NO_GATEWAY},
      {httpAnswer(200, R"({"responses":[{},{}]})"), TN_ETCD_NO_GATEWAY},
      {httpAnswer(200, std::string(1 << 20, '[') + std::string(1 << 20, ']')), TN_ETCD_NO_GATEWAY},
      {httpAnswer(200, R"({"responses":[{"response_range":{}},)"
                       R"({"response_range":{"kvs":[{"key":"*"}]}}]})"),
       TN_REGISTRY_DAMAGED},
      {httpAnswer(200, kNoKeys), TN_SUCCESS},
  };
  for (const auto& [answer, status] : cases) {
    const HttpDouble server([&, bytes = answer](const std::string&) { return Reply{bytes}; });
    EtcdStore store(Address::parse("etcd://" + server.address() + "/p", "", ""));
    EXPECT_EQ(status, statusOf([&] { store.readAll(); })) << answer.substr(0, 200);
  }
}

TEST(EtcdAnswers, ThatALoginHasExpiredLeadToAnotherOne) {
  int logins = 0;
  int usable = 2;
  const HttpDouble server([&](const std::string& request) {
    if (request.find("/authenticate") != std::string::npos) {
      return Reply{httpAnswer(200, "{\"token\":\"t" + std::to_string(++logins) + "\"}")};
    }
    const bool good =
        request.find("Authorization: t" + std::to_string(usable)) != std::string::npos;
    return Reply{good ? httpAnswer(200, kNoKeys) : json(401, 16, "etcdserver: invalid auth token")};
  });
  EtcdStore store(Address::parse("etcd://" + server.address() + "/p", "u", "p"));
  EXPECT_EQ(TN_SUCCESS, statusOf([&] { store.readAll(); }));
  EXPECT_EQ(2, logins);
  usable = 3;
  EXPECT_EQ(TN_SUCCESS, statusOf([&] { store.write(1, "x"); }));
  usable = 9;
  EXPECT_EQ(TN_ETCD_LOGIN_REFUSED, statusOf([&] { store.readAll(); }));
}

TEST(EtcdAnswers, ThatRefuseEveryChangeAreAskedNowAndThen) {
  const HttpDouble server([](const std::string&) {
    return Reply{httpAnswer(200, R"({"responses":[{"response_range":{}},{"response_range":{}}]})")};
  });
  EtcdStore store(Address::parse("etcd://" + server.address() + "/p", "", ""));
  EXPECT_EQ(TN_ETCD_ERROR, statusOf([&] { store.write(1, "x"); }));
  EXPECT_GT(300U, server.requests().size());
}

TEST(EtcdAddress, IsReadAsAdministratorsWriteIt) {
  const struct {
    std::string server, understood;  // endpoints, prefix, user and password
    std::string user{}, password{}, userVariable{}, passwordVariable{};
  } cases[] = {
      {"etcd://a/p", "http://a:2379 /p  "},
      {"etcd://a/settings", "http://a:2379 /settings  "},
      {"etcds://a:1,b,[::1],[::1]:7/p/q/",
       "https://a:1 https://b:2379 https://[::1]:2379 https://[::1]:7 /p/q  "},
      {"etcd://u%40v:a%2Fb@a/p%20%2Fq", "http://a:2379 /p /q u@v a/b"},
      {"etcd://u:p@a/p", "http://a:2379 /p w x", "w", "x"},
      {"etcd://u:p@a/p", "http://a:2379 /p w ", "w"},
      {"etcd://u@a/p", "http://a:2379 /p u q", "", "", "u:q"},
      {"etcd://u@a/p", "http://a:2379 /p u ", "", "", "v:q"},
      {"etcd://a/p", "http://a:2379 /p v q:r", "", "", "v:q:r"},
      {"etcd://a/p", "http://a:2379 /p v:q s", "", "", "v:q", "s"},
      {"etcd://u@a/p", "http://a:2379 /p u s", "", "", "v", "s"},
  };
  for (const auto& c : cases) {
    setenv("ETCDCTL_USER", c.userVariable.c_str(), 1);
    setenv("ETCDCTL_PASSWORD", c.passwordVariable.c_str(), 1);
    const Address address = Address::parse(c.server, c.user, c.password);
    std::string understood;
    for (const std::string& endpoint : address.endpoints) understood += endpoint + " ";
    understood += address.prefix + " " + address.user + " " + address.password;
    EXPECT_EQ(c.understood, understood) << c.server;
  }
  unsetenv("ETCDCTL_USER");
  unsetenv("ETCDCTL_PASSWORD");
  for (std::string const wrong :
       {"a",          "a/",        "/p",         "a//p",         "a/p//",
        "a/p%2f%2Fq", "a/p%2",     "a/p%zz",     "a/p?x=1",      "a,/p",
        "a,,b/p",     "u:p/w@a/p", "u:80/w@a/p", "a/p/settings", "a/p/settings/q",
        "a:0/p",      "a:65536/p", "a:x/p",      "[::1/p",       "a b/p",
        "a\r\n/p"}) {
    const auto parse = [&] { Address::parse("etcd://" + wrong, "", ""); };
    EXPECT_EQ(TN_ETCD_ADDRESS_INVALID, statusOf(parse)) << wrong;
  }
}

}  // namespace
