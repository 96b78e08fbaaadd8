#include "tuning/etcd/Base64.h"

#include <cstddef>
#include <cstdint>

namespace tn::etcd {
namespace {

constexpr std::string_view kAlphabet =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

// `digits` of the four digits of a group come out, the rest is padding.
void putGroup(std::string& text, uint32_t bits, size_t digits) {
  for (size_t i = 0; i < 4; ++i) {
    text += i < digits ? kAlphabet[bits >> (18 - 6 * i) & 0x3f] : '=';
  }
}

}  // namespace

std::string toBase64(std::string_view bytes) {
  std::string text;
  for (; !bytes.empty(); bytes.remove_prefix(bytes.size() < 3 ? bytes.size() : 3)) {
    uint32_t bits = 0;
    for (size_t i = 0; i < 3; ++i) {
      bits = bits << 8 | (i < bytes.size() ? static_cast<unsigned char>(bytes[i]) : 0U);
    }
    putGroup(text, bits, bytes.size() < 3 ? bytes.size() + 1 : 4);
  }
  return text;
}

std::optional<std::string> fromBase64(std::string_view text) {
  if (text.size() % 4 != 0) return std::nullopt;
  if (text.ends_with('=')) text.remove_suffix(text.ends_with("==") ? 2 : 1);
  std::string bytes;
  uint32_t bits = 0;
  size_t held = 0;  // bits that no byte has taken yet
  for (const char character : text) {
    const size_t digit = kAlphabet.find(character);
    if (digit == std::string_view::npos) return std::nullopt;
    bits = bits << 6 | static_cast<uint32_t>(digit);
    held += 6;
    if (held < 8) continue;
    held -= 8;
    bytes += static_cast<char>(bits >> held & 0xff);
  }
  return bytes;
}

}  // namespace tn::etcd
