#include "output/MessageHelper.h"

#include <array>
#include <cstdarg>
#include <cstdio>

#include "kz/Platform.h"
#include "kz/Utf8.h"
#include "output/CMSGStrings.h"

namespace {

constexpr std::size_t kTextSize = 1024;
constexpr std::size_t kMessageSize = 2048;

}  // namespace

MessageHelper::MessageHelper(char const* bundle, char const* prefix)
    : bundleName(bundle), keyPrefix(prefix) {}

kz::String MessageHelper::getResStr(char const* key, ...) const {
  kz::String text;
  CMSGStrings::MakeResourceString(bundleName, keyPrefix + key, text);
  std::array<char, kTextSize> format{};
  KZUnicodeToAnsi(format.data(), text.characters().c_str(), static_cast<int>(format.size()));

  // One byte more than the message may have tells whether the cut is inside a character.
  std::array<char, kMessageSize + 3> message{};
  std::va_list arguments;
  va_start(arguments, key);
  std::vsnprintf(message.data(), message.size(), format.data(), arguments);
  va_end(arguments);
  const std::string_view whole = message.data();
  return whole.substr(0, kz::utf8::cut(whole, kMessageSize - 1));
}
