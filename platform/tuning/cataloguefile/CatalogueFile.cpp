#include "tuning/cataloguefile/CatalogueFile.h"

#include <algorithm>
#include <map>
#include <optional>
#include <string_view>
#include <utility>
#include <vector>

#include "tuning/EtcdName.h"
#include "tuning/cataloguefile/CatalogueText.h"
#include "tuning/cataloguefile/LineText.h"
#include "tuning/cataloguefile/SettingReader.h"
#include "tuning/cataloguefile/TableReader.h"
#include "tuning/cataloguefile/Toml.h"

namespace tn::cataloguefile {
namespace {

using registry::CatalogueCategory;
using registry::CatalogueSetting;

constexpr LineRule kNameRule{TN_NAME_SIZE - 1, "\"\\"};

// A key has no line end, so this also bounds how deep a hostile one can nest tables (see Toml.h).
constexpr size_t kLongestLine = 8192;

// What a catalogue refers to; it shares the ownership of all of it.
struct Tables {
  std::optional<CatalogueText> file;
  toml::table document;
  MadeTexts made;
  std::vector<std::vector<CatalogueSetting>> settings;  // by category
  std::vector<CatalogueCategory> categories;
  std::vector<const CatalogueSetting*> settingsById;
  std::optional<registry::Catalogue> catalogue;
};

class Reader {
 public:
  explicit Reader(CatalogueFile& file) : file_(file), tables_(std::make_shared<Tables>()) {}

  void read(const std::string& path);

 private:
  bool parse(const std::string& text);
  void readStore(TableReader& top, const std::string& path);
  void readCategory(const toml::table& table);
  std::vector<CatalogueSetting> readSettings(TableReader& category);
  // A fault if another one has it.
  void claimId(TableReader& setting, int32_t id);
  void claimName(TableReader& owner, std::string_view kind, std::string_view name);
  std::shared_ptr<const registry::Catalogue> makeCatalogue();

