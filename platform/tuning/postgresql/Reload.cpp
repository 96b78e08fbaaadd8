#include "tuning/postgresql/Reload.h"

#include <algorithm>
#include <chrono>
#include <string>
#include <thread>

namespace tn::postgresql {
namespace {

using Clock = std::chrono::steady_clock;

constexpr std::chrono::seconds kPatience{5};
constexpr std::chrono::microseconds kFirstPause{200};
constexpr std::chrono::microseconds kLongestPause{50000};

// Everything is named with its schema: a role's search_path could put something else before it.
// Moments are compared as whole microseconds: as text they depend on DateStyle and TimeZone, and
// how many digits of a fraction are sent on extra_float_digits.
constexpr char kLoadTime[] =
    "pg_catalog.int8(pg_catalog.float8mul(1000000,"
    " pg_catalog.date_part('epoch', pg_catalog.pg_conf_load_time())))";
constexpr char kNow[] =
    "pg_catalog.int8(pg_catalog.float8mul(1000000,"
    " pg_catalog.date_part('epoch', pg_catalog.clock_timestamp())))";

enum Request : int { kProcess, kLoadedBefore, kAskedAt };

std::string request() {
  return std::string("SELECT pg_catalog.pg_backend_pid(), ") + kLoadTime + ", " + kNow +
         ", pg_catalog.pg_reload_conf()";
}

// A setting of every server: the answer has a row once the configuration is loaded.
constexpr std::string_view kAlwaysThere = "server_version";

std::string quoted(std::string_view text) { return "'" + std::string(text) + "'"; }

// Whether the process that answers has loaded the configuration since it was asked for. The
// condition names no row, so the server looks at the settings only when it holds.
std::string isLoaded(const Result& asked) {
  const std::string later =
      std::string("pg_catalog.int8gt(") + kLoadTime + ", " + quoted(asked.text(0, kAskedAt)) + ")";
  const std::string sameProcess = "pg_catalog.int4eq(pg_catalog.pg_backend_pid(), " +
                                  std::string(asked.text(0, kProcess)) + ")";
  const std::string again = std::string("pg_catalog.int8ne(") + kLoadTime + ", " +
                            quoted(asked.text(0, kLoadedBefore)) + ")";
  return "(" + later + " OR (" + sameProcess + " AND " + again + "))";
}

std::string arrayOf(Connection& connection, const Reload::Names& names) {
  std::string list = quoted(kAlwaysThere);
  for (const std::string_view name : names) list += ", " + connection.literal(std::string(name));
  return "(ARRAY[" + list + "]::pg_catalog.text[])";
}

std::string questionForValues(const std::string& array) {
  return "SELECT name, pg_catalog.current_setting(name) FROM pg_catalog.unnest" + array +
         " AS name WHERE ";
}

std::string questionForRows(const std::string& array) {
  return "SELECT name, reset_val, source, pending_restart FROM pg_catalog.pg_settings"
         " WHERE name OPERATOR(pg_catalog.=) ANY " +
         array + " AND ";
}

std::optional<Result> askOnceLoaded(Connection& connection, const std::string& question) {
  const auto deadline = Clock::now() + kPatience;
  const auto asked = connection.queryUntil(request(), deadline);
  if (!asked) return std::nullopt;
  const std::string whenLoaded = question + isLoaded(*asked);
  auto pause = kFirstPause;
  while (Clock::now() < deadline) {
    auto rows = connection.queryUntil(whenLoaded, deadline);
    if (!rows || rows->rows() > 0) return rows;
    std::this_thread::sleep_for(pause);
    pause = std::min(pause * 2, kLongestPause);
  }
  return std::nullopt;
}

}  // namespace

std::optional<Result> Reload::values(Connection& connection, const Names& names) {
  return askOnceLoaded(connection, questionForValues(arrayOf(connection, names)));
}

std::optional<Result> Reload::rows(Connection& connection, const Names& names) {
  return askOnceLoaded(connection, questionForRows(arrayOf(connection, names)));
}

Result Reload::rowsNow(Connection& connection, const Names& names) {
  return connection.query(questionForRows(arrayOf(connection, names)) + "true");
}

}  // namespace tn::postgresql
