// What the program says of itself and of a command line that makes no sense.
#include "driver/Driver.h"
#include "output/JsonHeader.h"

namespace {

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

void printJsonError(kz::String const& description, char const* end) {
  s_pw->println("\t\"error\": \"" + description + end);
}

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