  CatalogueFile& file_;
  std::shared_ptr<Tables> tables_;
  std::map<int32_t, uint32_t> idLines_;
  std::map<std::wstring, uint32_t> nameLines_;  // by kind and name in upper case
};

// 0 if there is none.
uint32_t findLongLine(std::string_view text) {
  uint32_t line = 1;
  for (size_t start = 0; start < text.size(); ++line) {
    const size_t end = std::min(text.find('\n', start), text.size());
    if (end - start > kLongestLine) return line;
    start = end + 1;
  }
  return 0;
}

// A word and a colon, as server names begin with. "./a:b" is a path.
bool hasScheme(std::string_view store) {
  const std::wstring text = upperCase(store);
  const size_t end = text.find_first_not_of(L"ABCDEFGHIJKLMNOPQRSTUVWXYZ");
  return end != text.npos && end > 0 && text[end] == L':';
}

std::string besideFile(std::string_view store, const std::string& path) {
  const size_t slash = path.rfind('/');
  const bool relative = !store.starts_with('/') && slash != path.npos;
  return (relative ? path.substr(0, slash + 1) : "") + std::string(store);
}

void Reader::read(const std::string& path) {
  const auto& text = tables_->file.emplace(path, file_.faults).text();
  if (!text || !parse(*text)) return;

  TableReader top(tables_->document, file_.faults);
  file_.title = top.oneLine("title", kNameRule);
  readStore(top, path);
  const auto categories = top.tables("category");
  for (size_t i = 0; i < categories.size(); ++i) {
    if (i == TN_CATEGORY_CAPACITY) {
      file_.faults.push_back({categories[i]->source().begin.line, "more than 30 categories"});
    }
    readCategory(*categories[i]);
  }
  top.refuseOtherKeys("a catalogue");
  std::ranges::stable_sort(file_.faults, {}, &Fault::line);
  if (file_.faults.empty()) file_.catalogue = makeCatalogue();
}

bool Reader::parse(const std::string& text) {
  if (const uint32_t line = findLongLine(text)) {
    file_.faults.push_back({line,
                            "the line has more than " + std::to_string(kLongestLine) + " bytes",
                            TN_CATALOGUE_NOT_TOML});
    return false;
  }
  toml::parse_result parsed = toml::parse(std::string_view(text));
  if (!parsed) {
    const toml::parse_error& error = parsed.error();
    file_.faults.push_back({error.source().begin.line,
                            "not TOML: " + std::string(error.description()),
                            TN_CATALOGUE_NOT_TOML});
    return false;
  }
  tables_->document = std::move(parsed).table();
  return true;
}

void Reader::readStore(TableReader& top, const std::string& path) {
  const auto store = top.text("store");
  if (!store) return;
  const bool holdsNul = store->find('\0') != store->npos;
  if (EtcdName::begins(*store) && !holdsNul) {
    file_.store = *store;
    if (!EtcdName::parse(*store)) {
      top.fault("store",
                "the store is no valid address in etcd (etcd://HOST:PORT/PREFIX; percent-encode "
                "slashes, colons and at signs in the user name and password)",
                TN_CATALOGUE_STORE_UNKNOWN);
    }
  } else if (store->empty() || hasScheme(*store) || holdsNul) {
    top.fault("store",
              "the store is neither the path of a file nor an address that begins with etcd:// or "
              "etcds://",
              TN_CATALOGUE_STORE_UNKNOWN);
  } else {
    file_.store = besideFile(*store, path);
  }
}

void Reader::readCategory(const toml::table& table) {
  TableReader category(table, file_.faults);
  const auto raw = table["name"].value_exact<std::string_view>();
  category.setSubject(raw ? "category " + quoted(*raw) : "a category");
  const std::string_view name = category.oneLine("name", kNameRule);
  claimName(category, "category", name);
  tables_->settings.push_back(readSettings(category));
  category.refuseOtherKeys("a category");
  tables_->categories.push_back(
      {static_cast<int32_t>(tables_->categories.size()) + 1, name, tables_->settings.back()});
}

std::vector<CatalogueSetting> Reader::readSettings(TableReader& category) {
  std::vector<CatalogueSetting> settings;
  for (const toml::table* table : category.tables("setting")) {
    SettingReader reader(*table, tables_->made, file_.faults);
    settings.push_back(reader.read());
    claimId(reader.table(), settings.back().id);
    claimName(reader.table(), "setting", settings.back().name);
    if (settings.size() == TN_SETTING_CAPACITY + 1) {
      file_.faults.push_back(
          {table->source().begin.line, category.subject() + ": more than 50 settings"});
    }
  }
  return settings;
}

void Reader::claimId(TableReader& setting, int32_t id) {
  if (id == 0) return;
  const auto [taken, isFirst] = idLines_.emplace(id, setting.line("id"));
  if (!isFirst)
    setting.fault("id", "the id is used in line " + std::to_string(taken->second) + " already");
}

void Reader::claimName(TableReader& owner, std::string_view kind, std::string_view name) {
  if (name.empty()) return;
  const auto [taken, isFirst] = nameLines_.emplace(
      upperCase(std::string(kind) + ' ' + std::string(name)), owner.line("name"));
  if (isFirst) return;
  owner.fault("name", "the name is used in line " + std::to_string(taken->second) + " already");
}

std::shared_ptr<const registry::Catalogue> Reader::makeCatalogue() {
  auto& byId = tables_->settingsById;
  for (const CatalogueCategory& category : tables_->categories) {
    for (const CatalogueSetting& setting : category.settings) byId.push_back(&setting);
  }
  std::ranges::sort(byId, {}, &CatalogueSetting::id);
  tables_->catalogue.emplace(tables_->categories, byId);
  return {tables_, &*tables_->catalogue};
}

}  // namespace

CatalogueFile readCatalogueFile(const std::string& path) {
  CatalogueFile file;
  Reader(file).read(path);
  return file;
}

// Faults of the first kinds come alone; a store of no known kind matters least.
TnStatus statusOf(const Faults& faults) {
  const auto first = std::ranges::min_element(faults, {}, &Fault::status);
  return first == faults.end() ? TnStatus{TN_SUCCESS} : first->status;
}

}  // namespace tn::cataloguefile
