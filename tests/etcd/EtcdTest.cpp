// Settings in etcd: on running servers, through proxies that lose answers, and on doubles that
// answer as etcd does when it cannot be made to.
#include <csignal>
#include <gtest/gtest.h>
#include <thread>
#include <tuple>

#include "etcd/Cluster.h"
#include "http/HttpDouble.h"
#include "support/StatusOf.h"
#include "tuning/etcd/EtcdStore.h"

namespace {

using tn::etcd::Address;
using tn::etcd::EtcdStore;
using Values = std::map<int32_t, std::string>;
using Words = std::vector<std::string>;

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
  static Cluster& cluster() {
    static Cluster cluster(3);
    return cluster;
  }
  EtcdStore store() const { return EtcdStore(Address::parse(cluster().address(prefix_), "", "")); }
  std::string key(int id) const { return prefix_ + "/settings/" + std::to_string(id); }
  // What etcd tells of a setting, but for its value.
  tn::http::Json state(int id) const {
    return tn::http::parseJson(cluster().ctl({"get", key(id), "-w", "json"}))["kvs"][0];
  }
  Outcome knob(const Words& arguments) const {
    Process process = cluster().knob(prefix_, arguments);
    process.environment["http_proxy"] = "http://127.0.0.1:1";  // plays no part
    return process.run();
  }

  std::string prefix_{};
};

TEST_F(Etcd, KeepsEveryByteUnderItsDocumentedKey) {
  EtcdStore writing = store();
  writing.readAll();  // nothing yet
  EXPECT_EQ(0, knob({"25", "7"}).status);
  EXPECT_EQ(prefix_ + "/format\nknob-registry 1\n" + key(25) + "\n7\n",
            cluster().ctl({"get", "--prefix", prefix_}));
  std::string all;
  for (int byte = 0; byte < 256; ++byte) all += static_cast<char>(byte);
  Values values{{-7, all + all}, {25, "7"}};
  for (uint8_t i = 0; i < 5; ++i) values[i] = all.substr(253U - i, i);
  for (const auto& [id, value] : values) writing.write(id, value);
  EXPECT_EQ(values, store().readAll());
}

