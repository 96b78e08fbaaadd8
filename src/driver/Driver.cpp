#include "driver/Driver.h"

#include <algorithm>
#include <iterator>

#include "commands/CommandProcessor.h"
#include "output/FormatHelper.h"
#include "output/JsonHeader.h"
#include "util/Utils.h"

kz::Reference<kz::io::PrintWriter> s_pw;
kz::Reference<kz::io::PrintWriter> s_errpw;
kz::Reference<KnobCmdParser> s_cmdParser;
kz::Reference<Logger> s_logger;
kz::Reference<SvcConfigHelper> s_configHelper;
kz::Reference<MessageHelper> s_msgHelper;

namespace {

using Parser = KnobCmdParser;

constexpr const char* kJsonUsage[] = {
    "\t\"usage\":",
    "\t[",
    ("\t\t\"knob -O <outputFile> [-S <server>] [-U <username>] [-P <password>] [-E] [-F] "
     "[-JSON]\","),
    "\t\t\"knob -I <inputFile> [-S <server>] [-U <username>] [-P <password>] [-E]\",",
    "\t\t\"knob <id> [value]... [-S <server>] [-U <username>] [-P <password>] [-JSON]\",",
    "\t\t\"knob -H <keyword> [-S <server>] [-U <username>] [-P <password>] [-JSON]\",",
    "\t\t\"-E  ignore errors when reading or writing to a file\",",
    "\t\t\"-F  suppress prompt to overwrite existing output file\",",
    "\t\t\"-JSON  display output in JSON object format\"",
    "\t]"};

// Only the low 32 bits of the number count.
int settingId(const Parser& line) {
  return static_cast<int>(Utils::parseLong(line.getSettingID()));
}

// How a command is recognised, its trace line (a label and what it is about), what carries it out.
struct Command {
  bool (Parser::*isGiven)() const;
  const char* label;
  kz::String (Parser::*subject)() const;
  void (*carryOut)(CommandProcessor& processor, const Parser& line, FormatHelper& trace);
};

constexpr Command kCommands[] = {
    {&Parser::isCmdWriteSettings, "outputFile: ", &Parser::getOutputFileName,
     [](CommandProcessor& processor, const Parser& line, FormatHelper&) {
       processor.writeConfiguration(line.isIgnoreError(), line.isSuppressOverwritePrompt(),
                                    line.getOutputType());
     }},
    {&Parser::isCmdReadSettings, "inputFile: ", &Parser::getInputFileName,
     [](CommandProcessor& processor, const Parser& line, FormatHelper&) {
       processor.readConfiguration(line.isIgnoreError());
     }},
    {&Parser::isCmdSearchKeyword, "search string: ", &Parser::getKeywordValue,
     [](CommandProcessor& processor, const Parser& line, FormatHelper&) {
       processor.printMatchingIDs(line.getKeywordValue(), line.getOutputType());
     }},
    {&Parser::isCmdGetIdDetail, "Id Detail - ID:  ", &Parser::getSettingID,
     [](CommandProcessor& processor, const Parser& line, FormatHelper&) {
       processor.printIDDetails(settingId(line), line.getOutputType(),
                                CommandProcessor::DISPLAY_LAYOUT);
     }},
    {&Parser::isCmdSetIdValues, "Set Id:  ", &Parser::getSettingID,
     [](CommandProcessor& processor, const Parser& line, FormatHelper& trace) {
       const kz::Reference<Parser::StringList> values(line.getIDValues());
       for (int i = 0; i < values->size(); ++i) trace.putData("Value : " + *values->get(i), 1);
       processor.setValue(settingId(line), values.get(), line.getOutputType());
     }}};

// Closes the connection, also when there is not even the memory for a command processor.
struct Disconnecting {
  ~Disconnecting() { s_configHelper->disconnect(); }
};

}  // namespace

void displayUsage() {
  if (s_cmdParser->getOutputType()) {
    for (const char* const line : kJsonUsage) s_pw->println(line);
  } else {
    s_pw->println(s_msgHelper->getResStr("USAGE"));
  }
}

void displayJsonHeaderMsg(kz::Reference<MessageHelper>& messages) {
  for (const kz::String& line : JsonHeader(*messages).lines()) s_pw->println(line);
}

void reportFailure(const kz::String& description, const char* jsonEnd) {
  if (s_cmdParser->getOutputType()) {
    s_pw->println("\t\"error\": \"" + description + jsonEnd);
  } else {
    s_errpw->println(description);
  }
}

void reportMisuse(const kz::String& description) {
  reportFailure(description, "\",");
  displayUsage();
}

void reportInvalidCommand() {
  reportMisuse(s_cmdParser->getOutputType() ? "Invalid Command"
                                            : s_msgHelper->getResStr("ERR_INVALID_COMMAND"));
}

void processCommand() {
  const Disconnecting atTheEnd;
  const Parser& line = *s_cmdParser;
  CommandProcessor processor(s_configHelper, s_pw, s_errpw, s_logger, line.getOutputFileName(),
                             line.getInputFileName());
  FormatHelper trace(s_logger.get());
  const auto* const command =
      std::find_if(std::begin(kCommands), std::end(kCommands),
                   [&](const Command& row) { return (line.*row.isGiven)(); });
  if (command == std::end(kCommands)) {
    reportInvalidCommand();
    return;
  }
  trace.putData(command->label + (line.*command->subject)(), 0);
  command->carryOut(processor, line, trace);
}
