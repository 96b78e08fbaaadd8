// Giving a setting a new value, and the two fixed rules about single settings.
#include <algorithm>
#include <memory>

#include "commands/CommandProcessor.h"
#include "util/Utils.h"

namespace {

constexpr int kRestartSettings[] = {
    26,  27,  44,  45,  48,  49,  57,  58,  61,  62,  64,  65,  66,  67,  68,  69,  73,  74,
    85,  86,  87,  99,  100, 103, 110, 111, 112, 114, 115, 117, 118, 120, 121, 122, 123, 124,
    125, 126, 127, 130, 132, 133, 134, 136, 137, 138, 140, 144, 145, 146, 147, 148, 149, 168,
    169, 170, 171, 172, 173, 174, 175, 177, 178, 179, 183, 201, 203, 204, 205, 210, 300, 301};

constexpr int kEmptyValueSetting = 74;

}  // namespace

void CommandProcessor::setValue(int id, StringList* values, bool json) {
  logger->finer("Inside setValue() for ID: " + kz::String::valueOf(id));
  const kz::Reference<SettingInfo> info(configHelper->getSettingInfo(id, true));
  kz::String const& first = *values->get(0);
  if (info->type == SettingInfo::INTEGER) {
    configHelper->setLongValue(id, Utils::parseLong(first), SvcConfigHelper::CURRENT_VALUE);
  } else if (info->type == SettingInfo::BOOLEAN) {
    configHelper->setBooleanValue(id, getBooleanFromStr(id, first), SvcConfigHelper::CURRENT_VALUE);
  } else if (info->type == SettingInfo::STRING) {
    // A settings file holds a value with blanks inside as several words.
    const bool joined = importing() && values->size() > 1;
    configHelper->setStringValue(id, joined ? Utils::convertStringListToString(values) : first,
                                 SvcConfigHelper::CURRENT_VALUE);
  } else {
    const std::unique_ptr<int[]> items(Utils::convertStringListToIntArray(values));
    configHelper->setSelectionValue(id, values->size(), items.get(),
                                    SvcConfigHelper::CURRENT_VALUE);
  }
  if (!importing()) confirmUpdate(id, json);
}

void CommandProcessor::confirmUpdate(int id, bool json) {
  kz::String text = messages->getResStr("INFO_STG_UPDATED", id);
  if (requiresRestart(id)) text += " " + messages->getResStr("INFO_RESTART");
  out->println(json ? "\t\"status\": \"" + text + "\"" : text);
}

bool CommandProcessor::getBooleanFromStr(int id, kz::String text) {
  if (text.equalsIgnoreCase(configHelper->getBooleanTrueStr(id)) || text.equalsIgnoreCase("true") ||
      text.equals("1")) {
    return true;
  }
  if (text.equalsIgnoreCase(configHelper->getBooleanFalseStr(id)) ||
      text.equalsIgnoreCase("false") || text.equals("0")) {
    return false;
  }
  throw SvcException(messages->getResStr("INVALID_SETTING_VALUE"), SvcException::NOT_A_BOOLEAN);
}

bool CommandProcessor::requiresRestart(int id) {
  return std::find(std::begin(kRestartSettings), std::end(kRestartSettings), id) !=
         std::end(kRestartSettings);
}

bool CommandProcessor::setttingSupportsEmptyValue(int id) { return id == kEmptyValueSetting; }
