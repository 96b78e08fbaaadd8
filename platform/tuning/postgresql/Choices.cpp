#include "tuning/postgresql/Choices.h"

#include <algorithm>

#include "tuning/postgresql/KnownSettings.h"

namespace tn::postgresql {
namespace {

// Servers take it wherever a level of messages is set, and do not always list it.
constexpr std::string_view kTakenUnlisted = "info";

bool holds(const std::vector<std::string>& texts, std::string_view text) {
  return std::find(texts.begin(), texts.end(), text) != texts.end();
}

std::vector<std::string> partsOf(std::string_view list) {
  std::vector<std::string> parts;
  for (;;) {
    const std::size_t comma = list.find(',');
    parts.emplace_back(list.substr(0, comma));
    if (comma == std::string_view::npos) return parts;
    list.remove_prefix(comma + 1);
  }
}

}  // namespace

std::vector<Choice> Choices::of(std::string_view settingName,
                                const std::vector<std::string>& listed) {
  const KnownSetting* const known = KnownSettings::find(settingName);
  const std::vector<std::string> order =
      known && !known->choices.empty() ? partsOf(known->choices) : listed;
  std::vector<Choice> choices(order.size());
  std::transform(order.begin(), order.end(), choices.begin(), [&listed](const std::string& text) {
    return Choice{text, text == kTakenUnlisted || holds(listed, text)};
  });
  for (const std::string& text : listed) {
    if (!holds(order, text)) choices.push_back({text});
  }
  while (!choices.empty() && !choices.back().available) choices.pop_back();
  return choices;
}

std::string Choices::shown(const Choice& choice) {
  return choice.available ? choice.text : choice.text + " (not on this server)";
}

}  // namespace tn::postgresql
