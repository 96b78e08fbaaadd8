// Status codes of the foundation layer: 32-bit values, 0 for success. Failures of the system's file
// operations are 0x80070000 plus a code whose low byte, the part of a status that a shell sees, is
// never 0.
#ifndef KNOB_KZ_STATUS_H
#define KNOB_KZ_STATUS_H

namespace kz {

inline constexpr int kStatusAccessDenied = static_cast<int>(0x80070005U);
inline constexpr int kStatusFileNotFound = static_cast<int>(0x80070002U);
inline constexpr int kStatusFileInUse = static_cast<int>(0x80070020U);
inline constexpr int kStatusInvalidArgument = static_cast<int>(0x80070057U);
inline constexpr int kStatusOutOfMemory = static_cast<int>(0x8007000EU);
inline constexpr int kStatusFailure = static_cast<int>(0x80004005U);

// The status of a failed system call, from its errno.
int statusOfErrno(int error) noexcept;

}  // namespace kz

#endif
