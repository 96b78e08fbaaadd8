#include "kz/i18n/Locale.h"

#include <algorithm>
#include <cstdlib>

namespace kz::i18n {
namespace {

// The name becomes part of a file name, so nothing but letters and digits may be in it.
bool isPlain(std::string_view text) {
  return !text.empty() && std::all_of(text.begin(), text.end(), [](char character) {
    return (character >= 'a' && character <= 'z') || (character >= 'A' && character <= 'Z') ||
           (character >= '0' && character <= '9');
  });
}

const char* nameInEnvironment() {
  for (const char* const variable : {"LC_ALL", "LC_MESSAGES", "LANG"}) {
    const char* const value = std::getenv(variable);
    if (value != nullptr && *value != '\0') return value;
  }
  return "C";
}

}  // namespace

Locale::Locale(std::string_view name) {
  name = name.substr(0, name.find_first_of(".@"));
  if (name == "C" || name == "POSIX") return;
  const std::size_t underscore = name.find('_');
  const std::string_view language = name.substr(0, underscore);
  if (!isPlain(language)) return;
  const std::string suffix = std::string("_").append(language);
  if (underscore != std::string_view::npos && isPlain(name.substr(underscore + 1))) {
    suffixes_.push_back(std::string(suffix).append(name.substr(underscore)));
  }
  suffixes_.push_back(suffix);
}

const Locale& Locale::getDefault() {
  static const Locale locale(nameInEnvironment());
  return locale;
}

}  // namespace kz::i18n
