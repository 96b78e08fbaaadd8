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

#include "tuning/postgresql/Choices.h"

namespace tn::postgresql {

class ValueText {
 public:
  // What a server makes of a fraction in the value of an integer setting. Before version 12 it
  // refuses one, and cuts off what is less than the setting's unit ("90s" are 1 min); since then it
  // rounds.
  enum class Fractions { refused, rounded };

  // Not there when the text is no such value. `unit` is the setting's: "kB", "8kB", "ms", "" ...
  static std::optional<bool> boolean(std::string_view text);
  static std::optional<int32_t> integer(std::string_view text, std::string_view unit,
                                        Fractions fractions = Fractions::rounded);
  static std::optional<double> real(std::string_view text, std::string_view unit);
  // The position of the choice that the text names, without regard to case.
  static std::optional<std::size_t> choice(std::string_view text,
                                           const std::vector<Choice>& choices);
  // A real as the server shows it: six digits.
  static std::string ofReal(double value);
};

}  // namespace tn::postgresql

#endif
