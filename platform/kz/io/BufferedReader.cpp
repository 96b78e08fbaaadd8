#include "kz/io/BufferedReader.h"

namespace kz::io {

BufferedReader::BufferedReader(Reader* reader, long bufferSize) : reader_(reader) {
  buffer_.reserve(static_cast<std::size_t>(bufferSize));
}

int BufferedReader::readLine(String& line) {
  std::wstring text;
  bool ended = false;
  bool found = false;
  while (!ended && (position_ < buffer_.size() || fill())) {
    found = true;
    const std::size_t end = buffer_.find(L'\n', position_);
    ended = end != std::wstring::npos;
    text.append(buffer_, position_, ended ? end - position_ : std::wstring::npos);
    position_ = ended ? end + 1 : buffer_.size();
  }
  line = String(std::move(text));
  return found ? line.length() : -1;
}

bool BufferedReader::fill() {
  buffer_.clear();
  position_ = 0;
  return reader_->read(buffer_);
}

}  // namespace kz::io
