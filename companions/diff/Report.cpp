#include "diff/Report.h"

#include <algorithm>
#include <array>
#include <nlohmann/json.hpp>
#include <strings.h>

#include "kz/String.h"
#include "service/TuningInterface.h"

namespace diff {
namespace {

constexpr std::array<const char*, 4> kColors = {"", "", "\033[31m", "\033[32m"};
constexpr char kPlain[] = "\033[0m";
constexpr char kAbsent[] = "(none)";
constexpr char kEmpty[] = "\"\"";

using Row = std::array<std::string, 4>;  // id, name, the two values

// In characters.
size_t width(const std::string& text) { return static_cast<size_t>(kz::String(text).length()); }

// Values of strangers must not move a terminal's cursor. U+0080 to U+009F do so, too.
std::string printable(const std::string& text) {
  std::string shown;
  for (size_t i = 0; i < text.size(); ++i) {
    const auto byte = static_cast<unsigned char>(text[i]);
    const auto next = static_cast<unsigned char>(i + 1 < text.size() ? text[i + 1] : 0);
    const bool isPair = byte == 0xc2 && next >= 0x80 && next < 0xa0;
    shown += isPair || byte < 0x20 || byte == 0x7f ? '?' : text[i];
    if (isPair) ++i;
  }
  return shown;
}

std::string cell(const std::optional<std::string>& value) {
  if (!value) return kAbsent;
  return value->empty() ? kEmpty : printable(*value);
}

// Longer values do not widen their column.
size_t columnWidth(const std::vector<Row>& rows, size_t column) {
  constexpr size_t kWidest = 40;
  size_t widest = 0;
  for (const Row& row : rows) widest = std::max(widest, width(row[column]));
  return std::min(widest, kWidest);
}

// Groups of settings that no import can change: the engine works them out, or they name the
// server's own files.
constexpr const char* kFixedCategories[] = {"Preset Options", "File Locations"};

bool survivesFile(const std::string& value) {
  if (value.find_first_of("\t\r\n") != value.npos || value.find("  ") != value.npos) return false;
  return value.empty() || (value.front() != ' ' && value.back() != ' ');
}

// Empty when an import can give the setting the value that it has on A.
std::string obstacle(const Difference& difference) {
  if (!difference.a) return "A does not have the setting";
  if (!difference.b) return "B does not have the setting";
  for (const char* const category : kFixedCategories) {
    if (strcasecmp(difference.category.c_str(), category) == 0) {
      return "the setting cannot be changed (" + std::string(category) + ")";
    }
  }
  if (difference.a->empty() && difference.id != TN_EMPTY_VALUE_SETTING) {
    return "a settings file cannot carry an empty value";
  }
  if (!survivesFile(*difference.a)) {
    return "a settings file cannot carry blanks at the ends of a value, runs of blanks or tabs";
  }
  return {};
}

nlohmann::ordered_json orNull(const std::optional<std::string>& value) {
  if (!value) return nullptr;
  return *value;
}

}  // namespace

std::string Report::table(const Differences& differences, const std::string& a,
                          const std::string* b, bool colored) {
  if (differences.empty()) return {};
  std::string text = "A: " + printable(a) + "\n";
  if (b != nullptr) text += "B: " + printable(*b) + "\n";
  text += '\n';
  std::vector<Row> rows = {{"ID", "Setting", "A", b == nullptr ? "Default" : "B"}};
  for (const Difference& difference : differences) {
    rows.push_back({std::to_string(difference.id), printable(difference.name), cell(difference.a),
                    cell(difference.b)});
  }
  for (const Row& row : rows) {
    for (size_t column = 0; column < row.size(); ++column) {
      const bool marked = colored && &row != &rows.front() && *kColors[column] != '\0';
      text += marked ? kColors[column] + row[column] + kPlain : row[column];
      if (column + 1 == row.size()) continue;
      const size_t wanted = columnWidth(rows, column) + 2;
      text.append(std::max<size_t>(wanted, width(row[column]) + 2) - width(row[column]), ' ');
    }
    text += '\n';
  }
  return text;
}

std::string Report::json(const Differences& differences, const std::string& a,
                         const std::string* b) {
  using Json = nlohmann::ordered_json;
  Json object = {{"a", a}, {"b", b == nullptr ? Json() : Json(*b)}};
  Json& list = object["differences"] = Json::array();
  for (const Difference& difference : differences) {
    list.push_back({{"id", difference.id},
                    {"name", difference.name},
                    {"a", orNull(difference.a)},
                    {"b", orNull(difference.b)}});
  }
  // Bytes that are not UTF-8 cannot stand in JSON.
  return object.dump(2, ' ', false, Json::error_handler_t::replace) + "\n";
}

Report::Carried Report::settingsFile(const Differences& differences, const Tags& tags) {
  Carried carried;
  for (const Difference& difference : differences) {
    const std::string id = std::to_string(difference.id);
    const std::string reason = obstacle(difference);
    if (!reason.empty()) {
      carried.remaining.append("knob-diff: setting ").append(id).append(" (");
      carried.remaining.append(printable(difference.name)).append(") is left out: ");
      carried.remaining.append(reason).append("\n");
      continue;
    }
    if (!difference.name.empty()) carried.file += difference.name + "\n";
    carried.file.append("\t").append(tags.id).append(" ").append(id).append("\n\t");
    carried.file.append(tags.value).append(" ").append(*difference.a).append("\n");
  }
  return carried;
}

}  // namespace diff
