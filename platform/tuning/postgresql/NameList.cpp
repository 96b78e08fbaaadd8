#include "tuning/postgresql/NameList.h"

#include <algorithm>
#include <iterator>

#include "tuning/Characters.h"

namespace tn::postgresql {
namespace {

constexpr std::string_view kBlanks = " \t\n\r\f\v";

struct ListSetting {
  std::string_view name;
  NameList::Kind kind;
};

constexpr ListSetting kListSettings[] = {
    {"search_path", NameList::Kind::identifiers},
    {"temp_tablespaces", NameList::Kind::identifiers},
    {"shared_preload_libraries", NameList::Kind::names},
    {"session_preload_libraries", NameList::Kind::names},
    {"local_preload_libraries", NameList::Kind::names},
    {"unix_socket_directories", NameList::Kind::names},
    {"oauth_validator_libraries", NameList::Kind::names},
    {"output_plugin_libraries", NameList::Kind::names},
};

struct Item {
  std::string name;
  bool quoted = false;
};

void skipBlanks(std::string_view& text) {
  text.remove_prefix(std::min(text.find_first_not_of(kBlanks), text.size()));
}

// Takes a quoted name from the front of the text; false when its quote is not closed.
bool takeQuoted(std::string_view& text, std::string& name) {
  text.remove_prefix(1);
  while (!text.empty()) {
    const bool quote = text.front() == '"';
    if (quote && !text.substr(1).starts_with('"')) {
      text.remove_prefix(1);
      return true;
    }
    name += text.front();
    text.remove_prefix(quote ? 2 : 1);
  }
  return false;
}

void takeBare(std::string_view& text, std::string& name) {
  std::string_view bare = text.substr(0, text.find(','));
  text.remove_prefix(bare.size());
  bare = bare.substr(0, bare.find_last_not_of(kBlanks) + 1);
  name = bare;
}

std::optional<std::vector<Item>> split(std::string_view text) {
  std::vector<Item> items;
  skipBlanks(text);
  if (text.empty()) return items;
  for (;;) {
    Item item;
    skipBlanks(text);
    item.quoted = text.starts_with('"');
    if (!item.quoted) {
      takeBare(text, item.name);
    } else if (!takeQuoted(text, item.name)) {
      return std::nullopt;
    }
    items.push_back(std::move(item));
    skipBlanks(text);
    if (text.empty()) return items;
    if (text.front() != ',') return std::nullopt;
    text.remove_prefix(1);
  }
}

std::string inLowerCase(std::string text) {
  std::ranges::transform(text, text.begin(), lower);
  return text;
}

bool needsQuotes(std::string_view name) {
  return name.empty() || name.find_first_of(",\"") != std::string_view::npos ||
         kBlanks.find(name.front()) != std::string_view::npos ||
         kBlanks.find(name.back()) != std::string_view::npos;
}

bool isPlainWord(std::string_view name) {
  const auto begins = [](char c) { return (c >= 'a' && c <= 'z') || c == '_'; };
  return !name.empty() && begins(name.front()) &&
         std::all_of(name.begin(), name.end(),
                     [begins](char c) { return begins(c) || (c >= '0' && c <= '9'); });
}

std::string quoted(std::string_view name) {
  std::string text = "\"";
  for (const char c : name) {
    if (c == '"') text += c;
    text += c;
  }
  return text + '"';
}

template <typename Condition>
std::string joined(const NameList::Names& names, Condition inQuotes) {
  std::string text;
  for (const std::string& name : names) {
    if (!text.empty()) text += ", ";
    text += inQuotes(name) ? quoted(name) : name;
  }
  return text;
}

}  // namespace

NameList::Kind NameList::kindOf(std::string_view settingName) {
  const auto found =
      std::find_if(std::begin(kListSettings), std::end(kListSettings),
                   [settingName](const ListSetting& s) { return s.name == settingName; });
  return found == std::end(kListSettings) ? Kind::none : found->kind;
}

std::optional<NameList::Names> NameList::ofServer(std::string_view text, Kind kind) {
  auto items = split(text);
  if (!items) return std::nullopt;
  Names names;
  for (Item& item : *items) {
    const bool folds = kind == Kind::identifiers && !item.quoted;
    names.push_back(folds ? inLowerCase(std::move(item.name)) : std::move(item.name));
  }
  return names;
}

std::optional<NameList::Names> NameList::ofPerson(std::string_view text, Kind kind) {
  auto items = split(text);
  if (!items) return std::nullopt;
  Names names;
  for (Item& item : *items) {
    if (item.name.empty() && !(item.quoted && kind == Kind::identifiers)) return std::nullopt;
    names.push_back(std::move(item.name));
  }
  return names;
}

std::string NameList::shown(const Names& names) {
  return joined(names, [](std::string_view name) { return needsQuotes(name); });
}

std::string NameList::stored(const Names& names) {
  return joined(names, [](std::string_view name) { return !isPlainWord(name); });
}

}  // namespace tn::postgresql
