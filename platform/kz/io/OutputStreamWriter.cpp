#include "kz/io/OutputStreamWriter.h"

#include <utility>

#include "kz/Exception.h"

namespace kz::io {

OutputStreamWriter::OutputStreamWriter(OutputStream* stream, wchar_t const* encoding,
                                       long bufferSize)
    : stream_(stream), bufferSize_(static_cast<std::size_t>(bufferSize)) {
  if (encoding != nullptr) throw ResultException(kStatusInvalidArgument);
}

void OutputStreamWriter::write(String const& text) {
  buffer_ += text.getBytes();
  if (buffer_.size() >= bufferSize_) flush();
}

void OutputStreamWriter::flush() {
  if (buffer_.empty()) return;
  const std::string bytes = std::exchange(buffer_, {});
  stream_->write(bytes.data(), bytes.size());
}

void OutputStreamWriter::close() {
  flush();
  stream_->close();
}

}  // namespace kz::io
