// An engine as the fault tests see it: a row of a table. Every sweep runs on every engine that is
// there.
#ifndef KNOB_TESTS_FAULT_ENGINE_H
#define KNOB_TESTS_FAULT_ENGINE_H

#include <functional>
#include <map>
#include <string>
#include <vector>

using Values = std::map<std::string, std::string>;  // by setting id

struct Engine {
  std::string server;            // its name, for -S
  std::vector<std::string> ids;  // 20 integer settings that take `value` and have another now
  std::string value;
  std::function<std::string()> state;  // all that is stored, as bytes
  std::function<Values()> values;      // what is stored, as a later run finds it
  std::function<void()> reset;         // what is stored becomes what it was at first
  // Where a program between knob and the server listens instead; empty for an engine without one.
  std::function<std::string(int port)> serverAt{};
  int port = 0;    // of the server itself
  long calls = 3;  // how many calls of each kind fail, and places of a cut, in a usual sweep
  std::map<std::string, std::string> environment{};  // that the program needs for it
};

struct EngineKind {
  std::string name;
  std::function<std::string()> obstacle;  // why there can be none here; empty when there can
  std::function<Engine(const std::string& home)> make;
};

// Those that were built.
const std::vector<EngineKind>& engineKinds();

#endif
