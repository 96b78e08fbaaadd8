#include "tuning/postgresql/ValueText.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <iterator>
#include <limits>

#include "tuning/Characters.h"

namespace tn::postgresql {
namespace {

constexpr std::string_view kBlanks = " \t\n\r\f\v";

enum class Dimension { memory, time };

// Sizes in bytes and in microseconds. In each dimension the next smaller unit follows.
struct Unit {
  std::string_view name;
  Dimension dimension;
  double size;
};

constexpr Unit kUnits[] = {
    {"TB", Dimension::memory, 1099511627776.0},
    {"GB", Dimension::memory, 1073741824.0},
    {"MB", Dimension::memory, 1048576.0},
    {"kB", Dimension::memory, 1024.0},
    {"B", Dimension::memory, 1.0},
    {"d", Dimension::time, 8.64e10},
    {"h", Dimension::time, 3.6e9},
    {"min", Dimension::time, 6e7},
    {"s", Dimension::time, 1e6},
    {"ms", Dimension::time, 1e3},
    {"us", Dimension::time, 1.0},
};

const Unit* unitNamed(std::string_view name) {
  const auto found = std::find_if(std::begin(kUnits), std::end(kUnits),
                                  [name](const Unit& unit) { return unit.name == name; });
  return found == std::end(kUnits) ? nullptr : found;
}

std::string_view trimmed(std::string_view text) {
  text.remove_prefix(std::min(text.find_first_not_of(kBlanks), text.size()));
  return text.substr(0, text.find_last_not_of(kBlanks) + 1);
}

bool beginsWord(std::string_view word, std::string_view beginning) {
  return isSameIgnoringCase(word.substr(0, beginning.size()), beginning);
}

// What a unit in a text is of the setting's own.
struct Scale {
  const Unit* from;
  double to;  // the size of the setting's unit

