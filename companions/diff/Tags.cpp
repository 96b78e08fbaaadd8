#include "diff/Tags.h"

#include <filesystem>

#include "diff/Settings.h"
#include "kz/Exception.h"
#include "kz/i18n/StringBundle.h"
#include "kz/util/FilePath.h"

namespace diff {
namespace {

using kz::i18n::Locale;
using kz::i18n::StringBundle;

constexpr char kBundle[] = "KNOB";

// The part of a text before its first conversion, and the part after it.
Tags::Closing aroundConversion(const std::string& text) {
  const size_t at = text.find("%s");
  if (at == std::string::npos) return {text, ""};
  return {text.substr(0, at), text.substr(at + 2)};
}

std::string beginning(const StringBundle& texts, const char* key) {
  const std::string text = texts.getString(key).getBytes();
  return text.substr(0, text.find('%'));
}

void addLanguage(const StringBundle& texts, Tags& tags) {
  tags.defaultValue.push_back(beginning(texts, "KNOB_TAG_DEF_VALUE"));
  for (const char* const key :
       {"KNOB_TAG_RANGE", "KNOB_TAG_BOOL_OPTIONS", "KNOB_TAG_OPTIONS", "KNOB_TAG_DEF_VALUE"}) {
    tags.afterValue.push_back(beginning(texts, key));
  }
  tags.afterDefault.push_back(beginning(texts, "KNOB_TAG_DESC"));
  tags.closing.push_back(aroundConversion(texts.getString("KNOB_INFO_STGS_WRITTEN").getBytes()));
}

// The languages that the bundle is translated into, "de_DE" for KNOB_de_DE.properties.
std::vector<std::string> languages() {
  const std::string prefix = std::string(kBundle) + "_";
  std::vector<std::string> found;
  for (const auto& entry : std::filesystem::directory_iterator(StringBundle::folder())) {
    const std::string stem = entry.path().stem().string();
    if (entry.path().extension() == ".properties" && stem.starts_with(prefix)) {
      found.push_back(stem.substr(prefix.size()));
    }
  }
  return found;
}

}  // namespace

Tags Tags::ofBundles() {
  try {
    const Locale plain("C");
    const auto base = StringBundle::getBundle(kBundle, &plain);
    Tags tags{base->getString("KNOB_TAG_ID").getBytes(),
              base->getString("KNOB_TAG_VALUE").getBytes(),
              {},
              {},
              {},
              {}};
    addLanguage(*base, tags);
    for (const std::string& language : languages()) {
      const Locale locale(language);
      addLanguage(*StringBundle::getBundle(kBundle, &locale), tags);
    }
    return tags;
  } catch (const kz::Exception&) {
    throw Trouble(
        "the message bundle KNOB of knob is not installed or has no texts for settings files");
  }
}

}  // namespace diff
