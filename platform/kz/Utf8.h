// Between 8-bit text, which is always UTF-8, and 32-bit characters, without losing a byte: a byte
// that is not part of valid UTF-8 becomes the character U+DC00 + byte and that byte again. Valid
// UTF-8 never holds these characters, so the way back is unambiguous.
#ifndef KNOB_KZ_UTF8_H
#define KNOB_KZ_UTF8_H

#include <cstddef>
#include <string>
#include <string_view>

namespace kz::utf8 {

// Appends the characters of the bytes and returns how many bytes that took. With `more` set, bytes
// at the end that could be the beginning of a character are left for the next call.
std::size_t decode(std::string_view bytes, std::wstring& characters, bool more = false);

// Characters that no UTF-8 text can hold (surrogates other than the stray bytes, values past
// U+10FFFF) are written as U+FFFD.
std::string encode(std::wstring_view characters);
// The same, appended.
void encode(std::wstring_view characters, std::string& bytes);

// The length of the longest beginning of the text that has at most `limit` bytes and does not end
// inside a character.
std::size_t cut(std::string_view bytes, std::size_t limit);

// The text without the mark that some editors write at the beginning of a file.
std::string_view withoutByteOrderMark(std::string_view bytes);

}  // namespace kz::utf8

#endif
