#include "kz/io/InputStreamReader.h"

#include <algorithm>

#include "kz/Exception.h"
#include "kz/Utf8.h"

namespace kz::io {

InputStreamReader::InputStreamReader(InputStream* stream, const wchar_t* encoding, long bufferSize)
    : stream_(stream), buffer_(static_cast<std::size_t>(bufferSize), '\0') {
  if (encoding != nullptr) throw ResultException(kStatusInvalidArgument);
}

bool InputStreamReader::read(std::wstring& characters) {
  const std::size_t before = characters.size();
  while (characters.size() == before) {
    const std::size_t count = stream_->read(buffer_.data() + pending_, buffer_.size() - pending_);
    const std::size_t filled = pending_ + count;
    if (filled == 0) return false;
    const std::size_t used =
        utf8::decode(std::string_view(buffer_.data(), filled), characters, count > 0);
    std::copy(buffer_.data() + used, buffer_.data() + filled, buffer_.data());
    pending_ = filled - used;
  }
  return true;
}

}  // namespace kz::io
