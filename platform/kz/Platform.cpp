#include "kz/Platform.h"

#include <cerrno>
#include <cstring>
#include <dirent.h>
#include <sys/stat.h>
#include <unistd.h>

#include "kz/Status.h"
#include "kz/String.h"
#include "kz/Utf8.h"

namespace {

bool isDirectory(const std::string& path) {
  struct stat entry {};
  return stat(path.c_str(), &entry) == 0 && S_ISDIR(entry.st_mode);
}

}  // namespace

extern "C" {

int KZGetHostNameA(char* buffer, int size) {
  if (gethostname(buffer, static_cast<std::size_t>(size)) != 0) return kz::statusOfErrno(errno);
  // A name that just fills the buffer may have been cut.
  if (std::memchr(buffer, '\0', static_cast<std::size_t>(size)) == nullptr) {
    return kz::statusOfErrno(ENAMETOOLONG);
  }
  return 0;
}

void KZUnicodeToAnsi(char* destination, const wchar_t* source, int size) {
  if (size <= 0) return;
  const std::string bytes = kz::utf8::encode(source);
  const std::size_t length = kz::utf8::cut(bytes, static_cast<std::size_t>(size) - 1);
  std::memcpy(destination, bytes.data(), length);
  destination[length] = '\0';
}

int KZDirOpen(const wchar_t* path, KZDirHandle* handle) {
  DIR* const directory = opendir(kz::utf8::encode(path).c_str());
  if (directory == nullptr) return kz::statusOfErrno(errno);
  *handle = reinterpret_cast<KZDirHandle>(directory);
  return 0;
}

int KZDirClose(KZDirHandle handle) {
  return closedir(reinterpret_cast<DIR*>(handle)) == 0 ? 0 : kz::statusOfErrno(errno);
}

int KZDirCreate(const wchar_t* path, int mode) {
  const std::string name = kz::utf8::encode(path);
  if (mkdir(name.c_str(), static_cast<mode_t>(mode)) == 0) return 0;
  const int error = errno;
  // Another process may have been faster, or the directory may not be ours to list.
  return error == EEXIST && isDirectory(name) ? 0 : kz::statusOfErrno(error);
}

void KZTimeGetLocal(KZTime* time) {
  const std::time_t now = std::time(nullptr);
  std::tm local{};
  localtime_r(&now, &local);
  *time = {local.tm_year + 1900, local.tm_mon + 1, local.tm_mday, local.tm_hour,
           local.tm_min,         local.tm_sec,     local.tm_isdst};
}

std::time_t KZTimeToPosix(const KZTime* time) {
  std::tm local{};
  local.tm_year = time->year - 1900;
  local.tm_mon = time->month - 1;
  local.tm_mday = time->day;
  local.tm_hour = time->hour;
  local.tm_min = time->minute;
  local.tm_sec = time->second;
  local.tm_isdst = time->daylightSaving;
  return std::mktime(&local);
}
}
