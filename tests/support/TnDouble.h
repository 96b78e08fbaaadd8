// A scripted engine in the place of the tuning library: it defines every Tn function, answers each
// call with what stands under its text, and keeps the texts of the calls in order. A test begins
// with TnDouble::reset(), which gives a small engine, and changes the answers that it cares about.
#ifndef KNOB_TESTS_SUPPORT_TN_DOUBLE_H
#define KNOB_TESTS_SUPPORT_TN_DOUBLE_H

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "service/TuningInterface.h"

struct TnDouble {
  struct Answer {
    TnStatus status = TN_SUCCESS;
    std::vector<std::int32_t> numbers{};  // what the function writes, in the order of its arguments
    std::string text{};                   // two of them with a / between for the words of a boolean
    std::optional<int> claimedCount{};    // instead of the true one
  };

  static TnDouble& reset();
  std::vector<std::string> callsOf(const std::string& beginning) const;

  // By "TnGetLongValue(-1,25,2)": what goes in, the room for lists and texts last. Without an
  // answer a change is accepted, anything else refused.
  std::map<std::string, Answer> answers;
  std::vector<std::string> calls{};
};

#endif