TEST_F(Etcd, LosesNoChangeOfManyProcesses) {
  std::vector<std::thread> threads;
  for (int i = 0; i < 20; ++i) {
    threads.emplace_back([&, i] { EXPECT_EQ(0, knob({"25", std::to_string(100 + i)}).status); });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(20, state(25)["version"]);
}

TEST_F(Etcd, LosesNoChangeWhenServersAreKilled) {
  EtcdStore writing = store();
  Values expected;
  std::jthread killer;
  for (int round = 0; round < 240; ++round) {
    const auto node = static_cast<std::size_t>(round / 80);
    if (round % 80 == 20) killer = std::jthread([node] { cluster().end(node); });
    if (round % 80 == 60) {
      killer.join();
      cluster().start(node);
      cluster().await();
    }
    std::string& value = expected[round % 20] = std::to_string(round);
    EXPECT_EQ(TN_SUCCESS, statusOf([&] { writing.write(round % 20, value); })) << round;
  }
  EXPECT_EQ(expected, store().readAll());
}

TEST_F(Etcd, SaysSoWithoutAQuorumAndWorksAgainLater) {
  EXPECT_EQ(0, knob({"25", "7"}).status);
  cluster().signal(1, SIGSTOP);
  EXPECT_EQ(0, knob({"25", "8"}).status);
  cluster().signal(1, SIGCONT);
  EtcdStore connected = store();
  connected.readAll();
  for (const std::size_t node : {1U, 2U}) cluster().end(node);
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

// What a server behind a proxy answers.
Reply forwarded(int port, const std::string& request) {
  using namespace tn::http;
  Client client({"http://" + local(port)});
  const std::string path = request.substr(5, request.find(" HTTP") - 5);  // after "POST "
  const std::string body = request.substr(request.find("\r\n\r\n") + 4);
  const Answer answer =
      client.send({Method::post, path, body}, Clock::now() + std::chrono::seconds(10));
  return {httpAnswer(static_cast<int>(answer.status), answer.body), true};
}

TEST_F(Etcd, NeverWritesOverWhatCameAfterALostAnswer) {
  const Reply nothing{"", true};
  const struct {
    bool stored;  // by the time of the answer; otherwise it comes to the server at the very end
    Reply reply;
    Words meanwhile;  // values of another machine; "": it removes the key
    std::string value;
    TnStatus status = TN_SUCCESS;
  } cases[] = {
      {false, nothing, {}, "5"},
      {false, nothing, {"77"}, "5"},
      {false, {json(503, 14, "etcdserver: no leader")}, {"77"}, "5"},
      {true, nothing, {}, "5"},
      {true, nothing, {"77"}, "77"},
      {true, nothing, {"77", "78"}, "78"},
      {true, {httpAnswer(200, "<html>")}, {"77"}, "77"},
      {true, {json(500, 2, "unknown")}, {"77"}, "77"},
      {true, {json(503, 14, "etcdserver: leader changed")}, {"77"}, "77"},
      {true, {json(503, 14, "etcdserver: request timed out")}, {"77"}, "77"},
      {true, nothing, {"77", "compact"}, "77", TN_ETCD_OUTCOME_UNKNOWN},
      {true, nothing, {"", "77"}, "77", TN_ETCD_OUTCOME_UNKNOWN},
      {true, nothing, {""}, "", TN_ETCD_OUTCOME_UNKNOWN},
  };
  const std::string path = prefix_;
  const int port = cluster().port(0);
  for (std::size_t i = 0; i < 2 * std::size(cases); ++i) {
    const auto& c = cases[i / 2];
    const bool existing = i % 2 == 1;
    const bool removed = !c.meanwhile.empty() && c.meanwhile.front().empty();
    if (!existing && removed) continue;  // what never was cannot be seen to be removed
    SCOPED_TRACE(i);
    prefix_ = path + std::to_string(i);
    store().write(existing ? 25 : 1, "1");
    std::string lost;
    const HttpDouble proxy([&](const std::string& request) {
      if (!lost.empty() || request.find("request_put") == std::string::npos) {
        return forwarded(port, request);
      }
      lost = request;
      if (c.stored) forwarded(port, request);
      for (const std::string& value : c.meanwhile) {
        if (value == "compact") {
          cluster().ctl({"compact", state(25)["mod_revision"].dump()});
        } else if (value.empty()) {
          cluster().ctl({"del", key(25)});
        } else {
          store().write(25, value);
        }
      }
      return c.reply;
    });
    const std::string twice = proxy.address() + "," + proxy.address();
    EtcdStore writing(Address::parse("etcd://" + twice + prefix_, "", ""));
    writing.readAll();
    EXPECT_EQ(c.status, statusOf([&] { writing.write(25, "5"); }));
    EXPECT_EQ(c.value, store().readAll()[25]);
    store().write(25, "99");
    if (!c.stored) forwarded(port, lost);
    EXPECT_EQ("99", store().readAll()[25]);
  }
}

TEST_F(Etcd, LeavesWhatIsNotItsOwnAsItIs) {
  const std::tuple<std::string, std::string, TnStatus> cases[] = {
      {"something else", "25", TN_REGISTRY_FOREIGN},
      {"knob-registry 2", "25", TN_REGISTRY_NEWER},
      {"knob-registry x", "25", TN_REGISTRY_FOREIGN},
      {"", "25", TN_REGISTRY_DAMAGED},
      {"knob-registry 1", "x", TN_REGISTRY_DAMAGED},
      {"knob-registry 1", "025", TN_REGISTRY_DAMAGED},
      {"knob-registry 1", "99999999999", TN_REGISTRY_DAMAGED},
  };
  const std::string path = prefix_;
  for (const auto& [format, setting, status] : cases) {
    SCOPED_TRACE(format + "/" + setting);
    prefix_ = path + format + setting;
    EtcdStore early = store();
    early.readAll();  // nothing yet
    if (!format.empty()) cluster().ctl({"put", prefix_ + "/format", format});
    cluster().ctl({"put", prefix_ + "/settings/" + setting, "7"});
    const std::string found = cluster().ctl({"get", "--prefix", prefix_});
    EXPECT_EQ(status, statusOf([&] { store().readAll(); }));
    EXPECT_EQ(status, statusOf([&] { store().write(25, "8"); }));
    EXPECT_EQ(status, statusOf([&] { early.write(25, "8"); }));
    EXPECT_EQ(found, cluster().ctl({"get", "--prefix", prefix_}));
  }
}

TEST_F(Etcd, GuardsSettingsWithLoginsAndCertificates) {
  Cluster secure(1, true);
  secure.ctl({"user", "add", "root:right"});
  secure.ctl({"user", "grant-role", "root", "root"});
  secure.ctl({"user", "add", "alice:right"});
  secure.ctl({"auth", "enable"});
  // The registry's catalogue names the cluster.
  std::string catalogue = readFile(KNOB_SOURCE_DIR "/examples/orders.toml");
  catalogue.replace(catalogue.find("orders.db"), 9, secure.address("/registry"));
  writeFile(secure.file("orders.toml"), catalogue);
  const auto client = secure.certificate("client", "/O=clients");
  auto foreign = client, none = client, named = client;
  foreign["ETCDCTL_CACERT"] = "/etc/ssl/certs/ca-certificates.crt";
  none.erase("ETCDCTL_CERT");
  named["ETCDCTL_USER"] = "root:right";
  const Words root = {"-U", "root", "-P", "right"};
  const std::tuple<Cluster::Variables, Words, std::string> cases[] = {
      {client, root, ""},
      {named, {}, ""},
      {named, {"-U", "alice"}, "7603: "},
      {client, {}, "7604: "},
      {client, {"-U", "alice", "-P", "right"}, "7606: "},
      {secure.certificate("alice", "/CN=alice"), root, "7605: "},
      {foreign, root, "7602: "},
      {none, root, "7602: "},
  };
  for (const auto& [variables, login, code] : cases) {
    for (const Words& change : {Words{"1001", "33", "-S", "registry:" + secure.file("orders.toml")},
                                Words{"25", "8", "-S", secure.address("/guarded")}}) {
      SCOPED_TRACE(testing::PrintToString(login) + code);
      Process process = ::knob(secure.file(""), change);
      process.arguments.insert(process.arguments.end(), login.begin(), login.end());
      process.environment.insert(variables.begin(), variables.end());
      const Outcome run = process.run();
      EXPECT_EQ(code.empty(), run.status == 0) << run.err;
      EXPECT_NE(std::string::npos, run.err.find(code)) << run.err;
    }
  }
}

constexpr char kNoKeys[] =
    R"({"responses":[{"response_range":{}},{"response_range":{}}],"succeeded":true})";

TEST(EtcdAnswers, AreToldApart) {
  const std::pair<std::string, TnStatus> cases[] = {
      {json(400, 3, "etcdserver: request is too large"), TN_ETCD_REQUEST_TOO_LARGE},
      {json(400, 3, "etcdserver: something new"), TN_ETCD_ERROR},
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
    const HttpDouble server(Reply{answer});
    EtcdStore store(Address::parse("etcd://" + server.address() + "/p", "", ""));
    EXPECT_EQ(status, statusOf([&] { store.readAll(); })) << answer.substr(0, 200);
  }
}

TEST(EtcdAnswers, ThatALoginHasExpiredLeadToAnotherOne) {
  int logins = 0, usable = 2;
  const HttpDouble server([&](const std::string& request) -> Reply {
    if (request.find("/authenticate") != request.npos) {
      return {httpAnswer(200, "{\"token\":\"t" + std::to_string(++logins) + "\"}")};
    }
    const bool good = request.find("Authorization: t" + std::to_string(usable)) != request.npos;
    return {good ? httpAnswer(200, kNoKeys) : json(401, 16, "etcdserver: invalid auth token")};
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
  const HttpDouble server(
      Reply{httpAnswer(200, R"({"responses":[{"response_range":{}},{"response_range":{}}]})")});
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
  for (const char* const name : {"ETCDCTL_USER", "ETCDCTL_PASSWORD"}) unsetenv(name);
  for (const std::string wrong :
       {"a", "a/", "/p", "a//p", "a/p%2f%2Fq", "a/p%2", "a/p%zz", "a/p?x=1", "a,,b/p", "a:0/p",
        "u:p/w@a/p", "a/p/settings", "a/p/settings/q", "a:65536/p", "a:x/p", "[::1/p", "a b/p"}) {
    const auto parse = [&] { Address::parse("etcd://" + wrong, "", ""); };
    EXPECT_EQ(TN_ETCD_ADDRESS_INVALID, statusOf(parse)) << wrong;
  }
}

}  // namespace
