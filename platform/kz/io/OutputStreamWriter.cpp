#include "kz/io/OutputStreamWriter.h"

#include "kz/Exception.h"
#include "kz/Utf8.h"

namespace kz::io {

OutputStreamWriter::OutputStreamWriter(OutputStream* stream, const wchar_t* encoding,
                                       long bufferSize)
    : stream_(stream), bufferSize_(static_cast<std::size_t>(bufferSize)) {
  if (encoding != nullptr) throw ResultException(kStatusInvalidArgument);
}

void OutputStreamWriter::write(const String& text) {
  utf8::encode(text.characters(), buffer_);
  flushIfFull();
}

void OutputStreamWriter::writeLine(const String& text) {
  utf8::encode(text.characters(), buffer_);
  buffer_ += '\n';
  flushIfFull();
}

void OutputStreamWriter::flushIfFull() {
  if (buffer_.size() >= bufferSize_) flush();
}

void OutputStreamWriter::flush() {
  if (buffer_.empty()) return;
  written_.clear();
  written_.swap(buffer_);
  stream_->write(written_.data(), written_.size());
}

void OutputStreamWriter::close() {
  flush();
  stream_->close();
}

}  // namespace kz::io
