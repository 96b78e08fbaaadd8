#include "kz/util/FilePath.h"

#include <filesystem>

#include "kz/Exception.h"

namespace kz::util {

String FilePath::getCurrentDir() {
  std::error_code error;
  const std::filesystem::path folder = std::filesystem::current_path(error);
  if (error) throw ResultException(statusOfErrno(error.value()));
  return (folder / "").native();
}

String FilePath::getProgramDir() {
  std::error_code error;
  const std::filesystem::path program = std::filesystem::read_symlink("/proc/self/exe", error);
  if (error) throw ResultException(statusOfErrno(error.value()));
  return program.parent_path().native();
}

}  // namespace kz::util
