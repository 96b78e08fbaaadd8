// File descriptors of the system: the owner of one, and reading and writing on any. Every failed
// operation throws ResultException with the status of the errno; a signal interrupts none, and a
// descriptor that does not wait is waited for.
#ifndef KNOB_KZ_IO_FILE_DESCRIPTOR_H
#define KNOB_KZ_IO_FILE_DESCRIPTOR_H

#include <cstddef>
#include <string>

namespace kz::io {

class FileDescriptor {
 public:
  FileDescriptor() noexcept = default;
  // Takes an open descriptor over.
  explicit FileDescriptor(int descriptor) noexcept : descriptor_(descriptor) {}
  // Opens the path with the flags of open(2) (and O_CLOEXEC); a new file gets the mode 0666.
  FileDescriptor(const std::string& path, int flags);
  FileDescriptor(FileDescriptor&& other) noexcept : descriptor_(other.detach()) {}
  FileDescriptor& operator=(FileDescriptor&& other) noexcept;
  ~FileDescriptor();

  int get() const noexcept { return descriptor_; }
  bool isOpen() const noexcept { return descriptor_ >= 0; }
  // Gives the descriptor up without closing it.
  int detach() noexcept;
  // Closing reports what the system could not write, so whoever wrote closes and looks.
  void close();

 private:
  int descriptor_ = -1;
};

void writeAll(int descriptor, const char* bytes, std::size_t count);
// At most `count` bytes; 0 at the end.
std::size_t readSome(int descriptor, char* bytes, std::size_t count);

}  // namespace kz::io

#endif
