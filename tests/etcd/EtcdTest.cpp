// Settings in etcd: on running servers, through proxies that lose answers, and on doubles that
// answer as etcd does when it cannot be made to.
#include <csignal>
#include <gtest/gtest.h>
#include <thread>
#include <tuple>

#include "etcd/Cluster.h"
#include "support/Process.h"
#include "support/StatusOf.h"
#include "tuning/etcd/Base64.h"
#include "tuning/etcd/EtcdStore.h"

namespace {

using namespace std::chrono_literals;
using namespace tn::etcd;
using tn::http::Json;
using Values = std::map<int32_t, std::string>;
using Words = std::vector<std::string>;

std::string json(int status, int code, const std::string& text) {
  return httpAnswer(status, "{\"error\":\"" + text + "\",\"code\":" + std::to_string(code) + "}");
}

EtcdStore storeAt(const std::string& name, const std::string& user = "") {
  return EtcdStore(Address::parse("etcd://" + name, user, user));
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
  // What etcd tells of setting 25, but for its value.
  Json state() const {
    const std::string told = cluster().ctl({"get", prefix_ + "/settings/25", "-w", "json"});
    return tn::http::parseJson(told)["kvs"][0];
  }
  int set(const std::string& value) const {
    return knob("/", {"25", value, "-S", cluster().address(prefix_)}).run().status;
  }

  std::string prefix_{};
};

TEST_F(Etcd, KeepsEveryByteUnderItsDocumentedKey) {
  EtcdStore writing = store();
  writing.readAll();  // nothing yet
  EXPECT_EQ(0, set("7"));
  EXPECT_EQ(prefix_ + "/format\nknob-registry 1\n" + prefix_ + "/settings/25\n7\n",
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
    threads.emplace_back([&, i] {
      EXPECT_EQ(0, set(std::to_string(100 + i)));
      store().write(100 + i, "7");
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(20, state()["version"]);
  EXPECT_EQ(21U, store().readAll().size());
}

TEST_F(Etcd, LosesNoChangeWhenServersAreKilled) {
  EtcdStore writing = store();
  Values expected;
  for (const std::size_t node : {0U, 1U, 2U}) {
    std::thread killer;
    for (int i = 0; i < 80; ++i) {
      if (i == 40) killer = std::thread([node] { cluster().end(node); });
      std::string& value = expected[i % 20] = std::to_string(node) + std::to_string(i);
      EXPECT_EQ(TN_SUCCESS, statusOf([&] { writing.write(i % 20, value); })) << value;
    }
    killer.join();
    cluster().start(node);
    cluster().await();
  }
  EXPECT_EQ(expected, store().readAll());
}

TEST_F(Etcd, SaysSoWithoutAQuorumAndWorksAgainLater) {
  EXPECT_EQ(0, set("7"));
  cluster().signal(1, SIGSTOP);
  EXPECT_EQ(0, set("8"));
  cluster().signal(1, SIGCONT);
  EtcdStore connected = store();
  connected.readAll();
  for (const std::size_t node : {1U, 2U}) cluster().end(node);
  // The rest of an import, which reads before each change, fails at once, setting by setting.
  const auto begin = std::chrono::steady_clock::now();
  for (int i = 0; i < 30; ++i) {
    EXPECT_EQ(TN_ETCD_NO_QUORUM, statusOf([&] { connected.readAll(), connected.write(25, "9"); }));
  }
  EXPECT_GT(25s, std::chrono::steady_clock::now() - begin);
  for (const std::size_t node : {1U, 2U}) cluster().start(node);
  cluster().await();
  EXPECT_EQ("8", store().readAll()[25]);
  EXPECT_EQ(0, set("9"));
}

// What a server behind a proxy answers.
Reply forwarded(int port, const std::string& request) {
  using namespace tn::http;
  const std::string path = request.substr(5, request.find(" HTTP") - 5);  // after "POST "
  const std::string body = request.substr(request.find("\r\n\r\n") + 4);
  Client client({"http://" + local(port)});
  const Answer answer = client.send({Method::post, path, body}, Clock::now() + 10s);
  return {httpAnswer(answer.status, answer.body)};
}

TEST_F(Etcd, NeverWritesOverWhatCameAfterALostAnswer) {
  const Reply nothing{"", true};
  const struct {
    bool existing;  // the setting, before
    bool stored;    // by the time of the answer; otherwise it comes to the server at the very end
    Reply reply;
    Words meanwhile;  // values of another machine
    std::string value;
    TnStatus status = TN_SUCCESS;  // TN_ETCD_OUTCOME_UNKNOWN: the history is compacted
  } cases[] = {
      {true, false, nothing, {}, "5"},
      {true, false, nothing, {"77"}, "5"},
      {false, false, nothing, {"77"}, "5"},
      {true, false, {json(503, 14, "etcdserver: no leader")}, {"77"}, "5"},
      {false, true, nothing, {}, "5"},
      {false, true, nothing, {"77"}, "77"},
      {true, true, nothing, {"77", "78"}, "78"},
      {true, true, {json(500, 2, "unknown")}, {"77"}, "77"},
      {true, true, {json(503, 14, "etcdserver: leader changed")}, {"77"}, "77"},
      {true, true, {json(503, 14, "etcdserver: request timed out")}, {"77"}, "77"},
      {true, true, nothing, {"77"}, "77", TN_ETCD_OUTCOME_UNKNOWN},
  };
  const int port = cluster().port(0);
  for (const auto& c : cases) {
    SCOPED_TRACE(prefix_ += "x");
    store().write(c.existing ? 25 : 1, "1");
    std::string lost;
    const HttpDouble proxy([&](const std::string& request) {
      if (!lost.empty() || request.find("request_put") == request.npos) {
        return forwarded(port, request);
      }
      lost = request;
      if (c.stored) forwarded(port, request);
      for (const std::string& value : c.meanwhile) store().write(25, value);
      if (c.status != TN_SUCCESS) cluster().ctl({"compact", state()["mod_revision"].dump()});
      return c.reply;
    });
    EtcdStore writing = storeAt(proxy.address() + prefix_);
    writing.readAll();
    EXPECT_EQ(c.status, statusOf([&] { writing.write(25, "5"); }));
    EXPECT_EQ(c.value, store().readAll()[25]);
    store().write(25, "99");
    if (!c.stored) forwarded(port, lost);
    EXPECT_EQ("99", store().readAll()[25]);
  }
}

TEST_F(Etcd, GuardsSettingsWithLoginsAndCertificates) {
  const Cluster secure(1, true);
  secure.ctl({"user", "add", "root:right"});
  secure.ctl({"user", "add", "alice:right"});
  secure.ctl({"user", "grant-role", "root", "root"});
  secure.ctl({"auth", "enable"});
  // The registry's catalogue names the cluster.
  std::string catalogue = readFile(KNOB_SOURCE_DIR "/examples/orders.toml");
  catalogue.replace(catalogue.find("orders.db"), 9, secure.address("/registry"));
  writeFile(secure.file("orders.toml"), catalogue);
  const Words registry = {"1001", "33", "-S", "registry:" + secure.file("orders.toml")};
  const Words plain = {"25", "8", "-S", secure.address("/guarded")};
  const std::string authority = secure.file("n0/fixtures/client/cert.pem");
  const std::tuple<Words, std::string, Words, std::string> cases[] = {
      {registry, authority, {"-U", "root", "-P", "right"}, ""},
      {plain, authority, {"-U", "root", "-P", "right"}, ""},
      {registry, authority, {"-U", "root", "-P", "wrong"}, "7603: "},
      {plain, authority, {}, "7604: "},
      {plain, authority, {"-U", "alice", "-P", "right"}, "7606: "},
      {registry, "/etc/ssl/certs/ca-certificates.crt", {"-U", "root", "-P", "right"}, "7602: "},
  };
  for (const auto& [change, trusted, login, code] : cases) {
    Process process = knob("/", change);
    process.arguments.insert(process.arguments.end(), login.begin(), login.end());
    process.environment["ETCDCTL_CACERT"] = trusted;
    const Outcome run = process.run();
    EXPECT_EQ(code.empty(), run.status == 0) << code << run.err;
    EXPECT_NE(std::string::npos, run.err.find(code)) << code << run.err;
  }
}

// What etcd tells of a registry with one setting, of which 25 has a value that is no base64.
std::string contents(const std::string& format, const std::string& id) {
  Json formats = Json::object();
  if (!format.empty()) formats["kvs"] = {{{"value", toBase64(format)}}};
  const Json settings = {
      {{"key", toBase64("/p/settings/" + id)}, {"value", id == "25" ? "*" : "Nw=="}}};
  const Json ranges = {{{"response_range", formats}}, {{"response_range", {{"kvs", settings}}}}};
  return httpAnswer(200, Json{{"responses", ranges}}.dump());
}

TEST(EtcdAnswers, AreToldApart) {
  const std::pair<std::string, TnStatus> cases[] = {
      {json(400, 3, "etcdserver: request is too large"), TN_ETCD_REQUEST_TOO_LARGE},
      {httpAnswer(400, "CommonName of client sending a request"), TN_ETCD_CERTIFICATE_NAME},
      {json(429, 8, "etcdserver: mvcc: database space exceeded"), TN_ETCD_FULL},
      {httpAnswer(404, "Not Found"), TN_ETCD_NO_GATEWAY},
      {httpAnswer(302, "", "Location: /\r\n"), TN_ETCD_NO_GATEWAY},
      {httpAnswer(200, "<html>"), TN_ETCD_NO_GATEWAY},
      {"HTTP/1.1 200 OK\r\n\r\n" + std::string(5 << 20, 'x'), TN_ETCD_ANSWER_TOO_LARGE},
      {httpAnswer(200, R"({"responses":[{},{}]})"), TN_ETCD_NO_GATEWAY},
      {contents("something else", "7"), TN_REGISTRY_FOREIGN},
      {contents("knob-registry 2", "7"), TN_REGISTRY_NEWER},
      {contents("", "7"), TN_REGISTRY_DAMAGED},
      {contents("knob-registry 1", "x"), TN_REGISTRY_DAMAGED},
      {contents("knob-registry 1", "25"), TN_REGISTRY_DAMAGED},
      {contents("knob-registry 1", "7"), TN_SUCCESS},
  };
  for (const auto& [answer, status] : cases) {
    const HttpDouble server(Reply{answer});
    EtcdStore store = storeAt(server.address() + "/p");
    EXPECT_EQ(status, statusOf([&] { store.readAll(); })) << answer.substr(0, 200);
    // Only a registry is changed. A server that refuses every change is asked now and then.
    const TnStatus change = status == TN_SUCCESS ? TnStatus{TN_ETCD_ERROR} : status;
    EXPECT_EQ(change, statusOf([&] { store.write(1, "x"); }));
    EXPECT_GT(status == TN_SUCCESS ? 300 : 3, server.requests());
  }
}

TEST(EtcdAnswers, ThatALoginHasExpiredLeadToAnotherOne) {
  int logins = 0, usable = 2;
  const HttpDouble server([&](const std::string& request) -> Reply {
    if (request.find("/authenticate") != request.npos) {
      return {httpAnswer(200, "{\"token\":\"t" + std::to_string(++logins) + "\"}")};
    }
    const bool good = request.find("Authorization: t" + std::to_string(usable)) != request.npos;
    return {good ? contents("knob-registry 1", "7")
                 : json(401, 16, "etcdserver: invalid auth token")};
  });
  EtcdStore store = storeAt(server.address() + "/p", "u");
  EXPECT_EQ(TN_SUCCESS, statusOf([&] { store.readAll(); }));
  EXPECT_EQ(2, logins);
  usable = 9;
  EXPECT_EQ(TN_ETCD_LOGIN_REFUSED, statusOf([&] { store.readAll(); }));
}

TEST(EtcdAddress, IsReadAsAdministratorsWriteIt) {
  // The name, the user beside it, etcdctl's user and password, and what is understood.
  const std::string cases[][5] = {
      {"etcds://a:1,[::1]/p/q/", "", "", "", "https://[::1]:2379 /p/q  "},
      {"etcd://u@a/p", "", "u:q", "", "http://a:2379 /p u q"},
      {"etcd://u@a/p", "", "v:q", "", "http://a:2379 /p u "},
      {"etcd://u:p@a/p", "w", "", "", "http://a:2379 /p w "},
      {"etcd://u%40v:a%2Fb@a/p%20%2Fq", "", "", "", "http://a:2379 /p /q u@v a/b"},
  };
  for (const auto& [name, user, userVariable, passwordVariable, understood] : cases) {
    setenv("ETCDCTL_USER", userVariable.c_str(), 1);
    setenv("ETCDCTL_PASSWORD", passwordVariable.c_str(), 1);
    const Address address = Address::parse(name, user, "");
    EXPECT_EQ(understood, address.endpoints.back() + " " + address.prefix + " " + address.user +
                              " " + address.password);
  }
  for (const std::string wrong :
       {"a/", "a/p%2f%2Fq", "a/p%2", "a:0/p", "u:p/w@a/p", "a/p/settings"}) {
    EXPECT_EQ(TN_ETCD_ADDRESS_INVALID, statusOf([&] { storeAt(wrong); })) << wrong;
  }
}

}  // namespace
