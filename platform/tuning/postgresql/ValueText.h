// Reads a value as somebody wrote it into a configuration file ("7MB", "1h", "no", "ERROR") and
// gives the text that the server itself would show for it: numbers in the setting's unit, on/off,
// a choice as it is spelled among the choices.
#ifndef KNOB_POSTGRESQL_VALUE_TEXT_H
#define KNOB_POSTGRESQL_VALUE_TEXT_H

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tn::postgresql {

class ValueText {
 public:
  // Not there when the text is no such value. `unit` is the setting's: "kB", "8kB", "ms", "" ...
  static std::optional<bool> boolean(std::string_view text);
  static std::optional<int32_t> integer(std::string_view text, std::string_view unit);
  static std::optional<double> real(std::string_view text, std::string_view unit);
  // The position of the choice that the text names, without regard to case.
  static std::optional<std::size_t> choice(std::string_view text,
                                           const std::vector<std::string>& choices);
  // A real as the server shows it: six digits.
  static std::string ofReal(double value);
};

}  // namespace tn::postgresql

#endif
