#include "diff/SettingsFile.h"

#include "diff/JsonForm.h"
#include "diff/TextForm.h"
#include "kz/Utf8.h"

namespace diff {

Settings SettingsFile::parse(std::string_view content, const Tags& tags) {
  content = kz::utf8::withoutByteOrderMark(content);
  const size_t first = content.find_first_not_of(" \t\r\n");
  if (first == content.npos) throw Trouble("it is empty");
  return content[first] == '{' ? JsonForm::parse(content) : TextForm(tags).parse(content);
}

}  // namespace diff
