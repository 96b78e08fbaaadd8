#include "tuning/postgresql/Snapshot.h"

#include <algorithm>
#include <iterator>
#include <string_view>

#include "tuning/TuningError.h"
#include "tuning/postgresql/ServerFiles.h"
#include "tuning/postgresql/SettingIds.h"
#include "tuning/postgresql/SettingName.h"
#include "tuning/postgresql/ValueText.h"

namespace tn::postgresql {
namespace {

// In the order of the query's columns.
enum Column : int {
  kName,
  kSetting,
  kUnit,
  kCategory,
  kShortText,
  kLongText,
  kContext,
  kType,
  kSource,
  kMinimum,
  kMaximum,
  kChoices,
  kDefault,
  kConfigured,
  kPendingRestart,
};

// Everything is named with its schema and no operator is used: a role's search_path could put
// something else before them.
constexpr char kQuery[] =
    "SELECT name, setting, unit, category, short_desc, extra_desc, context, vartype, source,"
    " min_val, max_val, enumvals, boot_val, reset_val, pending_restart"
    " FROM pg_catalog.pg_settings";

// The words of context, type and source below are the same in every language of the server.
constexpr std::string_view kClientContexts[] = {"user", "superuser", "backend",
                                                "superuser-backend"};

constexpr std::string_view kCommandLine = "command line";

constexpr std::string_view kSessionSources[] = {"global", "database",    "user", "database user",
                                                "client", "interactive", "test", "session"};

struct TypeName {
  std::string_view name;
  TnValueType type;
};
constexpr TypeName kTypes[] = {
    {"bool", TN_TYPE_BOOLEAN}, {"integer", TN_TYPE_INTEGER}, {"enum", TN_TYPE_SINGLE_SELECTION},
    {"real", TN_TYPE_STRING},  {"string", TN_TYPE_STRING},
};

// Left alone, the client's encoding is that of whatever database the session is in: no setting of
// the server, whose default stands for just that.
constexpr std::string_view kClientEncoding = "client_encoding";

constexpr std::string_view kDateStyle = "DateStyle";

// Before version 14 this list is one text to the server.
constexpr std::string_view kSocketFolders = "unix_socket_directories";
constexpr int kListsOfFolders = 140000;

// What Patroni gives on every server's command line, and hardly anybody else all at once.
constexpr std::string_view kOfPatroni[] = {"cluster_name",
                                           "hot_standby",
                                           "max_locks_per_transaction",
                                           "max_prepared_transactions",
                                           "track_commit_timestamp",
                                           "wal_level",
                                           "wal_log_hints"};

// Where nothing sets it, the server works out what the machine allows.
constexpr std::string_view kWorkedOut = "max_stack_depth";

constexpr int kRoundsFractions = 120000;  // the first version that does

template <typename Range>
bool holds(const Range& range, std::string_view text) {
  return std::find(std::begin(range), std::end(range), text) != std::end(range);
}

// The elements of an array as the server writes one: {off,on,"read committed",""}.
std::vector<std::string> elementsIn(std::string_view array) {
  std::vector<std::string> elements;
  if (array.size() <= 2) return elements;
  elements.emplace_back();
  bool quoted = false;
  for (std::size_t i = 1; i + 1 < array.size(); ++i) {
    if (array[i] == '"') {
      quoted = !quoted;
    } else if (array[i] == ',' && !quoted) {
      elements.emplace_back();
    } else {
      if (array[i] == '\\') ++i;
      elements.back() += array[i];
    }
  }
  return elements;
}

std::optional<std::string> shownInteger(std::string_view text, const Setting& setting) {
  const auto value = ValueText::integer(text, setting.unit, setting.fractions);
  return value ? std::optional(std::to_string(*value)) : std::nullopt;
}

std::optional<std::string> shownString(std::string_view text, const Setting& setting) {
  if (setting.real) {
    const auto value = ValueText::real(text, setting.unit);
    return value ? std::optional(ValueText::ofReal(*value)) : std::nullopt;
  }
  if (setting.list == NameList::Kind::none) return std::string(text);
  const auto names = NameList::ofServer(text, setting.list);
  return names ? NameList::shown(*names) : std::string(text);
}

std::string shownChoice(std::string_view text, const Setting& setting) {
  const auto item = ValueText::choice(text, setting.items);
  return item ? setting.items[*item].text : std::string(text);
}

// The server takes some choices that it does not list; one that is in force has to have a place.
void addChoice(Setting& setting, const std::string& choice) {
  if (setting.type != TN_TYPE_SINGLE_SELECTION) return;
  const auto item = ValueText::choice(choice, setting.items);
  if (!item) {
    setting.items.push_back({choice});
  } else {
    setting.items[*item].available = true;
  }
}

}  // namespace

Snapshot::Snapshot(Connection& connection)
    : rows_(connection.query(kQuery)),
      version_(connection.version()),
      encodingSource_(connection.encodingSource()) {
  std::vector<std::string_view> names;
  std::vector<int> hidden;
  for (int row = 0; row < rows_.rows(); ++row) {
    names.push_back(rows_.text(row, kName));
    if (isHidden(row)) hidden.push_back(row);
  }
  if (!hidden.empty()) lookUpHidden(connection, hidden);
  int row = 0;
  for (const int32_t id : SettingIds::of(names)) places_.push_back({id, row++});
  std::sort(places_.begin(), places_.end(),
            [](const Place& a, const Place& b) { return a.id < b.id; });
}

bool Snapshot::isOfSession(std::string_view source) { return holds(kSessionSources, source); }

// Setting client_encoding for this connection has left nothing of where it came from.
std::string_view Snapshot::source(int row) const {
  const bool setHere = !encodingSource_.empty() && rows_.text(row, kName) == kClientEncoding;
  return setHere ? encodingSource_ : rows_.text(row, kSource);
}

void Snapshot::lookUpHidden(Connection& connection, const std::vector<int>& hidden) {
  ServerFiles files(connection);
  const bool commandLineKnown = files.readCommandLine(connection);
  const auto isKnown = [this](std::string_view name) { return hasName(name); };
  hiddenAreKnown_ = commandLineKnown && files.readable() && !files.blocked(isKnown);
  for (const int row : hidden) {
    const std::string_view name = rows_.text(row, kName);
    const auto text = files.value(name);
    if (files.onCommandLine(name)) hiddenOnCommandLine_.insert(row);
    hidden_[row] = text ? std::optional(asTheServerTells(connection, row, *text)) : std::nullopt;
  }
}

// Some texts mean a value that the server itself tells otherwise ("iso, mdy", "debug"). It is asked
// in the one way there is: by setting the value for the moment of the question.
std::string Snapshot::asTheServerTells(Connection& connection, int row,
                                       std::string_view text) const {
  const std::string name(rows_.text(row, kName));
  const bool choice =
      rows_.text(row, kType) == "enum" && !holds(elementsIn(rows_.text(row, kChoices)), text);
  if (!choice && name != kDateStyle) return std::string(text);
  try {
    const Result told =
        connection.query("SELECT pg_catalog.set_config(" + connection.literal(name) + ", " +
                         connection.literal(std::string(text)) + ", true)");
    return std::string(told.text(0, 0));
  } catch (const TuningError& error) {
    if (error.status() == TN_CONNECTION_LOST) throw;
    return std::string(text);  // the role may not set it, or it cannot be set in a session
  }
}

const Snapshot::Place* Snapshot::place(int32_t settingId) const {
  const auto found = std::lower_bound(places_.begin(), places_.end(), settingId,
                                      [](const Place& place, int32_t id) { return place.id < id; });
  return found != places_.end() && found->id == settingId ? &*found : nullptr;
}

bool Snapshot::contains(int32_t settingId) const { return place(settingId) != nullptr; }

Setting* Snapshot::setting(int32_t settingId) {
  const auto built = settings_.find(settingId);
  if (built != settings_.end()) return &built->second;
  const Place* const where = place(settingId);
  return where ? &settings_.emplace(settingId, build(*where)).first->second : nullptr;
}

Setting Snapshot::build(const Place& place) const {
  const int row = place.row;
  Setting setting;
  setting.id = place.id;
  setting.name = rows_.text(row, kName);
  setting.unit = rows_.text(row, kUnit);
  setting.shortText = rows_.text(row, kShortText);
  setting.longText = rows_.text(row, kLongText);
  setting.minimum = rows_.text(row, kMinimum);
  setting.maximum = rows_.text(row, kMaximum);
  readType(setting, row);
  readLimits(setting);
  readValues(setting, row);
  addChoice(setting, setting.fallback);
  addChoice(setting, setting.current);
  return setting;
}

void Snapshot::readType(Setting& setting, int row) const {
  const std::string_view type = rows_.text(row, kType);
  const auto known = std::find_if(std::begin(kTypes), std::end(kTypes),
                                  [type](const TypeName& entry) { return entry.name == type; });
  setting.type = known == std::end(kTypes) ? TnValueType{TN_TYPE_STRING} : known->type;
  setting.real = type == "real";
  if (version_ < kRoundsFractions) setting.fractions = ValueText::Fractions::refused;
  if (setting.type == TN_TYPE_STRING) setting.list = NameList::kindOf(setting.name);
  setting.listIsOneText = version_ < kListsOfFolders && setting.name == kSocketFolders;
  if (setting.type == TN_TYPE_SINGLE_SELECTION) {
    setting.items = Choices::of(setting.name, elementsIn(rows_.text(row, kChoices)));
  }
  const std::string_view context = rows_.text(row, kContext);
  setting.server = !holds(kClientContexts, context);
  setting.needsRestart = context == "postmaster";
  setting.ofNewSessions = context.ends_with("backend");
  setting.preset = context == "internal";
}

void Snapshot::readLimits(Setting& setting) {
  if (setting.type != TN_TYPE_INTEGER) return;
  setting.lowest = ValueText::integer(setting.minimum, {}).value_or(0);
  setting.highest = ValueText::integer(setting.maximum, {}).value_or(0);
}

// `setting` may be a text made for display ("0600", "(disabled)") where `reset_val` has the value;
// of presets, which nobody configures, some are told by `setting` alone.
void Snapshot::readValues(Setting& setting, int row) const {
  setting.fallback = shown(rows_.text(row, kDefault), setting).value_or("");
  setting.current = setting.fallback;
  setting.changeMayWait = rows_.flag(row, kPendingRestart);
  const std::string_view from = source(row);
  setting.ofCommandLine = from == kCommandLine || hiddenOnCommandLine_.contains(row);
  if (isHidden(row)) {
    const auto& text = hidden_.at(row);
    setting.currentIsKnown = hiddenAreKnown_ && (text || setting.name != kWorkedOut);
    if (text) setting.current = shown(*text, setting).value_or(setting.fallback);
    return;
  }
  if (setting.name == kClientEncoding && from == "default") return;
  setting.running = rows_.text(row, setting.preset ? kSetting : kConfigured);
  setting.current = shown(setting.running, setting).value_or(setting.fallback);
}

std::optional<std::string> Snapshot::shown(std::string_view text, const Setting& setting) {
  switch (setting.type) {
    case TN_TYPE_BOOLEAN: {
      const auto value = ValueText::boolean(text);
      if (!value) return std::nullopt;
      return *value ? Setting::kOn : Setting::kOff;
    }
    case TN_TYPE_INTEGER:
      return shownInteger(text, setting);
    case TN_TYPE_SINGLE_SELECTION:
      return shownChoice(text, setting);
    default:
      return shownString(text, setting);
  }
}

bool Snapshot::same(const std::string& a, const std::string& b, const Setting& setting) {
  if (a == b) return true;
  if (!setting.real) return false;
  const auto left = ValueText::real(a, setting.unit);
  const auto right = ValueText::real(b, setting.unit);
  return left && right && *left == *right;
}

bool Snapshot::means(std::string_view text, const std::string& wanted, const Setting& setting) {
  const auto value = shown(text, setting);
  return value && same(*value, wanted, setting);
}

std::optional<int> Snapshot::row(std::string_view name) const {
  for (int row = 0; row < rows_.rows(); ++row) {
    if (isSameSetting(rows_.text(row, kName), name)) return row;
  }
  return std::nullopt;
}

bool Snapshot::alterSystemIsOff() const {
  const auto where = row("allow_alter_system");
  return where && rows_.text(*where, kSetting) == Setting::kOff;
}

bool Snapshot::isOfPatroni() const {
  return std::all_of(std::begin(kOfPatroni), std::end(kOfPatroni), [this](std::string_view name) {
    const auto where = row(name);
    return where && source(*where) == kCommandLine;
  });
}

const std::vector<SettingCategory>& Snapshot::categories() {
  if (!categories_.empty()) return categories_;
  std::vector<SettingGroups::Member> members(places_.size());
  for (const Place& place : places_) {
    members[static_cast<std::size_t>(place.row)] = {rows_.text(place.row, kName),
                                                    rows_.text(place.row, kCategory), place.id};
  }
  categories_ = SettingGroups::of(members);
  return categories_;
}

const SettingCategory* Snapshot::category(int32_t categoryId) {
  const auto& list = categories();
  const auto found = std::find_if(list.begin(), list.end(), [categoryId](const auto& category) {
    return category.id == categoryId;
  });
  return found == list.end() ? nullptr : &*found;
}

}  // namespace tn::postgresql
