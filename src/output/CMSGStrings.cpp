#include "output/CMSGStrings.h"

#include "kz/i18n/StringBundle.h"

namespace {

using kz::i18n::StringBundle;

constexpr char kDefaultBundle[] = "TNMSG";
constexpr char kDefaultPrefix[] = "KZ_MSG_";

kz::String textOrKey(StringBundle const& bundle, kz::String const& key) {
  try {
    return bundle.getString(key);
  } catch (...) {
    return key;
  }
}

}  // namespace

void CMSGStrings::MakeResourceString(kz::String const& bundleName, kz::String key,
                                     kz::String& text) {
  try {
    text = textOrKey(*StringBundle::getBundle(bundleName, nullptr), key);
  } catch (...) {
    text = "The resource bundle is not installed";
  }
}

void CMSGStrings::PrepareDialog(kz::String const& bundleName, kz::String const& titleKey,
                                kz::String const& messageKey, kz::String& title,
                                kz::String& message) {
  try {
    const kz::Reference<StringBundle> bundle = StringBundle::getBundle(bundleName, nullptr);
    message = textOrKey(*bundle, messageKey);
    title = textOrKey(*bundle, titleKey);
  } catch (...) {
    message = "The TNMSG resource bundle is not installed";
    title = "TNMSG Resource Bundle Loading Error";
  }
}

void CMSGStrings::PrepareDialog(kz::String const& titleKey, kz::String const& messageKey,
                                kz::String& title, kz::String& message) {
  PrepareDialog(kDefaultBundle, titleKey, messageKey, title, message);
}

void CMSGStrings::MakeResString(kz::String const& prefix, kz::String const& code, kz::String& key) {
  kz::String suffix = code;
  suffix.trim(L" \t\r\n").translate(L'-', L'N');
  key = prefix + suffix;
}

void CMSGStrings::MakeResString(kz::String const& code, kz::String& key) {
  MakeResString(kDefaultPrefix, code, key);
}

void CMSGStrings::MakeResString(int code, kz::String& key) {
  MakeResString(kDefaultPrefix, code, key);
}

void CMSGStrings::MakeResString(kz::String const& prefix, int code, kz::String& key) {
  MakeResString(prefix, kz::String::valueOf(code), key);
}
