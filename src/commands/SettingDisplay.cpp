// What the program tells about one setting: name, id, value, range or choices, default, description
// and side.
#include "commands/CommandProcessor.h"
#include "util/Utils.h"

namespace {

struct SymbolicMaximum {
  long value;
  const char* key;
};
constexpr SymbolicMaximum kSymbolicMaxima[] = {
    {-1, "INFO_MAX_MEM"}, {-2, "INFO_MAX_DISK"}, {-129, "INFO_MAX_MEM_DISK"}};

const char* symbolicMaximumKey(long maximum) {
  for (const SymbolicMaximum& symbolic : kSymbolicMaxima) {
    if (symbolic.value == maximum) return symbolic.key;
  }
  return nullptr;
}

bool isSelection(int type) {
  return type == SettingInfo::SINGLE_SELECTION || type == SettingInfo::MULTIPLE_SELECTION;
}

kz::String jsonMember(const char* name, const kz::String& text) {
  return kz::String("\t\"") + name + "\": \"" + text + "\",";
}

}  // namespace

kz::String CommandProcessor::getValue(int id, int type, int which) {
  switch (type) {
    case SettingInfo::BOOLEAN:
      return configHelper->getBooleanValue(id, which);
    case SettingInfo::INTEGER:
      return configHelper->getLongValue(id, which);
    case SettingInfo::STRING:
      return configHelper->getStringValue(id, which);
    case SettingInfo::SINGLE_SELECTION:
    case SettingInfo::MULTIPLE_SELECTION: {
      const kz::Reference<StringList> items(configHelper->getSelectionValues(id, which));
      return Utils::createDelimitedStr(items.get(), " ");
    }
    default:
      return kz::String();
  }
}

kz::String CommandProcessor::getMaxRangeStr(long maximum) {
  const char* const key = symbolicMaximumKey(maximum);
  return key != nullptr ? messages->getResStr(key) : kz::String::valueOf(maximum);
}

void CommandProcessor::printIDDetails(int id, bool json, int mode) {
  logger->finer("Inside printIDDetails() for ID: " + kz::String::valueOf(id));
  const kz::Reference<SettingInfo> info(configHelper->getSettingInfo(id, true));
  if (json) {
    printIDDetails_json(*info, mode);
    return;
  }
  formatter->putHeader(info->name, 0);
  formatter->putData(tagIdText + " " + kz::String::valueOf(id), 1);
  formatter->putData(tagValueText + " " + getValue(id, info->type, SvcConfigHelper::CURRENT_VALUE),
                     1);
  printSettingOptions(id, info->type);
  const kz::String defaultValue = getValue(id, info->type, SvcConfigHelper::DEFAULT_VALUE);
  formatter->putData(messages->getResStr("TAG_DEF_VALUE", defaultValue.getBytes().c_str()), 1);
  const kz::String help = configHelper->getSettingHelp(id);
  const std::string& side = sideText(info->clientServer != 0);
  formatter->putData(messages->getResStr("TAG_DESC", side.c_str(), help.getBytes().c_str()), 1);
}

// Held like the tags: an export shows it with every setting.
const std::string& CommandProcessor::sideText(bool ofServer) {
  std::string& text = sideTexts[ofServer ? 1 : 0];
  if (text.empty()) text = messages->getResStr(ofServer ? "HDR_SERVER" : "HDR_CLIENT").getBytes();
  return text;
}

void CommandProcessor::printSettingOptions(int id, int type) {
  if (type == SettingInfo::INTEGER) {
    int maximum = 0;
    int minimum = 0;
    configHelper->getValueLimit(id, &maximum, &minimum);
    const kz::String maximumText = getMaxRangeStr(maximum);
    formatter->putData(messages->getResStr("TAG_RANGE", minimum, maximumText.getBytes().c_str()),
                       1);
  } else if (type == SettingInfo::BOOLEAN) {
    kz::String trueWord;
    kz::String falseWord;
    configHelper->getBooleanStrings(id, trueWord, falseWord);
    formatter->putData(messages->getResStr("TAG_BOOL_OPTIONS", (trueWord + "\t").getBytes().c_str(),
                                           falseWord.getBytes().c_str()),
                       1);
  } else if (isSelection(type)) {
    const kz::Reference<StringList> items(configHelper->getAllPossibleSelections(id));
    formatter->putData(messages->getResStr("TAG_OPTIONS"), 1);
    for (int i = 0; i < items->size(); ++i) {
      formatter->putData(kz::String::valueOf(i) + "\t" + *items->get(i), 2);
    }
  }
}

