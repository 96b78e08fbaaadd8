#include "output/CMSGStrings.h"

#include <new>

namespace {

using kz::i18n::StringBundle;

constexpr char kDefaultBundle[] = "TNMSG";
constexpr char kDefaultPrefix[] = "KZ_MSG_";

bool acceptAny(const kz::String&) { return true; }

// What stands in the place of a text is taken for the text: a settings file with a key for a tag
// imports as nothing. So a moment without memory is not reason enough for it.
template <typename Lookup>
auto twiceForMemory(Lookup lookup) {
  try {
    return lookup();
  } catch (const std::bad_alloc&) {
    return lookup();
  }
}

kz::String textOrKey(const StringBundle& bundle, const std::string& key,
                     const StringBundle::Accepts& accepts) {
  try {
    return twiceForMemory([&] { return bundle.getString(key, accepts); });
  } catch (...) {
    return key;
  }
}

}  // namespace

void CMSGStrings::MakeResourceString(const kz::String& bundleName, kz::String key,
                                     kz::String& text) {
  MakeResourceString(bundleName, key.getBytes(), acceptAny, text);
}

void CMSGStrings::MakeResourceString(const kz::String& bundleName, const std::string& key,
                                     const StringBundle::Accepts& accepts, kz::String& text) {
  try {
    const auto bundle =
        twiceForMemory([&] { return StringBundle::getBundle(bundleName, nullptr); });
    text = textOrKey(*bundle, key, accepts);
  } catch (...) {
    text = "The resource bundle is not installed";
  }
}

void CMSGStrings::PrepareDialog(const kz::String& bundleName, const kz::String& titleKey,
                                const kz::String& messageKey, kz::String& title,
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

void CMSGStrings::PrepareDialog(const kz::String& titleKey, const kz::String& messageKey,
                                kz::String& title, kz::String& message) {
  PrepareDialog(kDefaultBundle, titleKey, messageKey, title, message);
}

void CMSGStrings::MakeResString(const kz::String& prefix, const kz::String& code, kz::String& key) {
  kz::String suffix = code;
  suffix.trim(L" \t\r\n").translate(L'-', L'N');
  key = prefix + suffix;
}

void CMSGStrings::MakeResString(const kz::String& code, kz::String& key) {
  MakeResString(kDefaultPrefix, code, key);
}

void CMSGStrings::MakeResString(int code, kz::String& key) {
  MakeResString(kDefaultPrefix, code, key);
}

void CMSGStrings::MakeResString(const kz::String& prefix, int code, kz::String& key) {
  MakeResString(prefix, kz::String::valueOf(code), key);
}
