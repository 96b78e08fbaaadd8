// The statements that change the server's own configuration. Names are quoted here; values come as
// literals already, since only a connection knows how its server reads one.
#ifndef KNOB_POSTGRESQL_ALTER_SYSTEM_H
#define KNOB_POSTGRESQL_ALTER_SYSTEM_H

#include <string>
#include <string_view>
#include <vector>

namespace tn::postgresql {

class AlterSystem {
 public:
  // Several literals are the names of a list, one each: a list given as one literal would be stored
  // as one name, and an empty one as an empty name, with which a server does not start.
  static std::string set(std::string_view name, const std::vector<std::string>& literals);
  // Takes away what ALTER SYSTEM has set before.
  static std::string reset(std::string_view name);
  // False for a name that no configuration file can hold: the server takes the statement all the
  // same, and then cannot read its files any more.
  static bool canName(std::string_view name);
  // A setting of an extension has a name of several parts with dots between them, which are quoted
  // one by one.
  static std::string quotedName(std::string_view name);
};

}  // namespace tn::postgresql

#endif
