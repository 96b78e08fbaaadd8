// The keys of one TOML table, asked for one by one. What is asked for and missing or of another
// type, and what is there and was never asked for, becomes a fault in its line, so that the readers
// of categories and settings only say what they want.
#ifndef KNOB_CATALOGUEFILE_TABLE_READER_H
#define KNOB_CATALOGUEFILE_TABLE_READER_H

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "tuning/cataloguefile/Faults.h"
#include "tuning/cataloguefile/LineText.h"
#include "tuning/cataloguefile/Toml.h"

namespace tn::cataloguefile {

enum class Need { required, optional };

class TableReader {
 public:
  using Texts = std::vector<std::string_view>;

  // The table and the faults must outlive the reader.
  TableReader(const toml::table& table, Faults& faults) : table_(table), faults_(faults) {}

  // What the faults are about, such as "setting 1001".
  void setSubject(std::string subject) { subject_ = std::move(subject); }
  const std::string& subject() const { return subject_; }

  // Nothing for a key that is missing or of another type. Texts are the document's.
  std::optional<std::string_view> text(std::string_view key, Need need = Need::required);
  // Of a text that has to be there and to keep the rule. Empty when it is missing.
  std::string_view oneLine(std::string_view key, const LineRule& rule);
  std::optional<int64_t> integer(std::string_view key, Need need = Need::required);
  std::optional<bool> boolean(std::string_view key, Need need = Need::required);
  std::optional<Texts> texts(std::string_view key, Need need = Need::required);
  std::vector<const toml::table*> tables(std::string_view key);
  // Of any type; null when it is missing, which is a fault too.
  const toml::node* find(std::string_view key, Need need);

  // To be called when every key was asked for. `owner` has the keys: "a catalogue", say.
  void refuseOtherKeys(std::string_view owner);

  // A fault in the line of the key, or of the table if it has no such key.
  void fault(std::string_view key, const std::string& text, TnStatus status = TN_CATALOGUE_WRONG);
  void wrongType(std::string_view key, std::string_view wanted);
  uint32_t line(std::string_view key) const;

 private:
  template <typename T>
  std::optional<T> value(std::string_view key, Need need, std::string_view wanted);

  const toml::table& table_;
  Faults& faults_;
  std::string subject_;
  std::vector<std::string_view> asked_;
};

}  // namespace tn::cataloguefile

#endif
