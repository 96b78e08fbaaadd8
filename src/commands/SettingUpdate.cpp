// Giving a setting a new value.
#include <memory>

#include "commands/CommandProcessor.h"
#include "util/Utils.h"

void CommandProcessor::setValue(int id, StringList* values, bool json) {
  logger->finer("Inside setValue() for ID: " + kz::String::valueOf(id));
  const kz::Reference<SettingInfo> info(configHelper->getSettingInfo(id, true));
  const kz::String& first = *values->get(0);
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

bool CommandProcessor::requiresRestart(int id) { return SettingInfo::announcesRestart(id); }

bool CommandProcessor::setttingSupportsEmptyValue(int id) { return SettingInfo::mayBeEmpty(id); }
