// The foundation layer's C functions.
#ifndef KNOB_KZ_PLATFORM_H
#define KNOB_KZ_PLATFORM_H

#include <ctime>

struct KZDirectory;
using KZDirHandle = KZDirectory*;

struct KZTime {
  int year, month, day;  // the year in full, month and day from 1
  int hour, minute, second;
  int daylightSaving;  // as tm_isdst
};

extern "C" {

// The machine's host name, NUL-terminated. 0 on success; otherwise, also when the name does not fit
// into `size` bytes, a status.
int KZGetHostNameA(char* buffer, int size);

// The UTF-8 form of the text, NUL-terminated, at most `size` bytes with the NUL; a longer text is
// cut between two characters.
void KZUnicodeToAnsi(char* destination, const wchar_t* source, int size);

// Statuses: 0 on success. An opened directory is closed with KZDirClose.
int KZDirOpen(const wchar_t* path, KZDirHandle* handle);
int KZDirClose(KZDirHandle handle);
// Success also when the directory is there already.
int KZDirCreate(const wchar_t* path, int mode);

void KZTimeGetLocal(KZTime* time);
// POSIX seconds of a local time.
std::time_t KZTimeToPosix(const KZTime* time);
}

#endif
