// The text of a setting that holds a list of names (search_path, shared_preload_libraries, ...).
//
// The server keeps such a list as one text: names with commas between them, in double quotes where
// they would be misread, a double quote within doubled. People see and type the bare names with a
// comma and a blank between them, quoted only where a name holds a comma or a double quote or has
// blanks at its ends.
#ifndef KNOB_POSTGRESQL_NAME_LIST_H
#define KNOB_POSTGRESQL_NAME_LIST_H

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tn::postgresql {

class NameList {
 public:
  using Names = std::vector<std::string>;

  // How a setting's value is a list.
  enum class Kind {
    none,         // it is not
    names,        // names as they are: libraries, folders
    identifiers,  // names of database objects: the server reads an unquoted one in lower case
  };
  static Kind kindOf(std::string_view settingName);

  // The names in the server's text. A text that is no proper list is not there.
  static std::optional<Names> ofServer(std::string_view text, Kind kind);
  // The names in a text that a person typed, quoted or bare. Empty for an empty text; not there
  // when a quote is not closed or text follows one, or a name is empty. Of identifiers one in
  // quotes may be: a search_path of "" names no schema.
  static std::optional<Names> ofPerson(std::string_view text, Kind kind);
  static std::string shown(const Names& names);
  // As the server writes a list, whatever its kind: only names that are plain words are bare.
  static std::string stored(const Names& names);
};

}  // namespace tn::postgresql

#endif
