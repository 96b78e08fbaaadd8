// The program's spine: builds the process-wide objects, decides between text and JSON, connects,
// dispatches the one command, and is the only place that reports a failure and makes it the exit
// status.
#include <cstdio>
#include <exception>
#include <new>

#include "commands/CommandProcessor.h"
#include "driver/Driver.h"
#include "driver/KnobCmdParser.h"
#include "driver/OptionException.h"
#include "kz/Exception.h"
#include "kz/io/IoException.h"
#include "kz/io/OutputStreamWriter.h"
#include "kz/io/StandardStreams.h"
#include "kz/io/StdioOutputStream.h"
#include "output/FormatHelper.h"
#include "output/JsonHeader.h"
#include "output/Logger.h"
#include "output/MessageHelper.h"
#include "service/SvcConfigHelper.h"
#include "util/NumberFormatException.h"
#include "util/Utils.h"

// Released in the reverse order at the end of the process, the writers last.
kz::Reference<kz::io::PrintWriter> s_pw;
kz::Reference<kz::io::PrintWriter> s_errpw;
static kz::Reference<KnobCmdParser> s_cmdParser;
static kz::Reference<Logger> s_logger;
static kz::Reference<SvcConfigHelper> s_configHelper;
static kz::Reference<MessageHelper> s_msgHelper;

