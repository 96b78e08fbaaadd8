#include "tuning/Endpoints.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <cstdlib>

namespace tn {
namespace {

bool isAlphanumeric(char character) {
  return (character >= '0' && character <= '9') || (character >= 'a' && character <= 'z') ||
         (character >= 'A' && character <= 'Z');
}

bool consistsOf(std::string_view text, std::string_view more) {
  return !text.empty() && std::ranges::all_of(text, [&](char character) {
    return isAlphanumeric(character) || more.find(character) != std::string_view::npos;
  });
}

bool isHost(std::string_view host) {
  const bool bracketed = host.starts_with('[') && host.ends_with(']') && host.size() > 2;
  return bracketed ? consistsOf(host.substr(1, host.size() - 2), ":.%") : consistsOf(host, ".-_");
}

template <typename Number>
bool reads(std::string_view text, Number& number, int base) {
  const auto [rest, error] = std::from_chars(text.data(), text.data() + text.size(), number, base);
  return error == std::errc() && rest == text.data() + text.size();
}

bool isPort(std::string_view port) {
  uint16_t number = 0;
  return reads(port, number, 10) && number > 0;
}

}  // namespace

std::optional<std::vector<std::string>> Endpoints::of(std::string_view scheme,
                                                      std::string_view hosts,
                                                      std::string_view defaultPort) {
  std::vector<std::string> endpoints;
  for (bool more = true; more;) {
    more = hosts.find(',') != std::string_view::npos;
    const std::string_view entry = takeUntil(hosts, ',');
    const size_t colon = entry.rfind(':');
    const bool hasPort = colon != std::string_view::npos && !entry.ends_with(']');
    const std::string_view host = hasPort ? entry.substr(0, colon) : entry;
    const std::string_view port = hasPort ? entry.substr(colon + 1) : defaultPort;
    if (!isHost(host) || !isPort(port)) return std::nullopt;
    endpoints.push_back(std::string(scheme) + "://" + std::string(host) + ':' + std::string(port));
  }
  return endpoints;
}

std::optional<std::string> percentDecoded(std::string_view text) {
  std::string decoded;
  while (!text.empty()) {
    if (text.front() != '%') {
      decoded += text.front();
      text.remove_prefix(1);
      continue;
    }
    uint8_t byte = 0;
    const std::string_view digits = text.substr(1, 2);
    if (digits.size() != 2 || !reads(digits, byte, 16)) return std::nullopt;
    decoded += static_cast<char>(byte);
    text.remove_prefix(3);
  }
  return decoded;
}

std::string percentEncoded(std::string_view text) {
  constexpr char kDigits[] = "0123456789ABCDEF";
  std::string encoded;
  for (const char character : text) {
    if (isAlphanumeric(character) ||
        std::string_view(".-_~").find(character) != std::string::npos) {
      encoded += character;
      continue;
    }
    const auto byte = static_cast<unsigned char>(character);
    encoded += {'%', kDigits[byte >> 4], kDigits[byte & 15]};
  }
  return encoded;
}

std::string_view takeUntil(std::string_view& text, char separator) {
  const size_t end = std::min(text.find(separator), text.size());
  const std::string_view taken = text.substr(0, end);
  text.remove_prefix(std::min(end + 1, text.size()));
  return taken;
}

std::string variable(const char* name) {
  const char* const value = std::getenv(name);
  return value == nullptr ? "" : value;
}

}  // namespace tn
