#include "tuning/etcd/EtcdStore.h"

#include <algorithm>
#include <charconv>
#include <string_view>
#include <thread>
#include <utility>

#include "tuning/TuningError.h"
#include "tuning/etcd/Base64.h"

namespace tn::etcd {
namespace {

using http::Json;
using http::member;

using std::chrono::milliseconds;

constexpr std::chrono::seconds kOperationTime{10};
constexpr milliseconds kLongestPause{64};
constexpr std::chrono::seconds kLastTry{1};  // before the end: its answer shall come in time
constexpr char kTransaction[] = "/v3/kv/txn";
constexpr char kRange[] = "/v3/kv/range";
constexpr std::string_view kFormatName = "knob-registry ";
constexpr int kLayout = 1;

http::Deadline newDeadline() { return http::Clock::now() + kOperationTime; }

[[noreturn]] void damaged() { throw TuningError(TN_REGISTRY_DAMAGED); }

std::string format() { return std::string(kFormatName) + std::to_string(kLayout); }

// All of the text, as std::to_string() writes it.
template <typename Number>
std::optional<Number> parseNumber(std::string_view text) {
  Number number = 0;
  const auto [rest, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (error != std::errc() || std::to_string(number) != text) return std::nullopt;
  return number;
}

// Numbers of 64 bits travel as text; one that is 0 is left out.
int64_t numberMember(const Json& object, const char* name) {
  const std::string text = http::textMember(object, name);
  if (text.empty()) return 0;
  const auto number = parseNumber<int64_t>(text);
  if (!number) damaged();
  return *number;
}

std::string bytesMember(const Json& object, const char* name) {
  auto bytes = fromBase64(http::textMember(object, name));
  if (!bytes) damaged();
  return *std::move(bytes);
}

// Which keys there are, from the answer to a range: nothing for none.
const Json& keysOf(const Json& response) {
  static const Json none = Json::array();
  const Json& keys = member(response, "kvs");
  if (keys.is_null()) return none;
  if (!keys.is_array()) damaged();
  return keys;
}

// Servers of other kinds answer any request with some JSON.
const Json& keysOfRange(const Json& response) {
  const Json& range = member(response, "response_range");
  if (!range.is_object()) throw TuningError(TN_ETCD_NO_GATEWAY);
  return keysOf(range);
}

void checkFormat(const std::string& found) {
  if (found == format()) return;
  const bool ours = found.starts_with(kFormatName);
  const auto layout =
      parseNumber<int>(std::string_view(found).substr(ours ? kFormatName.size() : 0));
  throw TuningError(ours && layout > kLayout ? TN_REGISTRY_NEWER : TN_REGISTRY_FOREIGN);
}

Json comparison(const std::string& key, const char* target, const char* name, std::string value) {
  return {
      {"key", toBase64(key)}, {"target", target}, {"result", "EQUAL"}, {name, std::move(value)}};
}

Json put(const std::string& key, const std::string& value) {
  return {{"request_put", {{"key", toBase64(key)}, {"value", toBase64(value)}}}};
}

}  // namespace

EtcdStore::EtcdStore(const Address& address)
    : formatKey_(address.prefix + "/format"),
      settingsKey_(address.prefix + "/settings/"),
      gateway_(address) {}

std::map<int32_t, std::string> EtcdStore::readAll() {
  const Json request = {{"success", readEverything()}};
  const Json answer = gateway_.read(kTransaction, request, newDeadline());
  seen_ = contentsOf(member(answer, "responses"));
  std::map<int32_t, std::string> values;
  for (const auto& [id, kept] : seen_->settings) values.emplace(id, kept.value);
  return values;
}

void EtcdStore::write(int32_t settingId, const std::string& value) {
  if (!seen_) readAll();
  bool unknown = false;
  try {
    change(settingId, value, newDeadline(), unknown);
  } catch (const TuningError&) {
    seen_.reset();
    if (unknown) throw TuningError(TN_ETCD_OUTCOME_UNKNOWN);
    throw;
  }
}

// `unknown` tells whether it may have been stored, also when this throws.
void EtcdStore::change(int32_t settingId, const std::string& value, http::Deadline deadline,
                       bool& unknown) {
  for (milliseconds pause{1};; pause = std::min(2 * pause, kLongestPause)) {
    const int64_t before = revisionOf(settingId);
    const auto answer = gateway_.change(kTransaction, changeOf(settingId, value), deadline);
    if (!answer) {
      unknown = true;
      continue;
    }
    if (member(*answer, "succeeded") == true) {
      const int64_t revision = numberMember(member(*answer, "header"), "revision");
      seen_->exists = true;
      seen_->settings[settingId] = {value, revision, before == 0};
      return;
    }
    seen_ = contentsOf(member(*answer, "responses"));
    if (unknown && wasStored(settingId, value, before, deadline)) return;
    // The transactions that were lost no longer apply either.
    unknown = false;
    // Other machines were faster, or this is no etcd.
    if (http::Clock::now() + kLastTry > deadline) throw TuningError(TN_ETCD_ERROR);
    std::this_thread::sleep_for(pause);
  }
}

// Walks back from what is stored now to what was seen before the change. Somebody may have removed
// the key on the way, which leaves no trace but that the key was made anew; knob removes none.
bool EtcdStore::wasStored(int32_t settingId, const std::string& value, int64_t since,
                          http::Deadline deadline) {
  if (revisionOf(settingId) == 0) {
    if (since == 0) return false;
    throw TuningError(TN_ETCD_OUTCOME_UNKNOWN);  // removed meanwhile, its history with it
  }
  Kept kept = seen_->settings.at(settingId);
  while (kept.revision > since) {
    if (kept.value == value) return true;
    if (kept.isFirst && since == 0) return false;
    const auto earlier = keptAt(settingId, kept.revision - 1, deadline);
    if (!earlier) throw TuningError(TN_ETCD_OUTCOME_UNKNOWN);  // removed and made again
    kept = *earlier;
  }
  return false;
}

std::optional<EtcdStore::Kept> EtcdStore::keptAt(int32_t settingId, int64_t revision,
                                                 http::Deadline deadline) {
  const Json request = {{"key", toBase64(keyOf(settingId))},
                        {"revision", std::to_string(revision)}};
  const Json answer = gateway_.read(kRange, request, deadline);
  const Json& keys = keysOf(answer);
  if (keys.empty()) return std::nullopt;
  return keptIn(keys.front());
}

Json EtcdStore::readEverything() const {
  std::string end = settingsKey_;
  ++end.back();
  const Json formatRange = {{"key", toBase64(formatKey_)}};
  const Json settingsRange = {{"key", toBase64(settingsKey_)}, {"range_end", toBase64(end)}};
  return Json::array({{{"request_range", formatRange}}, {{"request_range", settingsRange}}});
}

Json EtcdStore::changeOf(int32_t settingId, const std::string& value) const {
  const std::string key = keyOf(settingId);
  const std::string revision = std::to_string(revisionOf(settingId));
  Json compare = Json::array({comparison(key, "MOD", "mod_revision", revision)});
  Json success = Json::array({put(key, value)});
  if (seen_->exists) {
    compare.push_back(comparison(formatKey_, "VALUE", "value", toBase64(format())));
  } else {
    compare.push_back(comparison(formatKey_, "CREATE", "create_revision", "0"));
    success.push_back(put(formatKey_, format()));
  }
  return {{"compare", compare}, {"success", success}, {"failure", readEverything()}};
}

EtcdStore::Contents EtcdStore::contentsOf(const Json& ranges) const {
  if (!ranges.is_array() || ranges.size() != 2) throw TuningError(TN_ETCD_NO_GATEWAY);
  const Json& formats = keysOfRange(ranges[0]);
  const Json& settings = keysOfRange(ranges[1]);
  Contents contents;
  contents.exists = !formats.empty();
  if (contents.exists) checkFormat(bytesMember(formats.front(), "value"));
  if (!contents.exists && !settings.empty()) damaged();
  for (const Json& entry : settings) {
    const std::string key = bytesMember(entry, "key");
    if (!key.starts_with(settingsKey_)) damaged();
    const auto id = parseNumber<int32_t>(std::string_view(key).substr(settingsKey_.size()));
    if (!id) damaged();
    contents.settings.emplace(*id, keptIn(entry));
  }
  return contents;
}

EtcdStore::Kept EtcdStore::keptIn(const Json& entry) {
  return {bytesMember(entry, "value"), numberMember(entry, "mod_revision"),
          numberMember(entry, "version") == 1};
}

std::string EtcdStore::keyOf(int32_t settingId) const {
  return settingsKey_ + std::to_string(settingId);
}

int64_t EtcdStore::revisionOf(int32_t settingId) const {
  const auto kept = seen_->settings.find(settingId);
  return kept == seen_->settings.end() ? 0 : kept->second.revision;
}

}  // namespace tn::etcd
