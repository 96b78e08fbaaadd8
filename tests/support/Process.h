// Runs a program as a user would and tells what came out of it.
#ifndef KNOB_TESTS_SUPPORT_PROCESS_H
#define KNOB_TESTS_SUPPORT_PROCESS_H

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
  long fileLimit = -1;  // bytes that a file may have

  // Waits for the end; a process that takes longer than a minute is killed.
  Outcome run() const;
};

// All that a child needs to become a program, made before the fork: the child of a process with
// threads may wait without end for memory.
class Start {
 public:
  Start(const Process& process, std::string program);
  Start(const Start&) = delete;
  Start& operator=(const Start&) = delete;

  // In the child, with the streams as they are.
  [[noreturn]] void become() const;

 private:
  const Process& process_;
  std::string program_;
  std::vector<std::string> words_;
  std::vector<std::string> variables_{};
  std::vector<char*> wordPointers_{};
  std::vector<char*> variablePointers_{};
};

// The program under test in a world of its own: no settings, no messages but its own.
Process knob(const std::string& home, std::vector<std::string> arguments);

// The folder of the running test program, where knob lies too.
std::string programFolder();

// A user that is not root and owns nothing.
inline constexpr uid_t kNobody = 65534;

// In a child, if the test runs as root and the user is another.
bool becomeUser(uid_t user);

// What the piece of a test gives in a process of its own, of another user if the test runs as root
// and one is named; -1 if the process does not get to its end.
int inChild(const std::function<int()>& piece, uid_t user = 0);

#endif
