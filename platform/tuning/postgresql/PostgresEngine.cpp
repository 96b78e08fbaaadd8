#include "tuning/postgresql/PostgresEngine.h"

#include <algorithm>
#include <charconv>
#include <chrono>
#include <numeric>
#include <string_view>
#include <thread>

#include "tuning/TuningError.h"
#include "tuning/postgresql/AlterSystem.h"
#include "tuning/postgresql/KnownSettings.h"
#include "tuning/postgresql/NameList.h"
#include "tuning/postgresql/SettingText.h"
#include "tuning/postgresql/ValueText.h"

namespace tn::postgresql {
namespace {

constexpr char kOn[] = "on";
constexpr char kOff[] = "off";

constexpr std::chrono::seconds kReloadPatience{5};
constexpr std::chrono::microseconds kFirstReloadPause{200};
constexpr std::chrono::microseconds kLongestReloadPause{50000};

int32_t number(std::string_view text) {
  int32_t value = 0;
  std::from_chars(text.data(), text.data() + text.size(), value);
  return value;
}

// The server itself refuses only a line feed, but a settings file loses a carriage return as well.
bool isControl(char c) { return (static_cast<unsigned char>(c) < ' ' && c != '\t') || c == '\x7f'; }

bool sameValue(const Setting& setting, const std::string& a, const std::string& b) {
  if (a == b) return true;
  if (!setting.real) return false;
  const auto left = ValueText::real(a, setting.unit);
  const auto right = ValueText::real(b, setting.unit);
  return left && right && *left == *right;
}

// Where the server keeps its own files is not for carrying to another server.
bool isReadOnly(const Setting& setting) {
  const KnownSetting* const known = KnownSettings::find(setting.name);
  return setting.preset || !AlterSystem::canName(setting.name) ||
         (known && known->category == Category::fileLocations);
}

// Of a setting that cannot be changed at all, that is what is wrong with any value.
[[noreturn]] void refuse(const Setting& setting, TnStatus status) {
  throw TuningError(isReadOnly(setting) ? TnStatus{TN_SETTING_READ_ONLY} : status);
}

}  // namespace

PostgresEngine::PostgresEngine(const char* server, const char* user, const char* password)
    : connection_(server, user, password), snapshot_(connection_) {}

void PostgresEngine::leave() {
  if (changed_) takeEffect();
}

std::vector<int32_t> PostgresEngine::categories() {
  std::vector<int32_t> ids;
  for (const SettingCategory& category : snapshot_.categories()) ids.push_back(category.id);
  return ids;
}

CategoryInfo PostgresEngine::category(int32_t categoryId) {
  const SettingCategory& category = knownCategory(categoryId);
  const auto changed =
      std::count_if(category.settingIds.begin(), category.settingIds.end(), [this](int32_t id) {
        const Setting& setting = known(id);
        return setting.current != setting.fallback;
      });
  return {category.name, static_cast<int32_t>(changed)};
}

std::vector<int32_t> PostgresEngine::settings(int32_t categoryId) {
  return knownCategory(categoryId).settingIds;
}

SettingInfo PostgresEngine::setting(int32_t settingId) {
  const Setting& setting = known(settingId);
  return {setting.type, std::string(setting.name), setting.server};
}

bool PostgresEngine::isAvailable(int32_t settingId) { return snapshot_.contains(settingId); }

std::string PostgresEngine::description(int32_t settingId) {
  return SettingText::of(known(settingId));
}

bool PostgresEngine::booleanValue(int32_t settingId, Selector selector) {
  return value(settingId, TN_TYPE_BOOLEAN, selector) == kOn;
}

int32_t PostgresEngine::integerValue(int32_t settingId, Selector selector) {
  return number(value(settingId, TN_TYPE_INTEGER, selector));
}

std::string PostgresEngine::stringValue(int32_t settingId, Selector selector) {
  return value(settingId, TN_TYPE_STRING, selector);
}

std::vector<int32_t> PostgresEngine::selectionValue(int32_t settingId, Selector selector) {
  const std::string& text = value(settingId, TN_TYPE_SINGLE_SELECTION, selector);
  const auto& items = known(settingId).items;
  const auto found = std::find_if(items.begin(), items.end(),
                                  [&text](const Choice& item) { return item.text == text; });
  return {static_cast<int32_t>(found - items.begin())};
}

BooleanWords PostgresEngine::booleanWords(int32_t settingId) {
  known(settingId, TN_TYPE_BOOLEAN);
  return {kOn, kOff};
}

Limits PostgresEngine::limits(int32_t settingId) {
  const Setting& setting = known(settingId, TN_TYPE_INTEGER);
  return {number(setting.maximum), number(setting.minimum)};
}

std::vector<int32_t> PostgresEngine::selectionItems(int32_t settingId) {
  std::vector<int32_t> positions(known(settingId, TN_TYPE_SINGLE_SELECTION).items.size());
  std::iota(positions.begin(), positions.end(), 0);
  return positions;
}

std::string PostgresEngine::selectionText(int32_t settingId, int32_t item) {
  const auto& items = known(settingId, TN_TYPE_SINGLE_SELECTION).items;
  if (item < 0 || static_cast<std::size_t>(item) >= items.size()) {
    throw TuningError(TN_UNKNOWN_ITEM);
  }
  return Choices::shown(items[static_cast<std::size_t>(item)]);
}

void PostgresEngine::setBoolean(int32_t settingId, bool value) {
  const std::string text = value ? kOn : kOff;
  change(known(settingId, TN_TYPE_BOOLEAN), text, {text});
}

void PostgresEngine::setInteger(int32_t settingId, int64_t value) {
  Setting& setting = known(settingId, TN_TYPE_INTEGER);
  if (value < number(setting.minimum) || value > number(setting.maximum)) {
    refuse(setting, TN_VALUE_OUT_OF_RANGE);
  }
  const std::string text = std::to_string(value);
  change(setting, text, {text});
}

void PostgresEngine::setString(int32_t settingId, const std::string& value) {
  Setting& setting = known(settingId, TN_TYPE_STRING);
  if (std::any_of(value.begin(), value.end(), isControl)) {
    refuse(setting, TN_CONTROL_CHARACTER);
  }
  if (setting.list == NameList::Kind::none) {
    change(setting, value, {value});
  } else {
    setList(setting, value);
  }
}

void PostgresEngine::setSelection(int32_t settingId, const std::vector<int32_t>& items) {
  Setting& setting = known(settingId, TN_TYPE_SINGLE_SELECTION);
  if (items.size() != 1) refuse(setting, TN_ONE_CHOICE_REQUIRED);
  const auto item = static_cast<std::size_t>(items.front());
  if (item >= setting.items.size() || !setting.items[item].available) {
    refuse(setting, TN_NOT_A_CHOICE);
  }
  const std::string& text = setting.items[item].text;
  change(setting, text, {text});
}

const SettingCategory& PostgresEngine::knownCategory(int32_t categoryId) {
  const SettingCategory* const category = snapshot_.category(categoryId);
  if (!category) throw TuningError(TN_UNKNOWN_CATEGORY);
  return *category;
}

const Setting& PostgresEngine::known(int32_t settingId) {
  const Setting* const setting = snapshot_.setting(settingId);
  if (!setting) throw TuningError(TN_UNKNOWN_SETTING);
  return *setting;
}

Setting& PostgresEngine::known(int32_t settingId, TnValueType type) {
  Setting* const setting = snapshot_.setting(settingId);
  if (!setting) throw TuningError(TN_UNKNOWN_SETTING);
  if (setting->type != type) throw TuningError(TN_WRONG_VALUE_TYPE);
  return *setting;
}

const std::string& PostgresEngine::value(int32_t settingId, TnValueType type, Selector selector) {
  if (changed_ && selector == Selector::currentValue) {
    takeEffect();
    snapshot_ = Snapshot(connection_);
    files_.reset();  // they were read before what this run has written
  }
  const Setting& setting = known(settingId, type);
  return selector == Selector::defaultValue ? setting.fallback : setting.current;
}

void PostgresEngine::setList(Setting& setting, const std::string& value) {
  const auto names = NameList::ofPerson(value);
  if (!names) throw TuningError(TN_LIST_MALFORMED);
  if (names->empty()) {
    emptyList(setting);
  } else {
    change(setting, NameList::shown(*names), *names);
  }
}

// True when setting the value would change nothing: neither what is in force nor what is stored and
// waits for a restart or only for the server to read its files again.
bool PostgresEngine::isCurrent(const Setting& setting, const std::string& wanted) {
  if (setting.written) return sameValue(setting, *setting.written, wanted);
  if (!setting.currentIsKnown || setting.changeMayWait ||
      !sameValue(setting, setting.current, wanted)) {
    return false;
  }
  const auto stored = setting.ofCommandLine ? std::nullopt : files().storedValue(setting.name);
  return !stored || sameValue(setting, Snapshot::shown(*stored, setting), wanted);
}

ServerFiles& PostgresEngine::files() {
  if (!files_) files_.emplace(connection_);
  return *files_;
}

// The server would store an empty list as a list with one empty name. So what was set before is
// taken away, and only where that leaves the list empty.
void PostgresEngine::emptyList(Setting& setting) {
  if (isCurrent(setting, {})) return;
  checkChangeable(setting);
  if (!resetLeavesItEmpty(setting)) throw TuningError(TN_EMPTY_LIST_REFUSED);
  write(setting, {}, AlterSystem::reset(setting.name));
}

bool PostgresEngine::resetLeavesItEmpty(const Setting& setting) {
  if (!files().readable() || setting.ofCommandLine) return false;
  const auto text = files().valueAfterReset(setting.name);
  return text ? text->empty() : setting.fallback.empty();
}

void PostgresEngine::change(Setting& setting, const std::string& wanted, const Texts& values) {
  if (isCurrent(setting, wanted)) return;
  checkChangeable(setting);
  Texts literals;
  for (const std::string& value : values) literals.push_back(connection_.literal(value));
  write(setting, wanted, AlterSystem::set(setting.name, literals));
}

// A change that could not take effect is not made at all: leaving the engine reports nothing.
void PostgresEngine::checkChangeable(const Setting& setting) {
  if (isReadOnly(setting)) throw TuningError(TN_SETTING_READ_ONLY);
  if (!files().mayReload()) throw TuningError(TN_RELOAD_NOT_PERMITTED);
  const auto isKnown = [this](std::string_view name) { return snapshot_.hasName(name); };
  if (files().blocked(isKnown)) throw TuningError(TN_CONFIGURATION_FILE_ERRORS);
}

void PostgresEngine::write(Setting& setting, const std::string& wanted,
                           const std::string& statement) {
  connection_.query(statement);
  setting.written = wanted;
  changed_ = true;
}

// The moment at which this session last loaded the configuration moves when it has done so again;
// the server hands a new configuration to its sessions only after it has loaded it itself. A server
// that does not answer in time is left alone: the result of leaving cannot be told anyway.
void PostgresEngine::takeEffect() {
  const auto deadline = std::chrono::steady_clock::now() + kReloadPatience;
  const auto reload = connection_.queryUntil(
      "SELECT pg_catalog.pg_conf_load_time(), pg_catalog.pg_reload_conf()", deadline);
  changed_ = false;
  auto pause = kFirstReloadPause;
  while (reload && std::chrono::steady_clock::now() < deadline) {
    const auto now = connection_.queryUntil("SELECT pg_catalog.pg_conf_load_time()", deadline);
    if (!now || now->text(0, 0) != reload->text(0, 0)) return;
    std::this_thread::sleep_for(pause);
    pause = std::min(pause * 2, kLongestReloadPause);
  }
}

}  // namespace tn::postgresql
