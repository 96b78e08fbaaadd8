// What the program passes with each message, so that a text of an edited or translated bundle that
// asks for something else is found out before it is formatted: formatting would read arguments that
// are not there.
#ifndef KNOB_OUTPUT_MESSAGE_ARGUMENTS_H
#define KNOB_OUTPUT_MESSAGE_ARGUMENTS_H

#include <optional>
#include <span>
#include <string_view>

class MessageArguments {
 public:
  static constexpr char TEXT = 't';
  static constexpr char NUMBER = 'n';

  struct Entry {
    std::string_view key;    // without the prefix of its bundle
    std::string_view kinds;  // of the arguments, in order
  };
  // The keys of the program's bundle, sorted.
  static std::span<const Entry> table();

  // None for a key of whose arguments nothing is known: it is neither in the table nor the number
  // of a status, which has no arguments.
  static std::optional<std::string_view> of(std::string_view key);

  // Whether the text can be formatted with such arguments: its conversions take a beginning of
  // them, each of its kind. A text that has a conversion of any other sort (other letters than s,
  // d, i, o, u, x and X, lengths, positions, widths that are arguments or have more than four
  // digits) cannot.
  static bool suffice(std::string_view kinds, std::wstring_view text);
};

#endif
