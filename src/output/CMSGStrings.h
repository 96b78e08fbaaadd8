// Single texts from a named bundle, with fixed replacements when the bundle or the key is missing,
// and the making of keys from status codes. No exception of a bundle leaves these operations.
#ifndef KNOB_OUTPUT_CMSG_STRINGS_H
#define KNOB_OUTPUT_CMSG_STRINGS_H

#include "kz/String.h"
#include "kz/i18n/StringBundle.h"

class CMSGStrings {
 public:
  // The text of the key; the key itself when the bundle does not have it; "The resource bundle is
  // not installed" when there is no such bundle.
  static void MakeResourceString(const kz::String& bundleName, kz::String key, kz::String& text);

  // The same for a key in 8-bit form and with a say in which text of the key it is: one that is not
  // accepted counts as not there, and that of a less special language is offered.
  static void MakeResourceString(const kz::String& bundleName, const std::string& key,
                                 const kz::i18n::StringBundle::Accepts& accepts, kz::String& text);

  // A title and a message from one loading of the bundle, with the same replacement for a missing
  // key and words about the bundle TNMSG when the bundle is missing.
  static void PrepareDialog(const kz::String& bundleName, const kz::String& titleKey,
                            const kz::String& messageKey, kz::String& title, kz::String& message);
  // The same from the bundle TNMSG.
  static void PrepareDialog(const kz::String& titleKey, const kz::String& messageKey,
                            kz::String& title, kz::String& message);

  // The key that a code has: the prefix (KZ_MSG_ where none is given) and the code without blanks
  // around it and with N for each "-".
  static void MakeResString(const kz::String& prefix, const kz::String& code, kz::String& key);
  static void MakeResString(const kz::String& code, kz::String& key);
  static void MakeResString(int code, kz::String& key);
  static void MakeResString(const kz::String& prefix, int code, kz::String& key);
};

#endif
