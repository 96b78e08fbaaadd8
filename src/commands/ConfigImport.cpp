// Applying the settings of a settings file (docs/settings-file.md), one by one.
#include <memory>
#include <optional>
#include <string>
#include <utility>

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
// Editors put it at the beginning of a file to say that it is in UTF-8.
constexpr wchar_t kByteOrderMark = 0xFEFF;
// No line that matters has so many characters. What is past them is read over, so that a file of
// anything at all does not fill the memory.
constexpr int kMostCharacters = 65536;

// Adds what was read, with one blank for each run of them and none at the beginning of the line.
void addSqueezed(kz::String& line, const kz::String& read) {
  std::wstring added;
  bool afterBlank = line.isEmpty() || line.charAt(line.length() - 1) == L' ';
  for (const wchar_t character : read.characters()) {
    const bool isBlank = character == L' ';
    if (!(isBlank && afterBlank)) added += character;
    afterBlank = isBlank;
  }
  line += kz::String(added);
}

// The next line, without tabs. Of a long one, runs of blanks, which only part words, count as one.
bool readLine(kz::io::BufferedReader& reader, kz::String& line) {
  reader.skipRest();
  if (reader.readLine(line, kMostCharacters) < 0) return false;
  Utils::removeTabChars(line);
  if (reader.isCut()) addSqueezed(line, std::exchange(line, kz::String()));
  while (reader.isCut() && line.length() < kMostCharacters) {
    kz::String more;
    reader.readLine(more, kMostCharacters - line.length());
    Utils::removeTabChars(more);
    addSqueezed(line, more);
  }
  return true;
}

std::optional<int> idOf(const kz::String& text) {
  try {
    return Utils::parseInt(text);
  } catch (const NumberFormatException&) {
    return std::nullopt;
  }
}

// A value whose end was not kept is too long, unless the setting takes the first word alone.
void checkCutValue(SvcConfigHelper& service, int id, int words) {
  const kz::Reference<SettingInfo> info(service.getSettingInfo(id, true));
  const bool takesOneWord =
      info->type == SettingInfo::INTEGER || info->type == SettingInfo::BOOLEAN;
  if (takesOneWord && words > 1) return;
  throw SvcException(service.createErrorMsg(TN_VALUE_TOO_LONG), TN_VALUE_TOO_LONG);
}

}  // namespace

void CommandProcessor::readConfiguration(bool ignoreErrors) {
  logger->finer("Inside readConfiguration, filename: " + inputFileName);
  openInputFile();
  inputReader->skip(kByteOrderMark);
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
  } catch (const kz::Exception& failure) {
    throwError(failure.getResult());
  }
}

bool CommandProcessor::importSetting(bool ignoreErrors) {
  kz::String idText;
  if (getTagValue(tagIdText, idText) != 0) return false;
  const std::optional<int> known = inputReader->isCut() ? std::nullopt : idOf(idText);
  if (!known) {
    err->println(messages->getResStr("ERR_SKIP_STG", idText.getBytes().c_str()));
    return true;
  }
  const int id = *known;

  kz::String valueText;
  const bool atEnd = getTagValue(tagValueText, valueText) != 0;
  const bool hasValue = !atEnd && (!valueText.isEmpty() || inputReader->isCut());
  if (hasValue || (!atEnd && setttingSupportsEmptyValue(id))) {
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
  const auto report = [&](const char* key, const kz::Exception& failure) {
    err->println(messages->getResStr(key, failure.getDescription().getBytes().c_str(), id));
  };
  try {
    if (inputReader->isCut()) checkCutValue(*configHelper, id, values->size());
    setValue(id, values.get(), false);
  } catch (const SvcException& failure) {
    report("ERR_STG_VALUE", failure);
  } catch (const NumberFormatException& failure) {
    report("ERR_INVALID_VALUE", failure);
  }
}

int CommandProcessor::getTagValue(kz::String tag, kz::String& value) {
  logger->finest("Inside getTagValue() for tag: " + tag);
  kz::String line;
  while (readLine(*inputReader, line)) {
    line.trim(kLineBlanks);
    if (!line.regionMatches(0, tag, true)) continue;
    value = line.substring(tag.length()).trim(kLineBlanks);
    return 0;
  }
  return -1;
}

CommandProcessor::StringList* CommandProcessor::getIDValues(kz::String text) {
  logger->finest("Inside getIDValues() for string line: " + text);
  auto values = std::make_unique<StringList>();
  kz::util::StringTokenizer words(text, L" ", false);
  while (words.hasMoreTokens()) values->add(new kz::String(words.nextToken()));
  return values.release();
}
