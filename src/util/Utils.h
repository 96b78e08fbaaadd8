// Static helpers without state: numbers from text, files and directories, small edits of texts and
// lists, times.
#ifndef KNOB_UTIL_UTILS_H
#define KNOB_UTIL_UTILS_H

#include "kz/String.h"
#include "kz/collections/List.h"

class Utils {
 public:
  using StringList = kz::collections::List<kz::String>;

  Utils() = default;
  virtual ~Utils() = default;

  // The number that the text holds between blanks, tabs and line ends. Zero is accepted only as
  // "0"; a text that is no number throws NumberFormatException.
  static int parseInt(kz::String text);
  static long parseLong(kz::String text);
  // parseInt of each entry, in an array of the list's size that the caller frees with delete[].
  static int* convertStringListToIntArray(StringList* list);

  // An entry of that name exists, of whatever kind. A failure to reach it counts as no.
  static bool fileExist(kz::String name);
  // A directory of that name can be opened.
  static bool dirExist(kz::String name);
  // Creates the missing directories that lead to the file of that path, with mode 0777 less the
  // umask. A status: 0 on success. What was created before a failure stays.
  static int createDirs(kz::String path);

  static void removeTabChars(kz::String& text);
  // Puts a backslash before every occurrence of the character.
  static void addBackslashChars(kz::String& text, char character);

  static kz::String createDelimitedStr(StringList* list, const char* delimiter);
  // Joined by single blanks.
  static kz::String convertStringListToString(StringList* list);
  // A new list that the caller takes a reference on.
  static StringList* convertToStringList(int count, char** texts);

  // The local time in the format of strftime; empty when that gives more than 99 bytes.
  static kz::String getTime(const char* format);
  // Zeros in front of the first three components of a dotted version, up to 2, 2 and 3 digits.
  static void formatEngVerString(kz::String& version);
  // A duration of zero or more seconds as "1 day  01:01:01".
  static kz::String convertTimeInSecs(long seconds);
};

#endif
