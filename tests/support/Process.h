// Runs a program as a user would and tells what came out of it.
#ifndef KNOB_TESTS_SUPPORT_PROCESS_H
#define KNOB_TESTS_SUPPORT_PROCESS_H

#include <array>
#include <functional>
#include <map>
#include <string>
#include <sys/types.h>
#include <vector>

struct Outcome {
  int status = -1;  // the exit status, or 128 and the signal that ended the process
  std::string out;
  std::string err;
};

struct Process {
  std::vector<std::string> arguments;  // the program first
  std::map<std::string, std::string> environment;
  std::string input{};
  // Where the standard streams go instead: a file such as "/dev/full", "-" for closed, "|" for a
  // pipe that nobody reads any more.
  std::string outTo{};
  std::string errTo{};
  std::string folder{};  // to run in
  // To run as, when the test runs as root; 0: as the test. The program under test is then copied to
  // where every user can reach it.
  uid_t user = 0;

  // Waits for the end; a process that takes longer than a minute is killed.
  Outcome run() const;
  // Does not wait: for what goes on until it is killed, after so many seconds if any are given, or
  // until the calling thread ends. `streams`: the standard ones, in the words of `outTo`.
  pid_t start(const std::array<std::string, 3>& streams, unsigned seconds = 0) const;
};

// The program under test in a world of its own: no settings, no messages but its own.
Process knob(const std::string& home, std::vector<std::string> arguments);

// The folder of the running test program, where knob lies too.
std::string programFolder();

// A user that is not root and owns nothing.
inline constexpr uid_t kNobody = 65534;

// What the piece of a test gives in a process of its own, of another user if the test runs as root
// and one is named; -1 if the process does not get to its end.
int inChild(const std::function<int()>& piece, uid_t user = 0);

#endif
