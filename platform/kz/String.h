// The text type of the program: a sequence of 32-bit characters. Copies share one text until one of
// them is changed. The 8-bit form is UTF-8 whatever the locale; bytes that are not valid UTF-8
// survive the way in and out (see Utf8.h).
//
// Indices and lengths count characters from 0. A range that reaches past the end means what is
// there; an index past the end means the end.
#ifndef KNOB_KZ_STRING_H
#define KNOB_KZ_STRING_H

#include <limits>
#include <string>
#include <string_view>
#include <utility>

#include "kz/Object.h"
#include "kz/Reference.h"

namespace kz {

class String : public Object {
 public:
  String() noexcept = default;
  String(const String&) noexcept = default;
  String(String&&) noexcept = default;
  String& operator=(const String&) noexcept = default;
  String& operator=(String&&) noexcept = default;
  String(const char* bytes) : String(std::string_view(bytes)) {}
  String(std::string_view bytes);
  String(const std::string& bytes) : String(std::string_view(bytes)) {}
  String(const wchar_t* characters) : String(std::wstring(characters)) {}
  String(std::wstring characters);

  // The 8-bit form. A NUL character is one byte like any other.
  std::string getBytes() const;
  const std::wstring& characters() const noexcept;

  int length() const noexcept { return static_cast<int>(characters().size()); }
  bool isEmpty() const noexcept { return characters().empty(); }
  // 0 past the end.
  wchar_t charAt(int index) const noexcept;

  // Puts `text` in the place of `count` characters from `start`.
  String& replace(int start, int count, const String& text);
  String& append(const String& text) { return replace(length(), 0, text); }
  String& insert(int index, const String& text) { return replace(index, 0, text); }
  String& insert(int index, int count, wchar_t character);
  String& remove(int start, int count) { return replace(start, count, String()); }
  String& operator+=(const String& text) { return append(text); }
  // The same from 8-bit text, without a String of it.
  String& append(const char* bytes);
  String& operator+=(const char* bytes) { return append(bytes); }

  // Removes every occurrence of the character.
  String& removeAll(wchar_t character);
  // Removes the characters of the set from both ends.
  String& trim(const wchar_t* set);
  String& translate(wchar_t from, wchar_t to);
  String& toUpper();

  // `count` characters from `start`.
  String substring(int start, int count = std::numeric_limits<int>::max()) const;

  bool equals(const String& other) const noexcept { return characters() == other.characters(); }
  bool equalsIgnoreCase(const String& other) const;
  // Whether `other` stands at `start`.
  bool regionMatches(int start, const String& other, bool ignoreCase) const;
  // The first index from `start` on where `text` stands, or -1. An empty text stands everywhere.
  int indexOf(const String& text, int start, bool ignoreCase) const;

  static String valueOf(int number) { return std::to_string(number); }
  static String valueOf(long number) { return std::to_string(number); }

 private:
  struct Text : Object {
    explicit Text(std::wstring characters) : value(std::move(characters)) {}
    std::wstring value;
  };

  // The text, held by this string alone.
  std::wstring& own();
  // The index, no less than 0 and no more than the length.
  std::size_t clamp(int index) const noexcept;

  Reference<Text> text_;
};

inline bool operator==(const String& left, const String& right) noexcept {
  return left.equals(right);
}

inline String operator+(String left, const String& right) { return std::move(left.append(right)); }
inline String operator+(String left, const char* right) { return std::move(left.append(right)); }

}  // namespace kz

#endif
