// A failure that the settings service reported: a message for people and a code. Codes below 8000
// are statuses of the tuning interface, the others are the program's own.
#ifndef KNOB_SERVICE_SVC_EXCEPTION_H
#define KNOB_SERVICE_SVC_EXCEPTION_H

#include "kz/Exception.h"

class SvcException : public kz::Exception {
 public:
  // The first of the program's own codes; none of them is a status of the interface.
  static constexpr int FIRST_PROGRAM_CODE = 8000;
  // A setting that does not exist or is not available.
  static constexpr int UNKNOWN_SETTING = 8002;
  // A text that is none of a boolean setting's words.
  static constexpr int NOT_A_BOOLEAN = 8004;

  SvcException(const kz::String& message, int code) : kz::Exception(message), errorCode(code) {}

  int getErrorCode() const noexcept { return errorCode; }

 private:
  int errorCode;
};

#endif
