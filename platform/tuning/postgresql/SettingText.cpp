#include "tuning/postgresql/SettingText.h"

#include <algorithm>
#include <string_view>
#include <utility>

#include "tuning/Characters.h"
#include "tuning/postgresql/KnownSettings.h"

namespace tn::postgresql {
namespace {

void addSentence(std::string& text, std::string_view sentence) {
  if (sentence.empty()) return;
  if (!text.empty()) text += ' ';
  text += sentence;
}

// No line end or other control character, and no backslash: JSON output escapes neither here.
std::string onOneLine(std::string text) {
  constexpr std::string_view kInstead = "(backslash)";
  std::replace_if(
      text.begin(), text.end(), [](char c) { return isControl(c) || c == '\t'; }, ' ');
  std::size_t found = 0;
  while ((found = text.find('\\', found)) != std::string::npos) text.replace(found, 1, kInstead);
  return text;
}

std::string_view serverOrigin(const Setting& setting) {
  if (setting.ofCommandLine) return "The server's command line gives the value; change it there.";
  if (setting.changeMayWait) return "A changed value may be waiting for a restart of the server.";
  return {};
}

}  // namespace

std::string SettingText::of(const Setting& setting) { return of(setting, serverOrigin(setting)); }

std::string SettingText::of(const Setting& setting, std::string_view origin) {
  std::string text;
  addSentence(text, setting.shortText);
  addSentence(text, setting.longText);
  if (!setting.unit.empty()) addSentence(text, "Unit: " + std::string(setting.unit) + ".");
  if (setting.real) {
    addSentence(text, "Range: " + std::string(setting.minimum) + " to " +
                          std::string(setting.maximum) + ".");
  }
  const bool announced = KnownSettings::announcesRestart(setting.id);
  if (setting.needsRestart && !announced) {
    addSentence(text, "A change takes effect when the server is restarted.");
  }
  if (!setting.needsRestart && announced) {
    addSentence(text, "This server takes a change without a restart.");
  }
  addSentence(text, origin);
  if (!setting.currentIsKnown) {
    addSentence(text,
                "This session has its own value, and the server's cannot be told: what is shown is"
                " what the configuration files give as far as they can be read, else the default.");
  }
  return onOneLine(std::move(text));
}

}  // namespace tn::postgresql
