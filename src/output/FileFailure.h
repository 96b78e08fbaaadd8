// Failed file operations as the exceptions that report them.
#ifndef KNOB_OUTPUT_FILE_FAILURE_H
#define KNOB_OUTPUT_FILE_FAILURE_H

#include "kz/io/IoException.h"
#include "output/MessageHelper.h"

// With the message of the key, which takes the file name, the text of the reason and the status.
kz::io::IoException fileFailure(const MessageHelper& messages, const char* key,
                                const kz::String& fileName, const char* reasonKey, int status);

// Refused access and a missing file have words, so they are such an exception. Any other status is
// thrown bare, as a ResultException.
[[noreturn]] void throwFileFailure(const MessageHelper& messages, const char* key,
                                   const kz::String& fileName, int status);

#endif
