// Texts for people: an object bound to one bundle and one prefix of its keys. A lookup throws
// nothing of the bundle's; a text that is missing is replaced by its full key, a missing bundle by
// a sentence that says so. A text that asks for arguments which its key does not have counts as
// missing.
#ifndef KNOB_OUTPUT_MESSAGE_HELPER_H
#define KNOB_OUTPUT_MESSAGE_HELPER_H

#include "kz/String.h"

class MessageHelper : public kz::Object {
 public:
  MessageHelper(const char* bundle, const char* prefix);

  // The text of the key (given without the prefix), its printf conversions filled with the
  // arguments: 8-bit texts (char const*) and 32-bit numbers (int). The text is cut at 1,023 bytes,
  // the message at 2,047, never inside a character.
  kz::String getResStr(const char* key, ...) const;

 private:
  kz::String bundleName;
  std::string keyPrefix;
};

#endif
