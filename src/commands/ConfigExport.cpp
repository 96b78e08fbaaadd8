// Writing every available setting into a settings file (docs/settings-file.md).
#include "commands/CommandProcessor.h"
#include "output/JsonHeader.h"
#include "util/Utils.h"

void CommandProcessor::writeConfiguration(bool ignoreErrors, bool suppressPrompt, bool json) {
  logger->finer("Inside writeConfiguration(), filename: " + outputFileName);
  if (!suppressPrompt && Utils::fileExist(outputFileName) && !confirmOverwriteFile(json)) {
    out->println(messages->getResStr("ERR_FILE_NOT_CREATED"));
    return;
  }
  const kz::Reference<Logger> file(new Logger);
  file->addFileHandler(outputFileName);
  formatter = kz::Reference<FormatHelper>(new FormatHelper(file.get()));
  formatter->setLevel(Level::ALL);
  if (json) {
    for (const kz::String& line : JsonHeader(*messages).lines()) formatter->putData(line, 0);
  }

  const kz::Reference<kz::collections::List<CategoryInfo>> categories(
      configHelper->getCategoryList());
  if (json) formatter->putData("\t\"category_list\": [", 0);
  int lastSettingId = -1;
  for (int i = 0; i < categories->size(); ++i) {
    try {
      writeCategory(categories->get(i), json, i + 1 == categories->size(), lastSettingId);
    } catch (const SvcException& failure) {
      if (!ignoreErrors) throw;
      const kz::String description = failure.getDescription();
      err->println(messages->getResStr("WRITE_SETTING_ERROR", lastSettingId,
                                       description.getBytes().c_str()));
      formatter->putError(description);
    }
  }

  if (json) {
    formatter->putData("\t]", 0);
    formatter->putData("}", 0);
  } else {
    // A name of several lines could be taken for lines of settings by an import.
    const std::string name = kz::String(outputFileName).translate(L'\n', L' ').getBytes();
    formatter->putData(messages->getResStr("INFO_STGS_WRITTEN", name.c_str()), 1);
  }
  // Some systems tell only now that they could not keep what was written.
  file->close();
}

void CommandProcessor::writeCategory(CategoryInfo* category, bool json, bool last,
                                     int& lastSettingId) {
  printCategoryDetails(category, json);
  const kz::Reference<kz::collections::List<SettingInfo>> settings(
      configHelper->getSettingInfoList(category->id));
  formatter->putData(
      json ? "\t\t\"settings_list\": [" : messages->getResStr("HDR_COUNT", settings->size()), 0);
  bool settingWritten = false;
  for (int i = 0; i < settings->size(); ++i) {
    lastSettingId = settings->get(i)->id;
    if (!settings->get(i)->available) continue;
    if (json) {
      if (settingWritten) formatter->putData("\t\t},", 0);
      formatter->putData("\t\t{", 0);
    }
    printIDDetails(lastSettingId, json, EXPORT_LAYOUT);
    settingWritten = true;
  }
  if (json) {
    if (settingWritten) formatter->putData("\t\t}", 0);
    formatter->putData("\t\t]", 0);
    formatter->putData(last ? "\t}" : "\t},", 0);
  }
}

void CommandProcessor::printCategoryDetails(CategoryInfo* category, bool json) {
  logger->finer("Inside printCategoryDetails() for ID: " + kz::String::valueOf(category->id));
  if (json) {
    formatter->putData("\t{", 0);
    formatter->putData("\t\t\"id\":" + kz::String::valueOf(category->id) + ",", 0);
    formatter->putData("\t\t\"name\": \"" + category->name + "\",", 0);
  } else {
    formatter->putHeader(
        messages->getResStr("HDR_CATEGORY", category->id,
                            (category->name + "\t").getBytes().c_str(), category->extraInfo),
        0);
  }
}
