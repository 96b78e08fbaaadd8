// Tells whether anything in a folder has changed, without asking the system each time: the kernel
// reports changes by a signal, and until one comes a look costs no system call.
//
// One watch may exist at a time; it takes the signal SIGIO. Where the kernel or the file system
// offers no reports, the answer is always "perhaps".
#ifndef KNOB_KZ_IO_FOLDER_WATCH_H
#define KNOB_KZ_IO_FOLDER_WATCH_H

#include <array>
#include <string>

#include "kz/io/FileDescriptor.h"

namespace kz::io {

class FolderWatch {
 public:
  explicit FolderWatch(std::string const& folder);

  // Whether something in the folder may have changed since the last call, or the folder itself may
  // have been put in another's place. True on the first call.
  bool perhapsChanged() noexcept;

 private:
  void arm() noexcept;

  std::string folder_;
  std::array<FileDescriptor, 2> watched_;  // the folder and the one it lies in
  bool armed_ = false;
};

}  // namespace kz::io

#endif
