// Puts the process into a state in which a failed write is a status like any other.
#ifndef KNOB_KZ_IO_STANDARD_STREAMS_H
#define KNOB_KZ_IO_STANDARD_STREAMS_H

namespace kz::io {

// To be called before anything is opened.
// - Writing to a pipe whose reader has gone, or past the limit on a file's size, fails instead of
//   killing the process.
// - Standard descriptors that the caller left closed are taken by something on which every read or
//   write fails, so that no file or connection opened later ends up as standard output.
void guardStandardStreams() noexcept;

}  // namespace kz::io

#endif
