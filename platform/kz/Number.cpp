#include "kz/Number.h"

#include <charconv>

namespace kz {
namespace {

template <typename T>
T parse(const String& text) {
  const std::string digits = text.getBytes();
  const char* const end = digits.data() + digits.size();
  T number = 0;
  const auto [stop, error] = std::from_chars(digits.data(), end, number);
  return error == std::errc() && stop == end ? number : 0;
}

}  // namespace

int Number::parseInt(const String& text) { return parse<int>(text); }

long Number::parseLong(const String& text) { return parse<long>(text); }

}  // namespace kz
