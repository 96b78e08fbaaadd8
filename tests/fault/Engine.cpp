#include <sstream>
#include <unistd.h>

#include "fault/Harness.h"

#ifdef KNOB_POSTGRESQL
#include "postgresql/Server.h"
#include "tuning/postgresql/KnownSettings.h"
#endif
#ifdef KNOB_ETCD
#include "etcd/Cluster.h"
#endif
#ifdef KNOB_PATRONI
#include "patroni/PatroniCluster.h"
#endif

namespace {

namespace fs = std::filesystem;

// Of the local engine's catalogue.
const std::vector<std::string> kIds = {"25", "7",  "8",  "9",   "10",  "13", "16",
                                       "28", "29", "30", "31",  "32",  "48", "49",
                                       "69", "64", "66", "179", "201", "72"};

// What an export says of all settings.
std::function<Texts()> exportedValues(const std::string& home, const std::string& server) {
  return [=] {
    Texts values;
    const std::string file = home + "/values";
    if (knob(home, {"-O", file, "-F", "-S", server}).run().status != 0) return values;
    std::istringstream lines(readFile(file));
    std::string id;
    for (std::string line; std::getline(lines, line);) {
      if (line.starts_with("\tSetting ID: ")) id = line.substr(13);
      if (line.starts_with("\tCurrent Value:")) values[id] = line.substr(15);
    }
    fs::remove(file);
    return values;
  };
}

Engine makeLocal(const std::string& home) {
  const std::string folder = home + "/store";
  const std::string server = "file:" + folder + "/settings.db";
  fs::create_directory(folder);
  knob(home, {"25", "7", "-S", server}).run();
  const auto state = [folder] { return filesIn(folder); };
  const auto reset = [folder, first = filesIn(folder)] { replaceFiles(folder, first); };
  return {server, kIds, "64", state, exportedValues(home, server), reset, 0, 15};
}

#ifdef KNOB_POSTGRESQL
// With integers for values: a session may set all but the first of them, so that a cluster does not
// have to try each.
constexpr const char* kNames[] = {
    "checkpoint_timeout",      "wal_skip_threshold",       "commit_siblings",
    "statement_timeout",       "gin_fuzzy_search_limit",   "backend_flush_after",
    "vacuum_cost_limit",       "vacuum_cost_page_hit",     "vacuum_cost_page_miss",
    "vacuum_cost_page_dirty",  "effective_io_concurrency", "deadlock_timeout",
    "vacuum_freeze_table_age", "from_collapse_limit",      "join_collapse_limit",
    "geqo_threshold",          "geqo_pool_size",           "geqo_generations",
    "gin_pending_list_limit",  "vacuum_freeze_min_age"};

// `state` tells the values of some of them by name.
Engine engineOfNames(const std::string& server, int port, const std::function<Texts()>& state,
                     const std::function<void()>& reset) {
  std::vector<std::string> ids;
  for (const char* const name : kNames) {
    ids.push_back(std::to_string(tn::postgresql::KnownSettings::find(name)->id));
  }
  const auto values = [state, ids] {
    Texts stored = state();
    Texts all;
    for (std::size_t i = 0; i < ids.size(); ++i) all[ids[i]] = stored[kNames[i]];
    return all;
  };
  reset();
  return {server, ids, "99", state, values, reset, port};
}

Engine makePostgres(const std::string&) {
  const Server& server = Server::shared();
  const auto state = [&server] {
    Texts all;
    std::istringstream lines(server.written());
    for (std::string name, equals; lines >> name >> equals;) lines >> all[name];
    return all;
  };
  return engineOfNames("postgresql://postgres@127.0.0.1:" + server.port() +
                           "/postgres?connect_timeout=2&sslmode=disable&gssencmode=disable",
                       std::stoi(server.port()), state, [&server] { server.reset(); });
}
#endif

#ifdef KNOB_ETCD
Engine makeEtcd(const std::string& home) {
  static Cluster cluster(1);
  const std::string server = cluster.address("/faults");
  const auto state = [] { return Texts{{"", cluster.ctl({"get", "--prefix", "/faults"})}}; };
  const auto reset = [home, server] {
    cluster.ctl({"del", "--prefix", "/faults"});
    knob(home, {kIds[0], "7", "-S", server}).run();
  };
  reset();
  return {server, kIds, "64", state, exportedValues(home, server), reset, cluster.port(0)};
}
#endif

#ifdef KNOB_PATRONI
// The faults are on the way to the REST API: the servers' addresses come from there.
Engine makePatroni(const std::string&) {
  static const PatroniCluster cluster;
  const std::size_t leader = cluster.leader();
  const auto state = [] {
    Texts all;
    auto configuration = cluster.configuration();
    const auto& parameters = configuration["postgresql"]["parameters"];
    for (const auto& [name, value] : parameters.items()) all[name] = value.dump();
    return all;
  };
  // Members follow in their own time; the next run would still find what is taken back here.
  const auto reset = [leader] {
    cluster.configure(R"({"postgresql":{"parameters":null}})");
    const std::string notYet = "SELECT count(*) FROM pg_settings WHERE setting = '99'";
    while (cluster.sql(leader, notYet) != "0") usleep(20'000);
  };
  const int port = cluster.port(leader);
  const std::string server = "patroni://postgres@" + local(port) + "/postgres?connect_timeout=2";
  Engine engine = engineOfNames(server, port, state, reset);
  engine.calls = 2;
  engine.environment = {{"PATRONI_RESTAPI_USERNAME", "admin"},
                        {"PATRONI_RESTAPI_PASSWORD", "right"}};
  return engine;
}
#endif

}  // namespace

const std::vector<EngineKind> kEngineKinds = {
    {"local", [] { return ""; }, makeLocal},
#ifdef KNOB_POSTGRESQL
    {"postgresql", Server::obstacle, makePostgres},
#endif
#ifdef KNOB_ETCD
    {"etcd", Cluster::obstacle, makeEtcd},
#endif
#ifdef KNOB_PATRONI
    {"patroni", PatroniCluster::obstacle, makePatroni},
#endif
};

Texts filesIn(const std::string& folder) {
  Texts files;
  for (const auto& file : fs::recursive_directory_iterator(folder)) {
    if (file.is_regular_file()) files[file.path()] = readFile(file.path());
  }
  return files;
}

void replaceFiles(const std::string& folder, const Texts& by) {
  for (const auto& file : fs::directory_iterator(folder)) fs::remove(file);
  for (const auto& [path, content] : by) writeFile(path, content);
}
