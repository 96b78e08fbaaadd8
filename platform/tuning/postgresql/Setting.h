// One setting of a server as it stood when the server was asked: plain data that Snapshot fills.
#ifndef KNOB_POSTGRESQL_SETTING_H
#define KNOB_POSTGRESQL_SETTING_H

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "service/TuningInterface.h"
#include "tuning/postgresql/Choices.h"
#include "tuning/postgresql/NameList.h"
#include "tuning/postgresql/ValueText.h"

namespace tn::postgresql {

struct Setting {
  static constexpr char kOn[] = "on";
  static constexpr char kOff[] = "off";

  int32_t id = 0;
  TnValueType type = TN_TYPE_STRING;
  bool real = false;  // a string that holds a number with a fraction
  NameList::Kind list = NameList::Kind::none;
  ValueText::Fractions fractions = ValueText::Fractions::rounded;
  bool listIsOneText = false;  // ALTER SYSTEM wants the whole list as one text

  // These stay valid as long as the snapshot lives.
  std::string_view name;
  std::string_view unit;
  std::string_view shortText;
  std::string_view longText;
  std::string_view minimum;
  std::string_view maximum;

  int32_t lowest = 0;  // of an integer
  int32_t highest = 0;

  std::string_view running;  // what the server itself has for the current value
  // Values as they are shown: integers in decimal, selections as the text of the item.
  std::string fallback;  // the default
  std::string current;
  std::vector<Choice> items;  // the choices of a selection, by their numbers

  bool server = true;          // not of the kind that a session can have otherwise
  bool needsRestart = false;   // takes effect only when the server is restarted
  bool ofNewSessions = false;  // a change is in force for sessions that begin after it
  bool preset = false;         // fixed when the server was built or its data was created
  bool ofCommandLine = false;  // the command line that started the server gives the value
  bool changeMayWait = false;  // a changed value may wait for a restart
  bool currentIsKnown = true;  // false: hidden by the session's own, and nobody can look

  // What this run has set, while that is not in effect yet.
  std::optional<std::string> written;
};

}  // namespace tn::postgresql

#endif
