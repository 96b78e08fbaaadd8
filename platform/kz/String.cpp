#include "kz/String.h"

#include <algorithm>
#include <locale.h>
#include <wctype.h>

#include "kz/Utf8.h"

namespace kz {
namespace {

// Letter case follows Unicode, not the user's locale. The table is opened when the first letter
// outside ASCII asks for it; a system without it leaves such letters as they are.
locale_t unicodeLocale() {
  static const locale_t locale = newlocale(LC_CTYPE_MASK, "C.UTF-8", nullptr);
  return locale;
}

wchar_t toUpperCharacter(wchar_t character) {
  if (character < 0x80) {
    return character >= L'a' && character <= L'z' ? character - L'a' + L'A' : character;
  }
  const locale_t locale = unicodeLocale();
  return locale == nullptr
             ? character
             : static_cast<wchar_t>(towupper_l(static_cast<wint_t>(character), locale));
}

bool sameIgnoringCase(wchar_t left, wchar_t right) {
  return left == right || toUpperCharacter(left) == toUpperCharacter(right);
}

const std::wstring kEmpty;
// Most texts are made to have a word put before or after them.
constexpr std::size_t kRoom = 8;

}  // namespace

String::String(std::string_view bytes) {
  if (bytes.empty()) return;
  std::wstring characters;
  if (bytes.size() > characters.capacity()) characters.reserve(bytes.size() + kRoom);
  utf8::decode(bytes, characters);
  text_ = Reference<Text>(new Text(std::move(characters)));
}

String::String(std::wstring characters) : text_(new Text(std::move(characters))) {}

std::string String::getBytes() const { return utf8::encode(characters()); }

const std::wstring& String::characters() const noexcept { return text_ ? text_->value : kEmpty; }

wchar_t String::charAt(int index) const noexcept {
  return index >= 0 && index < length() ? characters()[static_cast<std::size_t>(index)] : L'\0';
}

String& String::replace(int start, int count, const String& text) {
  const std::size_t from = clamp(start);
  const std::size_t removed = count > 0 ? static_cast<std::size_t>(count) : 0;
  const Reference<Text> keep = text.text_;  // `text` may be this string
  own().replace(from, removed, keep ? keep->value : kEmpty);
  return *this;
}

String& String::insert(int index, int count, wchar_t character) {
  if (count > 0) own().insert(clamp(index), static_cast<std::size_t>(count), character);
  return *this;
}

String& String::append(const char* bytes) {
  utf8::decode(bytes, own());
  return *this;
}

String& String::removeAll(wchar_t character) {
  if (characters().find(character) != std::wstring::npos) std::erase(own(), character);
  return *this;
}

String& String::trim(const wchar_t* set) {
  const std::wstring& text = characters();
  const std::size_t first = text.find_first_not_of(set);
  if (first == std::wstring::npos) {
    text_ = {};
    return *this;
  }
  const std::size_t last = text.find_last_not_of(set);
  if (first == 0 && last == text.size() - 1) return *this;
  std::wstring& mine = own();
  mine.erase(last + 1);
  mine.erase(0, first);
  return *this;
}

String& String::translate(wchar_t from, wchar_t to) {
  std::wstring& mine = own();
  std::replace(mine.begin(), mine.end(), from, to);
  return *this;
}

String& String::toUpper() {
  std::wstring& mine = own();
  std::transform(mine.begin(), mine.end(), mine.begin(), toUpperCharacter);
  return *this;
}

String String::substring(int start, int count) const {
  return characters().substr(clamp(start), static_cast<std::size_t>(std::max(count, 0)));
}

bool String::equalsIgnoreCase(const String& other) const {
  return length() == other.length() && regionMatches(0, other, true);
}

bool String::regionMatches(int start, const String& other, bool ignoreCase) const {
  const std::wstring_view part =
      std::wstring_view(characters()).substr(clamp(start), other.characters().size());
  const std::wstring_view wanted = other.characters();
  if (!ignoreCase) return part == wanted;
  return std::equal(part.begin(), part.end(), wanted.begin(), wanted.end(), sameIgnoringCase);
}

int String::indexOf(const String& text, int start, bool ignoreCase) const {
  const int last = length() - text.length();
  for (int index = static_cast<int>(clamp(start)); index <= last; ++index) {
    if (regionMatches(index, text, ignoreCase)) return index;
  }
  return -1;
}

std::wstring& String::own() {
  if (!text_) {
    text_ = Reference<Text>(new Text({}));
  } else if (text_->referenceCount() > 1) {
    text_ = Reference<Text>(new Text(text_->value));
  }
  return text_->value;
}

std::size_t String::clamp(int index) const noexcept {
  return static_cast<std::size_t>(std::clamp(index, 0, length()));
}

}  // namespace kz
