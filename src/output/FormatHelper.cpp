#include "output/FormatHelper.h"

#include <utility>

kz::String FormatHelper::getTabStr(int count) const { return kz::String().insert(0, count, L'\t'); }

void FormatHelper::padToLen(kz::String& text, int length) const {
  if (length > text.length()) text.insert(text.length(), length - text.length(), L' ');
}

void FormatHelper::putError(kz::String text) { logger->severe("ERROR! - " + text); }

void FormatHelper::putData(kz::String text, int depth) {
  logger->info(std::move(text.insert(0, depth, L'\t')));
}

void FormatHelper::putHeader(kz::String header, int depth) {
  const kz::String rule = kz::String().insert(0, header.length(), L'=');
  putData(rule, depth);
  putData(header.toUpper(), depth);
  putData(rule, depth);
}
