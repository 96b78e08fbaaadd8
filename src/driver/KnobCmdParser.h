// The command line: what was given, and which of the five commands it describes. It checks the
// grammar of single options only; whether they fit together is what the command tests tell.
#ifndef KNOB_DRIVER_KNOB_CMD_PARSER_H
#define KNOB_DRIVER_KNOB_CMD_PARSER_H

#include <climits>
#include <string_view>

#include "kz/String.h"
#include "kz/collections/List.h"
#include "output/MessageHelper.h"

class KnobCmdParser : public kz::Object {
 public:
  using StringList = kz::collections::List<kz::String>;

  KnobCmdParser();

  // Throws OptionException for an unknown option and for an option without its value; fields parsed
  // before keep their values.
  void parseCmdLine(int argc, char** argv);
  // Whether what follows this argument is meant as a password.
  static bool announcesPassword(const char* argument) noexcept;
  // The argument at the index as the value of the option before it. Throws OptionException when it
  // is missing or begins with "-".
  kz::String getOptionValue(int index, int argc, char** argv);
  // Fills in an empty server: the machine's own host name, or localhost if it has none.
  void setDefaults();

  kz::String getUserName() const { return userName; }
  kz::String getPassword() const { return password; }
  kz::String getServerName() const { return serverName; }
  kz::String getOutputFileName() const { return outputFileName; }
  kz::String getInputFileName() const { return inputFileName; }
  kz::String getKeywordValue() const { return keyword; }
  kz::String getDebugValue() const { return debugValue; }
  kz::String getSettingID() const { return settingId; }
  bool isIgnoreError() const { return ignoreErrors; }
  bool isSuppressOverwritePrompt() const { return suppressOverwritePrompt; }
  // True for JSON.
  bool getOutputType() const { return outputType; }
  void setOutputType(bool json) { outputType = json; }
  // A new list of the positional arguments after the setting id, which the caller takes a reference
  // on.
  StringList* getIDValues() const;

  // At most one is true.
  bool isCmdWriteSettings() const { return givesOnly(&KnobCmdParser::outputFileName, 0, 0); }
  bool isCmdReadSettings() const { return givesOnly(&KnobCmdParser::inputFileName, 0, 0); }
  bool isCmdSearchKeyword() const { return givesOnly(&KnobCmdParser::keyword, 0, 0); }
  bool isCmdGetIdDetail() const { return givesOnly(nullptr, 1, 1); }
  bool isCmdSetIdValues() const { return givesOnly(nullptr, 2, INT_MAX); }

 private:
  struct Option;
  static const Option* findOption(std::string_view argument) noexcept;
  // Whether this is given and no other of the options that stand for a command (null: none of
  // them), with a number of positional arguments in the range.
  bool givesOnly(kz::String KnobCmdParser::*operand, int fewest, int most) const;

  kz::String userName;
  kz::String password;
  kz::String serverName;
  kz::String outputFileName;
  kz::String inputFileName;
  kz::String keyword;
  kz::String debugValue;
  kz::String settingId;
  bool ignoreErrors = false;
  bool suppressOverwritePrompt = false;
  bool outputType = false;
  kz::Reference<MessageHelper> messages;
  kz::Reference<StringList> positionalArguments;
};

#endif
