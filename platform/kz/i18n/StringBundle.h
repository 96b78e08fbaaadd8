// Texts for people, by key, from files that are installed with the program and can be edited or
// translated without it.
//
// The bundle NAME is the file NAME.properties in the folder that CMake lays out for bundles, found
// from the folder of the running program (by default ../share/knob). For the locale de_DE a key is
// looked for in NAME_de_DE.properties and NAME_de.properties before. Files are UTF-8 text in lines
// KEY=text: the first "=" ends the key, blanks around the key and before the text go, the rest of
// the line is the text. \t, \n, \\ and \uXXXX are escapes; empty lines and lines that begin with
// "#" are skipped. The last line of a key holds.
//
// A bundle that is installed, changed, replaced or removed while the program runs is seen by the
// next getBundle(), which asks the system for the state of each of its files; one that has not
// changed is not parsed again.
#ifndef KNOB_KZ_I18N_STRING_BUNDLE_H
#define KNOB_KZ_I18N_STRING_BUNDLE_H

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "kz/Object.h"
#include "kz/Reference.h"
#include "kz/String.h"
#include "kz/i18n/Locale.h"

namespace kz::i18n {

class StringBundle : public Object {
 public:
  // No locale (null) means the default locale. Throws ResultException when the bundle's file
  // without a language cannot be read.
  static Reference<StringBundle> getBundle(const String& name, const Locale* locale);

  // Where the files of bundles lie.
  static const std::string& folder();

  ~StringBundle() override;

  // Throws Exception when the key is in none of the bundle's files.
  String getString(const String& key) const;

  // The same, but a text that is not accepted counts as not there: texts are offered from that of
  // the most special language on.
  using Accepts = std::function<bool(const String& text)>;
  String getString(const std::string& key, const Accepts& accepts) const;

 private:
  struct Source;
  // One file: its lines are told apart when it is read, and a text is unescaped when it is first
  // asked for; most runs ask for a few.
  class Texts;

  static std::vector<Source> sources(const String& name, const Locale& locale);
  explicit StringBundle(const std::vector<Source>& sources);

  std::vector<std::unique_ptr<Texts>> texts_;  // the most special language first
};

}  // namespace kz::i18n

#endif
