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

#include "fault/Engine.h"
#include "support/Process.h"
#include "support/TempFolder.h"

struct Command {
  std::string name;
  std::vector<std::string> arguments;
  std::vector<std::string> changes{};  // ids, in the order of their changes
};

class Harness {
 public:
  enum class Reports { arrive, mayBeLost };

  explicit Harness(const EngineKind& kind);

  const Engine& engine() const { return engine_; }
  const std::string& home() const { return home_.path(); }
  std::vector<Command> commands() const;

  Process program(const Command& command) const;
  // The same with the fault library in front; `fault` is FAULT's value, empty for none.
  Process faulted(const Command& command, const std::string& fault) const;
  // How often the unharmed command makes calls of the kind.
  long count(const Command& command, const std::string& kind) const;

  // Runs the command unharmed, to know what check() may expect, and takes its changes back.
  void learn(const Command& command);
  // The values that a command has begun with and was to give, where they are others.
  void expect(const Values& old, const Values& wanted) { old_ = old, wanted_ = wanted; }
  void check(const Command& command, const Outcome& run, Reports reports = Reports::arrive);
  // Only what is stored: after a command that was killed.
  void checkValues(const Command& command, const std::string& told);
  void checkLaterRun(const Command& command);
  void reset() const;

  const Values& values();  // found out once for each state of the engine
  const Values& old() const { return old_; }
  const Values& wanted() const { return wanted_; }

 private:
  std::string files() const;  // the names of all files but those of the tests
  bool exportIsWhole() const { return readFile(output_) == wantedOutput_; }

  const TempFolder home_{};
  const std::string output_ = home_ / "export";
  const Engine engine_;
  const std::string first_ = engine_.state();
  std::map<std::string, Values> valuesOf_{};
  Values old_{}, wanted_{};
  std::string wantedOut_{}, wantedOutput_{}, wantedFiles_{};
};

#endif