void CommandProcessor::putJsonLine(kz::String line, int mode) {
  if (mode == EXPORT_LAYOUT) {
    formatter->putData("\t\t" + line, 0);
  } else if (mode == DISPLAY_LAYOUT) {
    out->println(line);
  }
}

void CommandProcessor::printIDDetails_json(const SettingInfo& info, int mode) {
  kz::String current = getValue(info.id, info.type, SvcConfigHelper::CURRENT_VALUE);
  kz::String defaultValue = getValue(info.id, info.type, SvcConfigHelper::DEFAULT_VALUE);
  kz::String help = configHelper->getSettingHelp(info.id);
  Utils::addBackslashChars(current, '\\');
  Utils::addBackslashChars(defaultValue, '\\');
  Utils::addBackslashChars(help, '"');

  putJsonLine(jsonMember("name", info.name), mode);
  putJsonLine("\t\"id\": " + kz::String::valueOf(info.id) + ",", mode);
  putJsonLine(jsonMember("value", current), mode);
  printSettingOptions_json(info.id, info.type, mode);
  putJsonLine(jsonMember("default_values", defaultValue), mode);
  putJsonLine(jsonMember("description", help), mode);
  putJsonLine(
      kz::String("\t\"clientserver\": \"") + (info.clientServer != 0 ? "Server" : "Client") + "\"",
      mode);
}

void CommandProcessor::printSettingOptions_json(int id, int type, int mode) {
  const kz::String typeLine = "\t\"type\": " + kz::String::valueOf(type) + ",";
  if (type == SettingInfo::INTEGER) {
    int maximum = 0;
    int minimum = 0;
    configHelper->getValueLimit(id, &maximum, &minimum);
    // Bare on the screen, but a symbolic maximum is a text and stays one.
    const bool quoted = mode == EXPORT_LAYOUT || symbolicMaximumKey(maximum) != nullptr;
    const char* const quote = quoted ? "\"" : "";
    putJsonLine(typeLine, mode);
    putJsonLine("\t\"range\": [", mode);
    putJsonLine("\t\t{\"min_range\": " + kz::String::valueOf(minimum) +
                    ", \"max_range\": " + quote + getMaxRangeStr(maximum) + quote + "}",
                mode);
    putJsonLine("\t],", mode);
    putJsonLine("\t\"options\": [ ],", mode);
    return;
  }

  kz::Reference<StringList> texts;
  if (type == SettingInfo::BOOLEAN) {
    texts = kz::Reference<StringList>(new StringList);
    const kz::Reference<kz::String> trueWord(new kz::String);
    const kz::Reference<kz::String> falseWord(new kz::String);
    configHelper->getBooleanStrings(id, *trueWord, *falseWord);
    texts->add(trueWord);
    texts->add(falseWord);
  } else if (isSelection(type)) {
    texts = kz::Reference<StringList>(configHelper->getAllPossibleSelections(id));
  }
  putJsonLine(typeLine, mode);
  putJsonLine("\t\"range\": [ ],", mode);
  if (texts) {
    putJsonOptions(texts.get(), mode);
  } else {
    putJsonLine("\t\"options\": [ ],", mode);
  }
}

void CommandProcessor::putJsonOptions(StringList* texts, int mode) {
  putJsonLine("\t\"options\": [", mode);
  for (int i = 0; i < texts->size(); ++i) {
    const char* const end = i + 1 < texts->size() ? "\"}," : "\"}";
    putJsonLine(
        "\t\t{\"index\": " + kz::String::valueOf(i) + ",\"value\": \"" + *texts->get(i) + end,
        mode);
  }
  putJsonLine("\t],", mode);
}
