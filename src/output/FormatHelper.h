// Lays out text output: indented data lines, underlined headers and error lines. It writes nothing
// itself: every line is a record of the logger it is bound to, whose level decides whether it is
// written and whose handlers decide where to. Texts come without line ends.
#ifndef KNOB_OUTPUT_FORMAT_HELPER_H
#define KNOB_OUTPUT_FORMAT_HELPER_H

#include "output/Logger.h"

class FormatHelper : public kz::Object {
 public:
  explicit FormatHelper(Logger* boundLogger) : logger(boundLogger) {}

  // Sets the level of the bound logger.
  void setLevel(Level level) { logger->setLevel(level); }

  // As many tabs; none for a count below 1.
  kz::String getTabStr(int count) const;
  // Appends blanks until the text has the length in characters.
  void padToLen(kz::String& text, int length) const;

  void putError(kz::String text);
  void putData(kz::String text, int depth);
  // Three lines: a rule as long as the header, the header in capitals, the rule.
  void putHeader(kz::String header, int depth);

 private:
  kz::Reference<Logger> logger;
};

#endif
