// The text form of a settings file.
//
// An id line and the value line after it make a setting, as they do for an import. A line of the
// layout that an export has (one tab, the tag, one blank, the value) keeps its value letter by
// letter; of any other line the blanks and tabs around the value go. A value with a line break goes
// on in lines that cannot be told from others for certain: an export with one is refused.
#ifndef KNOB_DIFF_TEXT_FORM_H
#define KNOB_DIFF_TEXT_FORM_H

#include <optional>
#include <string>
#include <string_view>

#include "diff/Settings.h"
#include "diff/Tags.h"

namespace diff {

class TextForm {
 public:
  // The tags must outlive the object, which reads one file.
  explicit TextForm(const Tags& tags) : tags_(tags) {}

  // Throws Trouble.
  Settings parse(std::string_view content);

 private:
  void readLine(std::string_view line);
  void readId(std::string_view text);
  void readValue(std::string value);
  void readDefault(std::string_view line);
  void readHeader(std::string_view line);
  bool isClosing(std::string_view line) const;
  bool isExpected(std::string_view line) const;
  [[noreturn]] void fail(const std::string& reason) const;

  const Tags& tags_;
  Settings settings_{};
  bool valueIsDue_ = false;  // the last setting has an id and no value yet
  int lineNumber_ = 0;
  bool isExport_ = false;  // a header was seen
  bool isClosed_ = false;  // the last line of an export was seen after it
  // In an export, what the next line has to begin with after its tab; null for anything.
  const std::vector<std::string>* expected_ = nullptr;
  std::string category_{};
  // A header is a rule, its text and the rule again.
  std::string rule_{};                 // the first of the two, once it was read
  std::optional<std::string> text_{};  // what came after it
  std::string header_{};               // a whole header, until it is known what it belongs to
};

}  // namespace diff

#endif
