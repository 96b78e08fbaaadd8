// The texts of a catalogue: what keeps one from standing on a line of a message, of JSON and of a
// settings file, and how it is shown in a fault.
#ifndef KNOB_CATALOGUEFILE_LINE_TEXT_H
#define KNOB_CATALOGUEFILE_LINE_TEXT_H

#include <cstddef>
#include <string>
#include <string_view>

namespace tn::cataloguefile {

// What a text of one kind may hold. No text is empty, has blanks at its ends or holds control
// characters.
struct LineRule {
  size_t longest;              // in bytes
  std::string_view forbidden;  // of the characters that lineFault() has words for: " \ : and blank
};

// What is wrong with the text, as the end of a sentence that begins with it; empty if nothing is.
std::string lineFault(std::string_view text, const LineRule& rule);

// In double quotes, cut after some words.
std::string quoted(std::string_view text);

// UTF-8 text with its letters in upper case, for comparisons: by Unicode, as the program compares
// the words of a boolean.
std::wstring upperCase(std::string_view text);

// With \xNN for each control character, so that it stays on its line and leaves a terminal alone.
std::string printable(std::string_view text);

}  // namespace tn::cataloguefile

#endif
