// Characters from the UTF-8 bytes of a stream, read in pieces of the buffer's size. Bytes that are
// not valid UTF-8 come out as stray bytes (see Utf8.h), so nothing that a file holds is lost.
#ifndef KNOB_KZ_IO_INPUT_STREAM_READER_H
#define KNOB_KZ_IO_INPUT_STREAM_READER_H

#include "kz/Reference.h"
#include "kz/io/InputStream.h"
#include "kz/io/Reader.h"

namespace kz::io {

class InputStreamReader : public Reader {
 public:
  // No encoding name (null) means UTF-8, the only encoding there is; another throws
  // ResultException. The buffer size is in bytes.
  InputStreamReader(InputStream* stream, const wchar_t* encoding, long bufferSize);

  bool read(std::wstring& characters) override;

 private:
  Reference<InputStream> stream_;
  std::string buffer_;
  std::size_t pending_ = 0;  // bytes of a character whose rest has not been read yet
};

}  // namespace kz::io

#endif
