#include "tuning/cataloguefile/TableReader.h"

#include <algorithm>
#include <utility>

namespace tn::cataloguefile {
namespace {

std::string_view nameOf(toml::node_type type) {
  switch (type) {
    case toml::node_type::table:
      return "a table";
    case toml::node_type::array:
      return "an array";
    case toml::node_type::string:
      return "a text";
    case toml::node_type::integer:
      return "a whole number";
    case toml::node_type::floating_point:
      return "a number with a fraction";
    case toml::node_type::boolean:
      return "true or false";
    default:
      return "a date or time";
  }
}

}  // namespace

template <typename T>
std::optional<T> TableReader::value(std::string_view key, Need need, std::string_view wanted) {
  const toml::node* node = find(key, need);
  if (node == nullptr) return std::nullopt;
  std::optional<T> exact = node->value_exact<T>();
  if (!exact) wrongType(key, wanted);
  return exact;
}

std::optional<std::string_view> TableReader::text(std::string_view key, Need need) {
  return value<std::string_view>(key, need, "a text");
}

std::string_view TableReader::oneLine(std::string_view key, const LineRule& rule) {
  const auto line = text(key);
  if (!line) return {};
  const std::string wrong = lineFault(*line, rule);
  if (!wrong.empty()) fault(key, "the " + std::string(key) + ' ' + wrong);
  return *line;
}

std::optional<int64_t> TableReader::integer(std::string_view key, Need need) {
  return value<int64_t>(key, need, "a whole number");
}

std::optional<bool> TableReader::boolean(std::string_view key, Need need) {
  return value<bool>(key, need, "true or false");
}

std::optional<TableReader::Texts> TableReader::texts(std::string_view key, Need need) {
  const toml::node* node = find(key, need);
  if (node == nullptr) return std::nullopt;
  const toml::array* array = node->as_array();
  if (array == nullptr) {
    wrongType(key, "an array of texts");
    return std::nullopt;
  }
  if (!array->empty() && !array->is_homogeneous<std::string>()) {
    fault(key, std::string(key) + " holds something else than texts");
    return std::nullopt;
  }
  Texts texts;
  for (const toml::node& element : *array) texts.emplace_back(**element.as_string());
  return texts;
}

std::vector<const toml::table*> TableReader::tables(std::string_view key) {
  const toml::node* node = find(key, Need::required);
  if (node == nullptr) return {};
  const toml::array* array = node->as_array();
  if (array == nullptr || !array->is_homogeneous<toml::table>()) {
    wrongType(key, "one or more tables, each in two pairs of brackets");
    return {};
  }
  std::vector<const toml::table*> tables;
  for (const toml::node& element : *array) tables.push_back(element.as_table());
  return tables;
}

const toml::node* TableReader::find(std::string_view key, Need need) {
  asked_.push_back(key);
  const toml::node* node = table_.get(key);
  if (node == nullptr && need == Need::required) fault(key, std::string(key) + " is missing");
  return node;
}

void TableReader::refuseOtherKeys(std::string_view owner) {
  for (const auto& [key, node] : table_) {
    if (std::ranges::find(asked_, key.str()) != asked_.end()) continue;
    fault(key.str(), std::string(owner) + " has no key \"" + std::string(key.str()) + '"');
  }
}

void TableReader::fault(std::string_view key, const std::string& text, TnStatus status) {
  faults_.push_back({line(key), subject_.empty() ? text : subject_ + ": " + text, status});
}

void TableReader::wrongType(std::string_view key, std::string_view wanted) {
  fault(key, std::string(key) + " is " + std::string(nameOf(table_.get(key)->type())) +
                 "; it has to be " + std::string(wanted));
}

uint32_t TableReader::line(std::string_view key) const {
  const auto entry = table_.find(key);
  return entry == table_.cend() ? table_.source().begin.line : entry->first.source().begin.line;
}

}  // namespace tn::cataloguefile
