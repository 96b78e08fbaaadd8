#include "tuning/postgresql/AlterSystem.h"

#include <algorithm>

namespace tn::postgresql {
namespace {

bool beginsIdentifier(char c) {
  return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || c == '_' ||
         static_cast<unsigned char>(c) >= 0x80;
}

bool continuesIdentifier(char c) {
  return beginsIdentifier(c) || (c >= '0' && c <= '9') || c == '$';
}

bool isIdentifier(std::string_view text) {
  return !text.empty() && beginsIdentifier(text.front()) &&
         std::all_of(text.begin(), text.end(), continuesIdentifier);
}

}  // namespace

bool AlterSystem::canName(std::string_view name) {
  const std::size_t dot = name.find('.');
  return isIdentifier(name.substr(0, dot)) &&
         (dot == std::string_view::npos || isIdentifier(name.substr(dot + 1)));
}

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
