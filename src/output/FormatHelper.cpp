#include "output/FormatHelper.h"

#include <algorithm>

namespace {

kz::String repeated(wchar_t character, int count) {
  return std::wstring(static_cast<std::size_t>(std::max(count, 0)), character);
}

}  // namespace

kz::String FormatHelper::getTabStr(int count) const { return repeated(L'\t', count); }

void FormatHelper::padToLen(kz::String& text, int length) const {
  text += repeated(L' ', length - text.length());
}

void FormatHelper::putError(kz::String text) { logger->severe("ERROR! - " + text); }

void FormatHelper::putData(kz::String text, int depth) {
  logger->info(depth > 0 ? getTabStr(depth) + text : std::move(text));
}

void FormatHelper::putHeader(kz::String header, int depth) {
  const kz::String rule = repeated(L'=', header.length());
  putData(rule, depth);
  putData(header.toUpper(), depth);
  putData(rule, depth);
}
