// Which files this process has open, whoever of its parts opened them: emptying one of them would
// pull it away under that part.
#ifndef KNOB_KZ_IO_OPEN_FILES_H
#define KNOB_KZ_IO_OPEN_FILES_H

#include <string>

namespace kz::io {

// Whether the path leads to a regular file that this process opened itself and still holds: the
// same file by device and number, by whatever name. Descriptors that the process was started with
// do not count.
bool isOpenHere(const std::string& path);

}  // namespace kz::io

#endif
