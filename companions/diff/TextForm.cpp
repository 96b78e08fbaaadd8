#include "diff/TextForm.h"

#include <algorithm>
#include <charconv>
#include <utility>

#include "kz/String.h"

namespace diff {
namespace {

constexpr std::string_view kBlanks = " \t\r";
constexpr std::string_view kErrorLine = "ERROR! - ";

std::string_view trimmed(std::string_view text) {
  const size_t first = text.find_first_not_of(kBlanks);
  if (first == text.npos) return {};
  return text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

// What follows the tag, when the line begins with it in any letter case.
std::optional<std::string_view> afterTag(std::string_view line, const std::string& tag) {
  if (line.size() < tag.size() ||
      !kz::String(line.substr(0, tag.size())).equalsIgnoreCase(kz::String(tag))) {
    return std::nullopt;
  }
  return line.substr(tag.size());
}

bool isRule(std::string_view line) {
  return !line.empty() && line.find_first_not_of('=') == line.npos;
}

// "CATEGORY 7: LOCKING<tab>CHANGED SETTINGS: 1": the name.
std::string categoryOf(std::string_view header) {
  const size_t colon = header.find(':');
  const size_t tab = header.find('\t');
  if (colon == header.npos || tab == header.npos || tab < colon) return {};
  return std::string(trimmed(header.substr(colon + 1, tab - colon - 1)));
}

}  // namespace

Settings TextForm::parse(std::string_view content) {
  while (!content.empty()) {
    const size_t end = std::min(content.find('\n'), content.size());
    ++lineNumber_;
    readLine(content.substr(0, end));
    content.remove_prefix(std::min(end + 1, content.size()));
  }
  if (valueIsDue_) fail("the last setting has no value");
  if (isExport_ && !isClosed_) fail("the export ended early: its last line is missing");
  if (settings_.empty() && !isExport_) fail("it holds no settings");
  return std::move(settings_);
}

void TextForm::readLine(std::string_view line) {
  if (line.ends_with('\r')) line.remove_suffix(1);
  if (line.starts_with(kErrorLine)) fail("settings are missing: " + std::string(line));
  if (!isExpected(line)) fail("a value holds a line break");
  expected_ = nullptr;
  const std::string_view plain = trimmed(line);
  if (const auto id = afterTag(plain, tags_.id)) {
    readId(trimmed(*id));
  } else if (const auto value = afterTag(plain, tags_.value)) {
    const std::string exact = "\t" + tags_.value + " ";
    readValue(std::string(line.starts_with(exact) ? line.substr(exact.size()) : trimmed(*value)));
    if (isExport_) expected_ = &tags_.afterValue;
  } else if (line.starts_with('\t')) {
    readDefault(line);
  } else {
    readHeader(line);
  }
  isClosed_ |= isClosing(line);
}

void TextForm::readId(std::string_view text) {
  if (valueIsDue_) fail("a setting has no value before the next id");
  Setting setting;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), setting.id);
  if (error != std::errc() || end != text.data() + text.size()) {
    fail("an id is not a number: " + std::string(text));
  }
  setting.name = std::exchange(header_, {});
  setting.category = category_;
  settings_.push_back(std::move(setting));
  valueIsDue_ = true;
}

void TextForm::readValue(std::string value) {
  // An import passes over a value without an id.
  if (valueIsDue_) settings_.back().value = std::move(value);
  valueIsDue_ = false;
}

void TextForm::readDefault(std::string_view line) {
  if (settings_.empty() || valueIsDue_ || settings_.back().defaultValue) return;
  line.remove_prefix(1);
  for (const std::string& tag : tags_.defaultValue) {
    if (!line.starts_with(tag)) continue;
    settings_.back().defaultValue = line.substr(tag.size());
    if (isExport_) expected_ = &tags_.afterDefault;
  }
}

// A setting's header is followed by its id, a category's by another line.
void TextForm::readHeader(std::string_view line) {
  if (!header_.empty()) category_ = categoryOf(std::exchange(header_, {}));
  if (rule_.empty()) {
    if (isRule(line)) rule_ = line;
  } else if (!text_) {
    text_ = line;
  } else {
    if (line == rule_) {
      isExport_ = true;
      isClosed_ = false;
      header_ = *text_;
    }
    rule_.clear();
    text_.reset();
  }
}

bool TextForm::isClosing(std::string_view line) const {
  if (!line.starts_with('\t')) return false;
  line.remove_prefix(1);
  for (const Tags::Closing& closing : tags_.closing) {
    if (line.size() > closing.before.size() + closing.after.size() &&
        line.starts_with(closing.before) && line.ends_with(closing.after)) {
      return true;
    }
  }
  return false;
}

bool TextForm::isExpected(std::string_view line) const {
  if (expected_ == nullptr) return true;
  return line.starts_with('\t') &&
         std::any_of(expected_->begin(), expected_->end(), [&](const std::string& beginning) {
           return line.substr(1).starts_with(beginning);
         });
}

void TextForm::fail(const std::string& reason) const {
  throw Trouble("line " + std::to_string(lineNumber_) + ": " + reason);
}

}  // namespace diff
