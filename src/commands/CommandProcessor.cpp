#include "commands/CommandProcessor.h"

#include "kz/Exception.h"
#include "kz/io/InputStreamReader.h"
#include "kz/io/StdioInputStream.h"
#include "output/FileFailure.h"

namespace {

constexpr long kBufferSize = 2048;
constexpr int kEmptyAnswers = 25;
// Characters of an answer that are read; one that goes on is no yes.
constexpr int kLongestAnswer = 80;

// Whether the next line of the answer is empty, as it is at the end of the input and when the input
// cannot be read: the question never fails.
bool isEmptyAnswer(kz::io::BufferedReader& reader, kz::String& answer) {
  try {
    reader.readLine(answer, kLongestAnswer);
  } catch (const kz::Exception&) {
    answer = kz::String();
  }
  return answer.isEmpty();
}

}  // namespace

CommandProcessor::CommandProcessor(kz::Reference<SvcConfigHelper>& service,
                                   kz::Reference<kz::io::PrintWriter>& output,
                                   kz::Reference<kz::io::PrintWriter>& errors,
                                   kz::Reference<Logger>& log, kz::String outputFile,
                                   kz::String inputFile)
    : messages(new MessageHelper("KNOB", "KNOB_")),
      configHelper(service),
      out(output),
      err(errors),
      logger(log),
      inputFileName(inputFile),
      outputFileName(outputFile) {
  if (outputFileName.isEmpty()) {
    const kz::Reference<Logger> screen(new Logger);
    screen->addStdOutHandler();
    formatter = kz::Reference<FormatHelper>(new FormatHelper(screen.get()));
    formatter->setLevel(Level::ALL);
  }
  tagIdText = messages->getResStr("TAG_ID");
  tagValueText = messages->getResStr("TAG_VALUE");
}

CommandProcessor::~CommandProcessor() { configHelper->disconnect(); }

void CommandProcessor::throwError(int status) {
  throwFileFailure(*messages, "ERR_READ_FILE", inputFileName, status);
}

bool CommandProcessor::confirmOverwriteFile(bool skipPrompt) {
  if (skipPrompt) return true;
  out->print(messages->getResStr("INFO_OVERWRITE", outputFileName.getBytes().c_str()));
  out->flush();

  const kz::Reference<kz::io::InputStream> input(new kz::io::StdioInputStream);
  const kz::Reference<kz::io::Reader> characters(
      new kz::io::InputStreamReader(input.get(), nullptr, kBufferSize));
  const kz::Reference<kz::io::BufferedReader> reader(
      new kz::io::BufferedReader(characters.get(), kBufferSize));
  kz::String answer;
  int empty = 0;
  while (empty < kEmptyAnswers && isEmptyAnswer(*reader, answer)) ++empty;
  if (empty == kEmptyAnswers) {
    out->println("\n" + messages->getResStr("ERR_INTERACTIVE_INPUT"));
    out->flush();
    isEmptyAnswer(*reader, answer);
  }
  return answer.equalsIgnoreCase("Y");
}
