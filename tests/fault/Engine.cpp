#include "fault/Engine.h"

#include <sstream>
#include <unistd.h>

#include "support/Process.h"
#include "support/TempFolder.h"
#ifdef KNOB_POSTGRESQL
#include "postgresql/Server.h"
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
Values exportedValues(const std::string& home, const std::string& server) {
  const std::string file = home + "/values";
  Values values;
  if (knob(home, {"-O", file, "-F", "-S", server}).run().status != 0) return values;
  std::istringstream lines(readFile(file));
  std::string id;
  for (std::string line; std::getline(lines, line);) {
    if (line.starts_with("\tSetting ID: ")) id = line.substr(13);
    if (line.starts_with("\tCurrent Value:")) values[id] = line.substr(15);
  }
  fs::remove(file);
  return values;
}

Engine makeLocal(const std::string& home) {
  const std::string folder = home + "/store";
  const std::string store = folder + "/settings.db";
  const std::string server = "file:" + store;
  fs::create_directory(folder);
  knob(home, {"25", "7", "-S", server}).run();
  const std::string before = readFile(store);
  const auto state = [folder] {
    std::map<std::string, std::string> files;
    for (auto const& file : fs::directory_iterator(folder)) {
      files[file.path()] = readFile(file.path());
    }
    std::string all;
    for (auto const& [path, content] : files) all += path + "\n" + content;
    return all;
  };
  const auto reset = [folder, store, before] {
    for (auto const& file : fs::directory_iterator(folder)) {
      if (file.path() != store) fs::remove(file);
    }
    writeFile(store, before);
  };
  const auto values = [home, server] { return exportedValues(home, server); };
  return {server, kIds, "64", state, values, reset, {}, 0, 24};
}

// Of PostgreSQL, with integers for values: a session may set all but the first of them, so that a
// cluster does not have to try each.
const std::vector<std::string> kNames = {
    "checkpoint_timeout",
    "work_mem",
    "commit_siblings",
    "statement_timeout",
    "lock_timeout",
    "idle_in_transaction_session_timeout",
    "vacuum_cost_limit",
    "vacuum_cost_page_hit",
    "vacuum_cost_page_miss",
    "vacuum_cost_page_dirty",
    "effective_io_concurrency",
    "deadlock_timeout",
    "default_statistics_target",
    "from_collapse_limit",
    "join_collapse_limit",
    "geqo_threshold",
    "geqo_pool_size",
    "geqo_generations",
    "gin_pending_list_limit",
    "vacuum_freeze_min_age",
};

#ifdef KNOB_POSTGRESQL
Engine makePostgres(const std::string&) {
  const Server& server = Server::shared();
  server.reset();
  std::map<std::string, std::string> idOf;
  std::vector<std::string> ids;
  for (const std::string& name : kNames) ids.push_back(idOf[name] = server.id(name));
  const auto values = [idOf, &server] {
    Values all;
    for (auto const& [name, id] : idOf) all[id] = "";
    std::istringstream lines(server.written());
    for (std::string name, equals, value; lines >> name >> equals >> value;) {
      all[idOf.at(name)] = value;
    }
    return all;
  };
  const auto serverAt = [](int port) {
    return "postgresql://postgres@127.0.0.1:" + std::to_string(port) +
           "/postgres?connect_timeout=2&sslmode=disable&gssencmode=disable";
  };
  const int port = std::stoi(server.port());
  return {serverAt(port), ids,
          "99",           [&server] { return server.written(); },
          values,         [&server] { server.reset(); },
          serverAt,       port};
}
#endif

#ifdef KNOB_ETCD
constexpr char kPrefix[] = "/faults";

Engine makeEtcd(const std::string& home) {
  static Cluster cluster(1);
  const auto serverAt = [](int port) {
    return "etcd://127.0.0.1:" + std::to_string(port) + kPrefix;
  };
  const std::string server = serverAt(cluster.port(0));
  const auto reset = [home, server] {
    cluster.ctl({"del", "--prefix", kPrefix});
    knob(home, {kIds[0], "7", "-S", server}).run();
  };
  reset();
  return {server,
          kIds,
          "64",
          [] {
            return cluster.ctl({"get", "--prefix", kPrefix});
          },
          [home, server] { return exportedValues(home, server); },
          reset,
          serverAt,
          cluster.port(0)};
}
#endif

#ifdef KNOB_PATRONI
// The faults are on the way to the REST API: the servers' addresses come from there.
Engine makePatroni(const std::string&) {
  static const PatroniCluster cluster;
  const std::size_t leader = cluster.leader();
  const auto stored = [] {
    const auto configuration = cluster.configuration();
    return configuration["postgresql"].value("parameters", nlohmann::json::object());
  };
  const auto values = [stored] {
    const auto parameters = stored();
    Values all;
    for (const std::string& name : kNames) {
      all[PatroniCluster::id(name)] = parameters.contains(name) ? parameters[name].dump() : "";
    }
    return all;
  };
  // Members follow in their own time; the next run would still find what is taken back here.
  const auto reset = [leader] {
    cluster.configure(R"({"postgresql":{"parameters":null}})");
    std::string names;
    for (const std::string& name : kNames) names += ",'" + name + "'";
    const std::string followed =
        "SELECT count(*) = 0 FROM pg_settings WHERE setting = '99' AND name IN (''" + names + ")";
    while (cluster.sql(leader, followed) != "t") usleep(20'000);
  };
  const auto serverAt = [](int port) {
    return "patroni://postgres@127.0.0.1:" + std::to_string(port) + "/postgres?connect_timeout=2";
  };
  const std::string api = cluster.endpoint(leader);
  const int port = std::stoi(api.substr(api.rfind(':') + 1));
  std::vector<std::string> ids;
  for (const std::string& name : kNames) ids.push_back(PatroniCluster::id(name));
  reset();
  return {serverAt(port),
          ids,
          "99",
          [stored] { return stored().dump(); },
          values,
          reset,
          serverAt,
          port,
          2,
          {{"PATRONI_RESTAPI_USERNAME", "admin"}, {"PATRONI_RESTAPI_PASSWORD", "right"}}};
}
#endif

}  // namespace

const std::vector<EngineKind>& engineKinds() {
  static const std::vector<EngineKind> kinds = {
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
  return kinds;
}
