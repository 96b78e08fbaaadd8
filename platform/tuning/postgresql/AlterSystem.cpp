#include "tuning/postgresql/AlterSystem.h"

namespace tn::postgresql {

std::string AlterSystem::quotedName(std::string_view name) {
  std::string quoted = "\"";
  for (const char c : name) {
    switch (c) {
      case '.':
        quoted += "\".\"";
        break;
      case '"':
        quoted += "\"\"";
        break;
      default:
        quoted += c;
    }
  }
  return quoted + '"';
}

std::string AlterSystem::set(std::string_view name, const std::vector<std::string>& literals) {
  std::string statement = "ALTER SYSTEM SET " + quotedName(name) + " = ";
  for (std::size_t i = 0; i < literals.size(); ++i) {
    if (i > 0) statement += ", ";
    statement += literals[i];
  }
  return statement;
}

std::string AlterSystem::reset(std::string_view name) {
  return "ALTER SYSTEM RESET " + quotedName(name);
}

}  // namespace tn::postgresql
