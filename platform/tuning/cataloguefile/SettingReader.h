// One [[category.setting]] of a catalogue file: its keys, and the rules that they have to keep for
// the setting to be shown, changed, exported and imported like any other.
#ifndef KNOB_CATALOGUEFILE_SETTING_READER_H
#define KNOB_CATALOGUEFILE_SETTING_READER_H

#include <deque>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "tuning/cataloguefile/LineText.h"
#include "tuning/cataloguefile/TableReader.h"
#include "tuning/registry/Catalogue.h"

namespace tn::cataloguefile {

// What settings refer to that no document holds in this form. Growing moves nothing.
struct MadeTexts {
  std::deque<std::string> defaults;
  std::deque<TableReader::Texts> words;
};

class SettingReader {
 public:
  // All three must outlive the reader, table and texts the setting too.
  SettingReader(const toml::table& table, MadeTexts& made, Faults& faults);

  // With faults, a setting of which nothing is to be used but the id (0 if that is wrong) and the
  // name.
  registry::CatalogueSetting read();
  // For faults that come to light beside other settings.
  TableReader& table() { return table_; }

 private:
  struct Kind;
  static const Kind kKinds[];

  void readId();
  void readRestart();
  void readSide();
  void readKind();

  void readBoolean();
  void readInteger();
  void readText();
  void readOneOf();
  void readAnyOf();

  std::optional<int32_t> number(std::string_view key, int32_t least, int32_t most);
  std::optional<int32_t> integerMaximum();
  bool wordsAreSound(std::string_view key, const TableReader::Texts& words, const LineRule& rule);
  bool readChoices();
  std::optional<std::string> positions(const TableReader::Texts& chosen);
  // The default in canonical form, held against the rules for every value of the setting.
  void setDefault(std::string canonical, const std::string& shown);

  TableReader table_;
  MadeTexts& made_;
  registry::CatalogueSetting setting_{};
};

}  // namespace tn::cataloguefile

#endif
