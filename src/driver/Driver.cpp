// The five commands: a row of the table each.
#include "driver/Driver.h"

#include <algorithm>
#include <iterator>

#include "commands/CommandProcessor.h"
#include "output/FormatHelper.h"
#include "util/Utils.h"

kz::Reference<kz::io::PrintWriter> s_pw;
kz::Reference<kz::io::PrintWriter> s_errpw;
kz::Reference<KnobCmdParser> s_cmdParser;
kz::Reference<Logger> s_logger;
kz::Reference<SvcConfigHelper> s_configHelper;
kz::Reference<MessageHelper> s_msgHelper;

namespace {

using Parser = KnobCmdParser;

struct Command {
  bool (Parser::*isGiven)() const;
  // Its trace line: a label, and what the command is about.
  char const* label;
  kz::String (Parser::*subject)() const;
  void (*carryOut)(CommandProcessor& processor, FormatHelper& trace);
};

// Only the low 32 bits of the number count.
int settingId() { return static_cast<int>(Utils::parseLong(s_cmdParser->getSettingID())); }

void writeSettings(CommandProcessor& processor, FormatHelper&) {
  processor.writeConfiguration(s_cmdParser->isIgnoreError(),
                               s_cmdParser->isSuppressOverwritePrompt(),
                               s_cmdParser->getOutputType());
}

void readSettings(CommandProcessor& processor, FormatHelper&) {
  processor.readConfiguration(s_cmdParser->isIgnoreError());
}

void searchKeyword(CommandProcessor& processor, FormatHelper&) {
  processor.printMatchingIDs(s_cmdParser->getKeywordValue(), s_cmdParser->getOutputType());
}

void getIdDetail(CommandProcessor& processor, FormatHelper&) {
  processor.printIDDetails(settingId(), s_cmdParser->getOutputType(),
                           CommandProcessor::DISPLAY_LAYOUT);
}

void setIdValues(CommandProcessor& processor, FormatHelper& trace) {
  const kz::Reference<Parser::StringList> values(s_cmdParser->getIDValues());
  for (int i = 0; i < values->size(); ++i) trace.putData("Value : " + *values->get(i), 1);
  processor.setValue(settingId(), values.get(), s_cmdParser->getOutputType());
}

constexpr Command kCommands[] = {
    {&Parser::isCmdWriteSettings, "outputFile: ", &Parser::getOutputFileName, writeSettings},
    {&Parser::isCmdReadSettings, "inputFile: ", &Parser::getInputFileName, readSettings},
    {&Parser::isCmdSearchKeyword, "search string: ", &Parser::getKeywordValue, searchKeyword},
    {&Parser::isCmdGetIdDetail, "Id Detail - ID:  ", &Parser::getSettingID, getIdDetail},
    {&Parser::isCmdSetIdValues, "Set Id:  ", &Parser::getSettingID, setIdValues}};

// Closes the connection, also when there is not even the memory for a command processor.
struct Disconnecting {
  ~Disconnecting() { s_configHelper->disconnect(); }
};

}  // namespace

void processCommand() {
  const Disconnecting atTheEnd;
  CommandProcessor processor(s_configHelper, s_pw, s_errpw, s_logger,
                             s_cmdParser->getOutputFileName(), s_cmdParser->getInputFileName());
  FormatHelper trace(s_logger.get());
  const auto* const command =
      std::find_if(std::begin(kCommands), std::end(kCommands),
                   [](Command const& row) { return ((*s_cmdParser).*row.isGiven)(); });
  if (command == std::end(kCommands)) {
    reportInvalidCommand();
    return;
  }
  trace.putData(command->label + ((*s_cmdParser).*command->subject)(), 0);
  command->carryOut(processor, trace);
}
