// Finding the ids of settings by a part of their names.
#include "commands/CommandProcessor.h"

void CommandProcessor::printMatchingIDs(kz::String keyword, bool json) {
  logger->finer("Inside printMatchingIDs() for String: " + keyword);
  kz::collections::List<SettingInfo> matches;
  const kz::Reference<kz::collections::List<CategoryInfo>> categories(
      configHelper->getCategoryList());
  for (int i = 0; i < categories->size(); ++i) {
    const kz::Reference<kz::collections::List<SettingInfo>> settings(
        configHelper->getSettingInfoList(categories->get(i)->id));
    for (int j = 0; j < settings->size(); ++j) {
      SettingInfo* const setting = settings->get(j);
      if (setting->available && setting->name.indexOf(keyword, 0, true) >= 0) matches.add(setting);
    }
  }
  if (json) {
    printMatches_json(keyword, matches);
  } else {
    printMatches(keyword, matches);
  }
}

void CommandProcessor::printMatches(kz::String keyword,
                                    kz::collections::List<SettingInfo>& matches) {
  if (matches.size() == 0) {
    out->println(messages->getResStr("INFO_NO_MATCH", keyword.getBytes().c_str()));
    return;
  }
  out->println(messages->getResStr("HDR_QRY_STRING", keyword.getBytes().c_str()));
  out->println("");
  out->println(messages->getResStr("HDR_MATCH_STG", "\t"));
  out->println("---------------------");
  for (int i = 0; i < matches.size(); ++i) {
    out->println(kz::String::valueOf(matches.get(i)->id) + "\t" + matches.get(i)->name);
  }
}

void CommandProcessor::printMatches_json(kz::String keyword,
                                         kz::collections::List<SettingInfo>& matches) {
  if (matches.size() == 0) {
    out->println("\t\"search_output\": \"No matches found for \\\"" + keyword + "\\\" setting\"");
    return;
  }
  out->println("\t\"search_string\": \"" + keyword + "\",");
  out->println("\t\"search_output\":");
  out->println("\t[");
  for (int i = 0; i < matches.size(); ++i) {
    out->println("\t\t{\"ID\": " + kz::String::valueOf(matches.get(i)->id) + ",\t\"Setting\": \"" +
                 matches.get(i)->name + (i + 1 < matches.size() ? "\"}," : "\"}"));
  }
  out->println("\t]");
}
