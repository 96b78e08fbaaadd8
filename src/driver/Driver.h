// The objects of the process that the steps of a run share, and the steps that main calls.
#ifndef KNOB_DRIVER_DRIVER_H
#define KNOB_DRIVER_DRIVER_H

#include "driver/KnobCmdParser.h"
#include "kz/Reference.h"
#include "kz/io/PrintWriter.h"
#include "output/Logger.h"
#include "output/MessageHelper.h"
#include "service/SvcConfigHelper.h"

// Empty until main makes them, released in the reverse order at the end of the process. The two
// writers are on standard output and standard error and are flushed after every line.
extern kz::Reference<kz::io::PrintWriter> s_pw;
extern kz::Reference<kz::io::PrintWriter> s_errpw;
extern kz::Reference<KnobCmdParser> s_cmdParser;
extern kz::Reference<Logger> s_logger;
extern kz::Reference<SvcConfigHelper> s_configHelper;
extern kz::Reference<MessageHelper> s_msgHelper;

// Carries out the one command that the parsed command line describes, over the open connection, and
// closes the connection. Throws whatever the command throws.
void processCommand();

// How the program is called: a message, or the "usage" member of the JSON object.
void displayUsage();
// Opens the JSON object with the program's title, version and copyright.
void displayJsonHeaderMsg(kz::Reference<MessageHelper>& messages);

// One line on standard error, or the "error" member of the JSON object with what ends its line.
void reportFailure(const kz::String& description, const char* jsonEnd = "\"");
// A command line that makes no sense: what is wrong with it, and the usage.
void reportMisuse(const kz::String& description);
void reportInvalidCommand();

#endif
