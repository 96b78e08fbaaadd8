#include "output/CMSGStrings.h"

namespace {

using kz::i18n::StringBundle;

constexpr char kDefaultBundle[] = "TNMSG";
constexpr char kDefaultPrefix[] = "KZ_MSG_";

bool acceptAny(kz::String const&) { return true; }

kz::String textOrKey(StringBundle const& bundle, std::string const& key,
                     StringBundle::Accepts const& accepts) {
  try {
    return bundle.getString(key, accepts);
  } catch (...) {
    return key;
  }
}

}  // namespace

void CMSGStrings::MakeResourceString(kz::String const& bundleName, kz::String key,
                                     kz::String& text) {
  MakeResourceString(bundleName, key.getBytes(), acceptAny, text);
}

void CMSGStrings::MakeResourceString(kz::String const& bundleName, std::string const& key,
                                     StringBundle::Accepts const& accepts, kz::String& text) {
  try {
    text = textOrKey(*StringBundle::getBundle(bundleName, nullptr), key, accepts);
  } catch (...) {
    text = "The resource bundle is not installed";
  }
}

void CMSGStrings::PrepareDialog(kz::String const& bundleName, kz::String const& titleKey,
                                kz::String const& messageKey, kz::String& title,
                                kz::String& message) {
  try {
    const kz::Reference<StringBundle> bundle = StringBundle::getBundle(bundleName, nullptr);
    message = textOrKey(*bundle, messageKey.getBytes(), acceptAny);
    title = textOrKey(*bundle, titleKey.getBytes(), acceptAny);
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
