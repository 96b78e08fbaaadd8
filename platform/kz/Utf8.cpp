#include "kz/Utf8.h"

#include <algorithm>
#include <array>
#include <type_traits>
#include <utility>

namespace kz::utf8 {
namespace {

constexpr wchar_t kStrayBase = 0xDC00;

constexpr unsigned byteAt(std::string_view bytes, std::size_t index) {
  return static_cast<unsigned char>(bytes[index]);
}

struct Sequence {
  std::size_t length = 0;  // 0: the bytes are not the beginning of a valid character
  bool complete = false;
  wchar_t character = 0;
};

// One row per shape of a character: which first bytes, how many bytes, and which second bytes (the
// limits that rule out overlong forms, surrogates and values past U+10FFFF).
struct Shape {
  unsigned firstLow, firstHigh;
  std::size_t length;
  unsigned secondLow, secondHigh;
};
constexpr std::array<Shape, 9> kShapes{{{0x00, 0x7F, 1, 0, 0},
                                        {0xC2, 0xDF, 2, 0x80, 0xBF},
                                        {0xE0, 0xE0, 3, 0xA0, 0xBF},
                                        {0xE1, 0xEC, 3, 0x80, 0xBF},
                                        {0xED, 0xED, 3, 0x80, 0x9F},
                                        {0xEE, 0xEF, 3, 0x80, 0xBF},
                                        {0xF0, 0xF0, 4, 0x90, 0xBF},
                                        {0xF1, 0xF3, 4, 0x80, 0xBF},
                                        {0xF4, 0xF4, 4, 0x80, 0x8F}}};

Sequence sequenceAt(std::string_view bytes, std::size_t start) {
  const unsigned first = byteAt(bytes, start);
  const auto shape = std::find_if(kShapes.begin(), kShapes.end(), [first](const Shape& row) {
    return first >= row.firstLow && first <= row.firstHigh;
  });
  if (shape == kShapes.end()) return {};
  const std::size_t present = std::min(shape->length, bytes.size() - start);
  unsigned value = shape->length == 1 ? first : first & (0x7FU >> shape->length);
  for (std::size_t i = 1; i < present; ++i) {
    const unsigned next = byteAt(bytes, start + i);
    const unsigned low = i == 1 ? shape->secondLow : 0x80;
    const unsigned high = i == 1 ? shape->secondHigh : 0xBF;
    if (next < low || next > high) return {};
    value = (value << 6) | (next & 0x3F);
  }
  return {shape->length, present == shape->length, static_cast<wchar_t>(value)};
}

// Most text is ASCII. Copies the characters up to the first that is not, and returns their number:
// in blocks without a branch inside.
template <typename From, typename To>
std::size_t copyPlain(const From* from, std::size_t count, To* to) {
  using Code = std::make_unsigned_t<From>;
  constexpr auto kBlock = std::make_index_sequence<8>();
  const auto copyBlock = [&]<std::size_t... I>(std::size_t at, std::index_sequence<I...>) {
    if ((static_cast<Code>(from[at + I]) | ...) >= 0x80) return false;
    ((to[at + I] = static_cast<To>(from[at + I])), ...);
    return true;
  };
  std::size_t done = 0;
  while (count - done >= kBlock.size() && copyBlock(done, kBlock)) done += kBlock.size();
  for (; done < count && static_cast<Code>(from[done]) < 0x80; ++done) {
    to[done] = static_cast<To>(from[done]);
  }
  return done;
}

bool isStrayByte(wchar_t character) {
  return character >= kStrayBase + 0x80 && character <= kStrayBase + 0xFF;
}

void encodeOne(wchar_t character, std::string& bytes) {
  auto value = static_cast<char32_t>(character);
  if (value < 0x80) {
    bytes.push_back(static_cast<char>(value));
    return;
  }
  if (isStrayByte(character)) {
    bytes.push_back(static_cast<char>(character - kStrayBase));
    return;
  }
  if ((value >= 0xD800 && value <= 0xDFFF) || value > 0x10FFFF) value = 0xFFFD;
  const auto continuation = [value](int shift) {
    return static_cast<char>(0x80 | ((value >> shift) & 0x3F));
  };
  if (value < 0x800) {
    bytes.append({static_cast<char>(0xC0 | (value >> 6)), continuation(0)});
  } else if (value < 0x10000) {
    bytes.append({static_cast<char>(0xE0 | (value >> 12)), continuation(6), continuation(0)});
  } else {
    bytes.append({static_cast<char>(0xF0 | (value >> 18)), continuation(12), continuation(6),
                  continuation(0)});
  }
}

}  // namespace

std::size_t decode(std::string_view bytes, std::wstring& characters, bool more) {
  const std::size_t before = characters.size();
  characters.resize(before + bytes.size());  // no byte gives more than one character
  wchar_t* next = characters.data() + before;
  std::size_t position = 0;
  for (;;) {
    const std::size_t plain = copyPlain(bytes.data() + position, bytes.size() - position, next);
    position += plain;
    next += plain;
    if (position == bytes.size()) break;
    const Sequence sequence = sequenceAt(bytes, position);
    if (sequence.length != 0 && !sequence.complete && more) break;
    *next++ = sequence.complete ? sequence.character
                                : static_cast<wchar_t>(kStrayBase + byteAt(bytes, position));
    position += sequence.complete ? sequence.length : 1;
  }
  characters.resize(static_cast<std::size_t>(next - characters.data()));
  return position;
}

void encode(std::wstring_view characters, std::string& bytes) {
  const std::size_t before = bytes.size();
  bytes.resize(before + characters.size());
  const std::size_t plain = copyPlain(characters.data(), characters.size(), bytes.data() + before);
  if (plain == characters.size()) return;
  bytes.resize(before + plain);
  for (const wchar_t character : characters.substr(plain)) encodeOne(character, bytes);
}

std::string encode(std::wstring_view characters) {
  std::string bytes;
  encode(characters, bytes);
  return bytes;
}

std::size_t cut(std::string_view bytes, std::size_t limit) {
  if (bytes.size() <= limit) return bytes.size();
  // A character has at most four bytes, so one that spans the cut begins in the last three.
  for (std::size_t start = limit - std::min<std::size_t>(limit, 3); start < limit; ++start) {
    const Sequence sequence = sequenceAt(bytes, start);
    if (sequence.complete && start + sequence.length > limit) return start;
  }
  return limit;
}

std::string_view withoutByteOrderMark(std::string_view bytes) {
  constexpr std::string_view kMark = "\xEF\xBB\xBF";
  return bytes.substr(bytes.starts_with(kMark) ? kMark.size() : 0);
}

}  // namespace kz::utf8
