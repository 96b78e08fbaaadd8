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

// Sizes in bytes and in microseconds.
struct Unit {
  std::string_view name;
  Dimension dimension;
  double size;
};

constexpr Unit kUnits[] = {
    {"B", Dimension::memory, 1.0},
    {"kB", Dimension::memory, 1024.0},
    {"MB", Dimension::memory, 1048576.0},
    {"GB", Dimension::memory, 1073741824.0},
    {"TB", Dimension::memory, 1099511627776.0},
    {"us", Dimension::time, 1.0},
    {"ms", Dimension::time, 1e3},
    {"s", Dimension::time, 1e6},
    {"min", Dimension::time, 6e7},
    {"h", Dimension::time, 3.6e9},
    {"d", Dimension::time, 8.64e10},
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

// A setting's own unit may carry a count: "8kB" are blocks of 8192 bytes.
std::optional<double> factor(std::string_view from, std::string_view to) {
  if (from.empty()) return 1.0;
  double count = 1.0;
  const auto number = std::from_chars(to.data(), to.data() + to.size(), count);
  if (number.ec == std::errc()) {
    to.remove_prefix(static_cast<std::size_t>(number.ptr - to.data()));
  } else {
    count = 1.0;
  }
  const Unit* const source = unitNamed(from);
  const Unit* const target = unitNamed(to);
  if (!source || !target || source->dimension != target->dimension) return std::nullopt;
  return source->size / (target->size * count);
}

struct Number {
  double value;
  std::string_view rest;
};

// A number written in base 16 or 8, which the server takes for integers.
std::optional<Number> wholeNumber(std::string_view text) {
  const bool negative = text.starts_with('-');
  if (negative || text.starts_with('+')) text.remove_prefix(1);
  if (text.size() < 2 || text.front() != '0') return std::nullopt;
  const bool hexadecimal = lower(text[1]) == 'x';
  text.remove_prefix(hexadecimal ? 2 : 1);
  int64_t value = 0;
  const char* const end = text.data() + text.size();
  const auto number = std::from_chars(text.data(), end, value, hexadecimal ? 16 : 8);
  if (number.ec != std::errc()) return std::nullopt;
  const std::string_view rest(number.ptr, static_cast<std::size_t>(end - number.ptr));
  if (rest.starts_with('.') || (!rest.empty() && lower(rest.front()) == 'e')) return std::nullopt;
  return Number{static_cast<double>(negative ? -value : value), rest};
}

std::optional<Number> decimalNumber(std::string_view text) {
  if (text.starts_with('+')) text.remove_prefix(1);
  double value = 0;
  const char* const end = text.data() + text.size();
  const auto number = std::from_chars(text.data(), end, value);
  if (number.ec != std::errc()) return std::nullopt;
  return Number{value, {number.ptr, static_cast<std::size_t>(end - number.ptr)}};
}

std::optional<double> inUnit(const std::optional<Number>& number, std::string_view unit) {
  if (!number) return std::nullopt;
  const auto times = factor(trimmed(number->rest), unit);
  if (!times) return std::nullopt;
  return number->value * *times;
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

std::optional<int32_t> ValueText::integer(std::string_view text, std::string_view unit) {
  text = trimmed(text);
  const auto whole = wholeNumber(text);
  const auto value = inUnit(whole ? whole : decimalNumber(text), unit);
  if (!value) return std::nullopt;
  const double rounded = std::nearbyint(*value);
  if (!(rounded >= std::numeric_limits<int32_t>::min() &&
        rounded <= std::numeric_limits<int32_t>::max())) {
    return std::nullopt;
  }
  return static_cast<int32_t>(rounded);
}

std::optional<double> ValueText::real(std::string_view text, std::string_view unit) {
  return inUnit(decimalNumber(trimmed(text)), unit);
}

std::optional<std::size_t> ValueText::choice(std::string_view text,
                                             const std::vector<std::string>& choices) {
  const auto found =
      std::find_if(choices.begin(), choices.end(),
                   [text](const std::string& choice) { return isSameIgnoringCase(choice, text); });
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
