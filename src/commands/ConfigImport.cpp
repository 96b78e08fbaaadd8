// Applying the settings of a settings file (docs/settings-file.md), one by one.
#include <memory>

#include "commands/CommandProcessor.h"
#include "kz/Exception.h"
#include "kz/io/FileInputStream.h"
#include "kz/io/InputStreamReader.h"
#include "kz/util/StringTokenizer.h"
#include "util/NumberFormatException.h"
#include "util/Utils.h"

namespace {

constexpr long kBufferSize = 2048;
constexpr wchar_t kLineBlanks[] = L" \t\r\n";
// No setting can hold a value of so many words, and one that takes the first word alone needs no
// more: so a file of anything at all does not fill the memory.
constexpr int kMostWords = 100000;

}  // namespace

void CommandProcessor::readConfiguration(bool ignoreErrors) {
  logger->finer("Inside readConfiguration, filename: " + inputFileName);
  openInputFile();
  while (importSetting(ignoreErrors)) {
  }
  out->println(messages->getResStr("INFO_STG_UPDATED_FILE", inputFileName.getBytes().c_str()));
  out->println(messages->getResStr("INFO_RESTART"));
}

void CommandProcessor::openInputFile() {
  try {
    const kz::Reference<kz::io::InputStream> file(new kz::io::FileInputStream(inputFileName));
    const kz::Reference<kz::io::Reader> characters(
        new kz::io::InputStreamReader(file.get(), nullptr, kBufferSize));
    inputReader = kz::Reference<kz::io::BufferedReader>(
        new kz::io::BufferedReader(characters.get(), kBufferSize));
  } catch (kz::Exception const& failure) {
    throwError(failure.getResult());
  }
}

bool CommandProcessor::importSetting(bool ignoreErrors) {
  kz::String idText;
  if (getTagValue(tagIdText, idText) != 0) return false;
  int id = 0;
  try {
    id = Utils::parseInt(idText);
  } catch (NumberFormatException const&) {
    err->println(messages->getResStr("ERR_SKIP_STG", idText.getBytes().c_str()));
    return true;
  }

  kz::String valueText;
  const bool atEnd = getTagValue(tagValueText, valueText) != 0;
  if (!atEnd && (!valueText.isEmpty() || setttingSupportsEmptyValue(id))) {
    applyImportedValue(id, valueText);
    return true;
  }
  err->println(messages->getResStr("ERR_VALUE_NOT_FOUND", id));
  if (atEnd) return false;
  if (ignoreErrors) return true;
  err->println(messages->getResStr("READING_ENDED_ON_ERROR", inputFileName.getBytes().c_str()));
  err->println("");
  return false;
}

void CommandProcessor::applyImportedValue(int id, kz::String valueText) {
  const kz::Reference<StringList> values(getIDValues(valueText));
  if (values->size() == 0) values->add(new kz::String);
  logger->finest("Setting value for ID: " + kz::String::valueOf(id));
  const auto report = [&](char const* key, kz::Exception const& failure) {
    err->println(messages->getResStr(key, failure.getDescription().getBytes().c_str(), id));
  };
  try {
    setValue(id, values.get(), false);
  } catch (SvcException const& failure) {
    report("ERR_STG_VALUE", failure);
  } catch (NumberFormatException const& failure) {
    report("ERR_INVALID_VALUE", failure);
  }
}

int CommandProcessor::getTagValue(kz::String tag, kz::String& value) {
  logger->finest("Inside getTagValue() for tag: " + tag);
  kz::String line;
  while (inputReader->readLine(line) >= 0) {
    Utils::removeTabChars(line);
    line.trim(kLineBlanks);
    if (!line.regionMatches(0, tag, true)) continue;
    value = line.remove(0, tag.length()).trim(kLineBlanks);
    return 0;
  }
  return -1;
}

CommandProcessor::StringList* CommandProcessor::getIDValues(kz::String text) {
  logger->finest("Inside getIDValues() for string line: " + text);
  auto values = std::make_unique<StringList>();
  kz::util::StringTokenizer words(text, L" ");
  while (words.hasMoreTokens() && values->size() < kMostWords) {
    values->add(new kz::String(words.nextToken()));
  }
  return values.release();
}
