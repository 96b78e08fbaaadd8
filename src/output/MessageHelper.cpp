#include "output/MessageHelper.h"

#include <array>
#include <cstdarg>
#include <cstdio>

#include "kz/Platform.h"
#include "kz/Utf8.h"
#include "output/CMSGStrings.h"
#include "output/MessageArguments.h"

namespace {

constexpr std::size_t kTextSize = 1024;
constexpr std::size_t kMessageSize = 2048;

// A character has at most four bytes.
constexpr int kSurelyWhole = (kTextSize - 1) / 4;

bool hasConversions(const kz::String& text) {
  return text.characters().find(L'%') != std::wstring::npos;
}

// The beginning of the text that there is room for.
kz::String fitting(const kz::String& text) {
  if (text.length() <= kSurelyWhole) return text;
  const std::string bytes = text.getBytes();
  return bytes.substr(0, kz::utf8::cut(bytes, kTextSize - 1));
}

}  // namespace

MessageHelper::MessageHelper(const char* bundle, const char* prefix)
    : bundleName(bundle), keyPrefix(prefix) {}

kz::String MessageHelper::getResStr(const char* key, ...) const {
  const auto accepts = [key](const kz::String& candidate) {
    if (!hasConversions(candidate)) return true;
    const auto arguments = MessageArguments::of(key);
    return !arguments || MessageArguments::suffice(*arguments, fitting(candidate).characters());
  };
  kz::String text;
  CMSGStrings::MakeResourceString(bundleName, keyPrefix + key, accepts, text);
  if (!hasConversions(text) && text.length() <= kSurelyWhole) return text;
  std::array<char, kTextSize> format;
  KZUnicodeToAnsi(format.data(), text.characters().c_str(), static_cast<int>(format.size()));

  // One byte more than the message may have tells whether the cut is inside a character.
  std::array<char, kMessageSize + 3> message;
  message[0] = '\0';
  std::va_list values;
  va_start(values, key);
  std::vsnprintf(message.data(), message.size(), format.data(), values);
  va_end(values);
  const std::string_view whole = message.data();
  return whole.substr(0, kz::utf8::cut(whole, kMessageSize - 1));
}
