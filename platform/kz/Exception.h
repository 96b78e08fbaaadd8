// Base of every exception of the program, with a text for people and a status for the system.
#ifndef KNOB_KZ_EXCEPTION_H
#define KNOB_KZ_EXCEPTION_H

#include <exception>

#include "kz/Status.h"
#include "kz/String.h"

namespace kz {

class Exception : public std::exception {
 public:
  // An exception that has only a text is a failure all the same: its result is never 0.
  explicit Exception(String description = String(), int result = kStatusFailure)
      : description_(std::move(description)), result_(result) {}

  String getDescription() const { return description_; }
  // A status; 0 counts as success.
  int getResult() const noexcept { return result_; }

  const char* what() const noexcept override { return "kz::Exception"; }

 private:
  String description_;
  int result_;
};

// A bare status, without a text.
class ResultException : public Exception {
 public:
  explicit ResultException(int result) : Exception(String(), result) {}
};

}  // namespace kz

#endif
