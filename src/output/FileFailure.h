// Turns the status of a failed file operation into the exception that reports it.
#ifndef KNOB_OUTPUT_FILE_FAILURE_H
#define KNOB_OUTPUT_FILE_FAILURE_H

#include "output/MessageHelper.h"

// Refused access, a missing file and one in use have words: an IoException with the message of the
// key, which takes the file name, the reason and the status. Any other status is thrown bare, as a
// ResultException.
[[noreturn]] void throwFileFailure(const MessageHelper& messages, const char* key,
                                   const kz::String& fileName, int status);

#endif