  double times(const Unit& unit) const { return unit.size / to; }
};

// The setting's own unit may carry a count: "8kB" are blocks of 8192 bytes.
std::optional<Scale> scaleOf(std::string_view given, std::string_view own) {
  double count = 1.0;
  const auto number = std::from_chars(own.data(), own.data() + own.size(), count);
  if (number.ec != std::errc()) count = 1.0;
  own.remove_prefix(static_cast<std::size_t>(number.ptr - own.data()));
  const Unit* const from = unitNamed(given);
  const Unit* const to = unitNamed(own);
  if (!from || !to || from->dimension != to->dimension) return std::nullopt;
  return Scale{from, to->size * count};
}

bool takeSign(std::string_view& text) {
  const bool negative = text.starts_with('-');
  if (negative || text.starts_with('+')) text.remove_prefix(1);
  return negative;
}

bool takeHexadecimalMark(std::string_view& text) {
  const bool marked = text.size() > 2 && text[0] == '0' && lower(text[1]) == 'x';
  if (marked) text.remove_prefix(2);
  return marked;
}

template <typename Value>
struct Number {
  Value value;
  std::string_view rest;  // of the text, behind the number
};

// A whole number in base 10, 16 (0x) or 8 (a leading 0).
std::optional<Number<int64_t>> wholeNumber(std::string_view text) {
  const bool negative = takeSign(text);
  const int base = takeHexadecimalMark(text) ? 16 : text.starts_with('0') ? 8 : 10;
  if (text.starts_with('-')) return std::nullopt;
  int64_t value = 0;
  const char* const end = text.data() + text.size();
  const auto number = std::from_chars(text.data(), end, value, base);
  if (number.ec != std::errc()) return std::nullopt;
  return Number<int64_t>{negative ? -value : value,
                         {number.ptr, static_cast<std::size_t>(end - number.ptr)}};
}

std::optional<Number<double>> fractionalNumber(std::string_view text) {
  const bool negative = takeSign(text);
  const auto format =
      takeHexadecimalMark(text) ? std::chars_format::hex : std::chars_format::general;
  if (text.starts_with('-')) return std::nullopt;
  double value = 0;
  const char* const end = text.data() + text.size();
  const auto number = std::from_chars(text.data(), end, value, format);
  if (number.ec != std::errc() || !std::isfinite(value)) return std::nullopt;
  return Number<double>{negative ? -value : value,
                        {number.ptr, static_cast<std::size_t>(end - number.ptr)}};
}

// A number that goes on like a fraction is read as one.
std::optional<Number<double>> integerNumber(std::string_view text) {
  const auto whole = wholeNumber(text);
  if (text.starts_with('.') || (whole && whole->rest.find_first_of(".eE") == 0)) {
    return fractionalNumber(text);
  }
  if (!whole) return std::nullopt;
  return Number<double>{static_cast<double>(whole->value), whole->rest};
}

// What is a fraction of the unit that the text names is rounded to the next smaller unit first.
std::optional<double> inUnit(const std::optional<Number<double>>& number, std::string_view unit) {
  if (!number) return std::nullopt;
  const std::string_view given = trimmed(number->rest);
  if (given.empty()) return number->value;
  const auto scale = scaleOf(given, unit);
  if (!scale) return std::nullopt;
  const double value = number->value * scale->times(*scale->from);
  const Unit* const smaller = scale->from + 1;
  if (smaller == std::end(kUnits) || smaller->dimension != scale->from->dimension) return value;
  const double step = scale->times(*smaller);
  return std::nearbyint(value / step) * step;
}

// What is a fraction of the setting's unit is cut off.
std::optional<double> cutToUnit(const std::optional<Number<int64_t>>& number,
                                std::string_view unit) {
  if (!number || number->value != static_cast<int32_t>(number->value)) return std::nullopt;
  const std::string_view given = trimmed(number->rest);
  const auto value = static_cast<double>(number->value);
  if (given.empty()) return value;
  const auto scale = scaleOf(given, unit);
  if (!scale) return std::nullopt;
  return std::trunc(value * scale->from->size / scale->to);
}

}  // namespace

std::optional<bool> ValueText::boolean(std::string_view text) {
  struct Word {
    std::string_view word;
    std::size_t shortest;
    bool value;
  };
  constexpr Word kWords[] = {{"true", 1, true}, {"false", 1, false}, {"yes", 1, true},
                             {"no", 1, false},  {"on", 2, true},     {"off", 2, false},
                             {"1", 1, true},    {"0", 1, false}};
  for (const Word& entry : kWords) {
    if (text.size() >= entry.shortest && text.size() <= entry.word.size() &&
        beginsWord(entry.word, text)) {
      return entry.value;
    }
  }
  return std::nullopt;
}

std::optional<int32_t> ValueText::integer(std::string_view text, std::string_view unit,
                                          Fractions fractions) {
  text = trimmed(text);
  const auto value = fractions == Fractions::refused ? cutToUnit(wholeNumber(text), unit)
                                                     : inUnit(integerNumber(text), unit);
  if (!value) return std::nullopt;
  const double rounded = std::nearbyint(*value);
  if (!(rounded >= std::numeric_limits<int32_t>::min() &&
        rounded <= std::numeric_limits<int32_t>::max())) {
    return std::nullopt;
  }
  return static_cast<int32_t>(rounded);
}

std::optional<double> ValueText::real(std::string_view text, std::string_view unit) {
  return inUnit(fractionalNumber(trimmed(text)), unit);
}

std::optional<std::size_t> ValueText::choice(std::string_view text,
                                             const std::vector<Choice>& choices) {
  const auto found = std::find_if(choices.begin(), choices.end(), [text](const Choice& choice) {
    return isSameIgnoringCase(choice.text, text);
  });
  if (found != choices.end()) return static_cast<std::size_t>(found - choices.begin());
  // The other words for on and off are taken wherever these two are choices, but not listed.
  const auto asBoolean = boolean(text);
  if (!asBoolean || isSameIgnoringCase(text, "on") || isSameIgnoringCase(text, "off"))
    return std::nullopt;
  return choice(*asBoolean ? "on" : "off", choices);
}

std::string ValueText::ofReal(double value) {
  constexpr int kDigits = 6;
  std::array<char, 32> buffer{};
  const auto end = std::to_chars(buffer.data(), buffer.data() + buffer.size(), value,
                                 std::chars_format::general, kDigits);
  return {buffer.data(), end.ptr};
}

}  // namespace tn::postgresql
