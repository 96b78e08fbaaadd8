// Runs the commands of the program on one engine while something goes wrong, and checks after every
// run what holds whatever goes wrong:
//
// - it ended by itself, in time, and not by a signal;
// - with exit status 0 everything that was reported is done: the values are stored, the files are
//   whole, what was to be printed arrived;
// - otherwise one line says what went wrong;
// - each setting has its old or its new value; those of an import are changed up to a point, but
//   for the ones that were reported as not changed;
// - the same command runs well afterwards, and leaves no file behind that was not there before.
#ifndef KNOB_TESTS_FAULT_HARNESS_H
#define KNOB_TESTS_FAULT_HARNESS_H

#include <gtest/gtest.h>
#include <set>

#include "support/Process.h"
#include "support/TempFolder.h"

using Texts = std::map<std::string, std::string>;

// An engine as the tests see it.
struct Engine {
  std::string server;            // its name, for -S
  std::vector<std::string> ids;  // 20 integer settings that take `value` and have another now
  std::string value;
  std::function<Texts()> state;   // all that is stored
  std::function<Texts()> values;  // what is stored, by setting id, as a later run finds it
  std::function<void()> reset;    // what is stored becomes what it was at first
  int port = 0;                   // in `server`, where a proxy may take its place; 0 for no server
  long calls = 3;                 // how many calls of each kind fail in a usual sweep
  Texts environment{};            // that the program needs for it
};

struct EngineKind {
  std::string name;
  std::function<std::string()> obstacle;  // why there can be none here; empty when there can
  std::function<Engine(const std::string& home)> make;
};

// Those that were built: each sweep runs on all that are there.
extern const std::vector<EngineKind> kEngineKinds;

struct Command {
  std::vector<std::string> arguments;
  std::vector<std::string> changes{};  // ids, in the order of their changes
};

class Harness : public testing::TestWithParam<EngineKind> {
 protected:
  void SetUp() override;
  std::map<std::string, Command> commands() const;  // by name

  // `port`: of what stands before the server.
  Process program(const Command& command, int port = 0) const;
  // With the fault library in front, which has these variables.
  Process faulted(const Command& command, const Texts& variables) const;

  // Runs the command unharmed, to know what may be expected, and takes its changes back.
  void learn(const Command& command);
  // Checks that it ends by itself, in time.
  static Outcome run(const Process& process);
  // Checks everything. `mute`: what it prints may be lost.
  Outcome check(const Command& command, const Process& process, bool mute = false);
  // Only what is stored, for a command that was killed.
  void checkValues(const Command& command, const std::string& told = "");
  void checkLaterRun(const Command& command);
  void reset() const;
  const Texts& values();  // found out once for each state of the engine

  const TempFolder home{};
  Engine engine{};
  // The values that a command begins with and is to give.
  Texts old{}, wanted{};

 private:
  const std::string output_ = home / "export";
  Texts first_{}, wantedFiles_{};
  std::map<Texts, Texts> valuesOf_{};
  std::string wantedOut_{}, wantedOutput_{};
};

// The files of a folder with their contents.
Texts filesIn(const std::string& folder);
void replaceFiles(const std::string& folder, const Texts& by);

#endif
