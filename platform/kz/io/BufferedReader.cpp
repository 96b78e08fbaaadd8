#include "kz/io/BufferedReader.h"

#include <algorithm>

namespace kz::io {

BufferedReader::BufferedReader(Reader* reader, long bufferSize) : reader_(reader) {
  buffer_.reserve(static_cast<std::size_t>(bufferSize));
}

int BufferedReader::readLine(String& line, int limit) {
  std::wstring text;
  bool found = false;
  cut_ = false;
  while (available()) {
    found = true;
    const std::size_t end = std::min(buffer_.find(L'\n', position_), buffer_.size());
    const std::size_t room = static_cast<std::size_t>(limit) - text.size();
    const std::size_t taken = std::min(end - position_, room);
    text.append(buffer_, position_, taken);
    position_ += taken;
    cut_ = position_ < end;
    if (cut_ || endLine()) break;
  }
  line = String(std::move(text));
  return found ? line.length() : -1;
}

void BufferedReader::skipRest() {
  while (cut_ && available()) {
    position_ = std::min(buffer_.find(L'\n', position_), buffer_.size());
    cut_ = !endLine();
  }
  cut_ = false;
}

void BufferedReader::skip(wchar_t character) {
  if (available() && buffer_[position_] == character) ++position_;
}

bool BufferedReader::available() { return position_ < buffer_.size() || fill(); }

bool BufferedReader::endLine() noexcept {
  if (position_ == buffer_.size()) return false;
  ++position_;
  return true;
}

bool BufferedReader::fill() {
  buffer_.clear();
  position_ = 0;
  return reader_->read(buffer_);
}

}  // namespace kz::io
