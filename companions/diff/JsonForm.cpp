#include "diff/JsonForm.h"

#include <nlohmann/json.hpp>

namespace diff {
namespace {

using nlohmann::json;

constexpr char kNoExport[] = "it is JSON, but not an export of settings";
constexpr size_t kMembersOfSetting = 9;

Setting settingOf(const json& members, const std::string& category) {
  // Members that are there twice are found here too: they leave too few.
  if (members.size() != kMembersOfSetting) {
    throw Trouble(
        "the setting " + members.at("name").get<std::string>() +
        " has members that no setting has: a double quote in a value has broken the file");
  }
  for (const char* const unread : {"type", "range", "options", "description", "clientserver"}) {
    (void)members.at(unread);
  }
  return {members.at("id").get<int>(), members.at("name").get<std::string>(), category,
          members.at("value").get<std::string>(), members.at("default_values").get<std::string>()};
}

}  // namespace

Settings JsonForm::parse(std::string_view content) {
  const json file = json::parse(content, nullptr, false);
  if (file.is_discarded()) {
    throw Trouble("it is not valid JSON: it was cut off, or a value in it holds a double quote");
  }
  try {
    Settings settings;
    for (const json& category : file.at("category_list")) {
      for (const json& members : category.at("settings_list")) {
        settings.push_back(settingOf(members, category.at("name").get<std::string>()));
      }
    }
    return settings;
  } catch (const json::exception&) {
    throw Trouble(kNoExport);
  }
}

}  // namespace diff
