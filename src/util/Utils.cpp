#include "util/Utils.h"

#include <array>
#include <cstdio>
#include <ctime>
#include <memory>
#include <sys/stat.h>

#include "kz/Number.h"
#include "kz/Platform.h"
#include "kz/util/FilePath.h"
#include "kz/util/StringTokenizer.h"
#include "util/NumberFormatException.h"

namespace {

constexpr int kDirectoryMode = 0777;
constexpr std::size_t kTimeBufferSize = 100;
constexpr long kSecondsPerDay = 86400;

kz::String delimiterText() { return std::wstring(1, kz::util::FilePath::dirDelim); }

template <typename T>
T parse(kz::String text, T (*convert)(const kz::String&)) {
  text.trim(L" \t\r\n");
  const T number = convert(text);
  if (number == 0 && !text.equals("0")) throw NumberFormatException(kz::String());
  return number;
}

int ensureDirectory(const kz::String& directory) {
  if (Utils::dirExist(directory)) return 0;
  return KZDirCreate(directory.characters().c_str(), kDirectoryMode);
}

kz::String zeroPadded(const kz::String& text, int width) {
  kz::String padded = text;
  while (padded.length() < width) padded.insert(0, "0");
  return padded;
}

}  // namespace

int Utils::parseInt(kz::String text) { return parse(text, kz::Number::parseInt); }

long Utils::parseLong(kz::String text) { return parse(text, kz::Number::parseLong); }

int* Utils::convertStringListToIntArray(StringList* list) {
  std::unique_ptr<int[]> numbers(new int[static_cast<std::size_t>(list->size())]);
  for (int i = 0; i < list->size(); ++i) {
    numbers[static_cast<std::size_t>(i)] = parseInt(*list->get(i));
  }
  return numbers.release();
}

bool Utils::fileExist(kz::String name) {
  struct stat entry {};
  return stat(name.getBytes().c_str(), &entry) == 0;
}

bool Utils::dirExist(kz::String name) {
  KZDirHandle handle = nullptr;
  if (KZDirOpen(name.characters().c_str(), &handle) != 0) return false;
  KZDirClose(handle);
  return true;
}

int Utils::createDirs(kz::String path) {
  const kz::String delimiter = delimiterText();
  kz::util::StringTokenizer tokens(path, delimiter.characters().c_str());
  int directories = tokens.countTokens() - 1;
  kz::String directory = path.regionMatches(0, delimiter, false) ? delimiter : kz::String();
  for (; directories > 0; --directories) {
    directory += tokens.nextToken();
    const int status = ensureDirectory(directory);
    if (status != 0) return status;
    directory += delimiter;
  }
  return 0;
}

void Utils::removeTabChars(kz::String& text) { text.removeAll(L'\t'); }

void Utils::addBackslashChars(kz::String& text, char character) {
  const kz::String wanted(std::string(1, character));
  for (int at = text.indexOf(wanted, 0, false); at >= 0; at = text.indexOf(wanted, at + 2, false)) {
    text.insert(at, "\\");
  }
}

kz::String Utils::createDelimitedStr(StringList* list, const char* delimiter) {
  const kz::String between(delimiter);
  kz::String joined;
  for (int i = 0; i < list->size(); ++i) {
    if (i > 0) joined += between;
    joined += *list->get(i);
  }
  return joined;
}

kz::String Utils::convertStringListToString(StringList* list) {
  return createDelimitedStr(list, " ");
}

Utils::StringList* Utils::convertToStringList(int count, char** texts) {
  std::unique_ptr<StringList> list(new StringList);
  for (int i = 0; i < count; ++i) list->add(new kz::String(texts[i]));
  return list.release();
}

kz::String Utils::getTime(const char* format) {
  KZTime local{};
  KZTimeGetLocal(&local);
  const std::time_t seconds = KZTimeToPosix(&local);
  std::array<char, kTimeBufferSize> buffer{};
  const std::size_t length =
      std::strftime(buffer.data(), buffer.size(), format, std::localtime(&seconds));
  return std::string_view(buffer.data(), length);
}

void Utils::formatEngVerString(kz::String& version) {
  constexpr std::array<int, 3> kWidths = {2, 2, 3};
  kz::util::StringTokenizer components(version, L".");
  kz::String padded;
  for (std::size_t i = 0; components.hasMoreTokens(); ++i) {
    if (i > 0) padded += ".";
    padded += zeroPadded(components.nextToken(), i < kWidths.size() ? kWidths[i] : 0);
  }
  version = padded;
}

kz::String Utils::convertTimeInSecs(long seconds) {
  const long rest = seconds % kSecondsPerDay;
  std::array<char, 64> text{};
  std::snprintf(text.data(), text.size(), "%ld day%s  %02ld:%02ld:%02ld", seconds / kSecondsPerDay,
                seconds >= 2 * kSecondsPerDay ? "s" : "", rest / 3600, rest / 60 % 60, rest % 60);
  return text.data();
}