namespace {

constexpr long kBufferSize = 2048;
constexpr int kUsageFailure = 1;

constexpr char const* kJsonUsage[] = {
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

kz::Reference<kz::io::PrintWriter> makeWriter(kz::Reference<kz::io::OutputStream> stream) {
  const kz::Reference<kz::io::Writer> writer(
      new kz::io::OutputStreamWriter(stream.get(), nullptr, kBufferSize));
  return kz::Reference<kz::io::PrintWriter>(new kz::io::PrintWriter(writer.get(), true));
}

bool hasJsonArgument(int argc, char** argv) {
  for (int i = 1; i < argc; ++i) {
    if (kz::String(argv[i]).equalsIgnoreCase("-JSON")) return true;
  }
  return false;
}

// The command's own lines stand between a header and a brace, unless they go into a file.
bool framesJson() { return s_cmdParser->getOutputType() && !s_cmdParser->isCmdWriteSettings(); }

void printJsonError(kz::String const& description, char const* end) {
  s_pw->println("\t\"error\": \"" + description + end);
}

void reportFailure(kz::String const& description) {
  if (s_cmdParser->getOutputType()) {
    printJsonError(description, "\"");
  } else {
    s_errpw->println(description);
  }
}

// A command line that makes no sense: what is wrong with it, and how it should be.
void reportMisuse(kz::String const& jsonDescription, kz::String const& description) {
  if (s_cmdParser->getOutputType()) {
    printJsonError(jsonDescription, "\",");
  } else {
    s_errpw->println(description);
  }
  displayUsage();
}

void reportInvalidCommand() {
  reportMisuse("Invalid Command", s_msgHelper->getResStr("ERR_INVALID_COMMAND"));
}

void showBanner() {
  if (!s_cmdParser->getOutputType()) {
    s_pw->println(s_msgHelper->getResStr("NAME", JsonHeader::VERSION));
    s_pw->println(s_msgHelper->getResStr("COPYRIGHT"));
    s_pw->println("");
  } else if (framesJson()) {
    displayJsonHeaderMsg(s_msgHelper);
  }
}

void parseAndRun(int argc, char** argv) {
  s_cmdParser->parseCmdLine(argc, argv);
  showBanner();
  // Nothing was asked for.
  if (argc <= (s_cmdParser->getOutputType() ? 2 : 1)) {
    displayUsage();
    return;
  }
  s_logger = kz::Reference<Logger>(new Logger);
  s_logger->addStdOutHandler();
  const kz::String debugValue = s_cmdParser->getDebugValue();
  if (!debugValue.isEmpty()) s_logger->setLevel(debugValue);
  s_configHelper = kz::Reference<SvcConfigHelper>(new SvcConfigHelper);
  s_configHelper->connect(s_cmdParser->getServerName(), s_cmdParser->getUserName(),
                          s_cmdParser->getPassword());
  processCommand();
}

// Runs the command and reports the failures that have words. Other failures, a failure to report
// among them, leave.
int runReported(int argc, char** argv, bool json) {
  int exitValue = 0;
  s_cmdParser = kz::Reference<KnobCmdParser>(new KnobCmdParser);
  s_cmdParser->setOutputType(json);
  try {
    parseAndRun(argc, argv);
  } catch (OptionException const& failure) {
    exitValue = kUsageFailure;
    if (json) displayJsonHeaderMsg(s_msgHelper);
    const kz::String description = failure.getDescription();
    reportMisuse(description, description);
  } catch (NumberFormatException const&) {
    exitValue = kUsageFailure;
    reportInvalidCommand();
  } catch (SvcException const& failure) {
    exitValue = kUsageFailure;
    reportFailure(failure.getDescription());
  } catch (kz::io::IoException const& failure) {
    exitValue = kUsageFailure;
    reportFailure(failure.getDescription());
  } catch (kz::Exception const& failure) {
    if (failure.getResult() != 0) throw;
  }
  if (framesJson()) s_pw->println("}");
  return exitValue;
}

// The last resort: where even this cannot be written, the exit status has to tell.
int reportFatal(int status, bool json) noexcept {
  try {
    s_errpw->println(s_msgHelper->getResStr("FATAL_ERROR", status));
  } catch (...) {
  }
  try {
    if (json) s_pw->println("}");
  } catch (...) {
  }
  return status;
}

// There is nothing yet to look a text up in or to write it with.
int reportFailedStart(char const* reason) noexcept {
  std::fprintf(stderr, "knob: cannot start: %s\n", reason);
  return 1;
}

}  // namespace

void displayUsage() {
  if (s_cmdParser->getOutputType()) {
    for (char const* const line : kJsonUsage) s_pw->println(line);
  } else {
    s_pw->println(s_msgHelper->getResStr("USAGE"));
  }
}

void displayJsonHeaderMsg(kz::Reference<MessageHelper>& messages) {
  for (kz::String const& line : JsonHeader(*messages).lines()) s_pw->println(line);
}

void processCommand() {
  CommandProcessor processor(s_configHelper, s_pw, s_errpw, s_logger,
                             s_cmdParser->getOutputFileName(), s_cmdParser->getInputFileName());
  FormatHelper trace(s_logger.get());
  const bool json = s_cmdParser->getOutputType();
  const auto settingId = [] {
    return static_cast<int>(Utils::parseLong(s_cmdParser->getSettingID()));
  };
  if (s_cmdParser->isCmdWriteSettings()) {
    trace.putData("outputFile: " + s_cmdParser->getOutputFileName(), 0);
    processor.writeConfiguration(s_cmdParser->isIgnoreError(),
                                 s_cmdParser->isSuppressOverwritePrompt(), json);
  } else if (s_cmdParser->isCmdReadSettings()) {
    trace.putData("inputFile: " + s_cmdParser->getInputFileName(), 0);
    processor.readConfiguration(s_cmdParser->isIgnoreError());
  } else if (s_cmdParser->isCmdSearchKeyword()) {
    trace.putData("search string: " + s_cmdParser->getKeywordValue(), 0);
    processor.printMatchingIDs(s_cmdParser->getKeywordValue(), json);
  } else if (s_cmdParser->isCmdGetIdDetail()) {
    trace.putData("Id Detail - ID:  " + s_cmdParser->getSettingID(), 0);
    processor.printIDDetails(settingId(), json, CommandProcessor::DISPLAY_LAYOUT);
  } else if (s_cmdParser->isCmdSetIdValues()) {
    const kz::Reference<KnobCmdParser::StringList> values(s_cmdParser->getIDValues());
    trace.putData("Set Id:  " + s_cmdParser->getSettingID(), 0);
    for (int i = 0; i < values->size(); ++i) trace.putData("Value : " + *values->get(i), 1);
    processor.setValue(settingId(), values.get(), json);
  } else {
    reportInvalidCommand();
  }
}

int main(int argc, char** argv) {
  kz::io::guardStandardStreams();
  bool json = false;
  try {
    s_pw = makeWriter(kz::Reference<kz::io::OutputStream>(new kz::io::StdioOutputStream));
    s_errpw = makeWriter(kz::io::StdioOutputStream::getStdErrorStream());
    s_msgHelper = kz::Reference<MessageHelper>(new MessageHelper("KNOB", "KNOB_"));
    json = hasJsonArgument(argc, argv);
  } catch (std::exception const& failure) {
    return reportFailedStart(failure.what());
  }
  try {
    return runReported(argc, argv, json);
  } catch (kz::Exception const& failure) {
    return reportFatal(failure.getResult(), json);
  } catch (std::bad_alloc const&) {
    return reportFatal(kz::kStatusOutOfMemory, json);
  } catch (...) {
    return reportFatal(kz::kStatusFailure, json);
  }
}
