// The language that the user wants texts in.
#ifndef KNOB_KZ_I18N_LOCALE_H
#define KNOB_KZ_I18N_LOCALE_H

#include <string>
#include <string_view>
#include <vector>

namespace kz::i18n {

class Locale {
 public:
  // A name as the system writes it, such as de_DE.UTF-8. Encoding and variant do not matter.
  explicit Locale(std::string_view name);
  // The first of LC_ALL, LC_MESSAGES and LANG that is not empty, as it was when this was first
  // asked: every text asks.
  static const Locale& getDefault();

  // What file names of texts in this language end in, the most special first: "_de_DE", "_de".
  // Empty for a locale without a language (C, POSIX) and for a name that is none.
  const std::vector<std::string>& suffixes() const noexcept { return suffixes_; }

 private:
  std::vector<std::string> suffixes_;
};

}  // namespace kz::i18n

#endif
