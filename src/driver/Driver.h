// What the driver shows to the rest of the program and to itself: the two writers that every
// command is handed, and the steps that main calls.
#ifndef KNOB_DRIVER_DRIVER_H
#define KNOB_DRIVER_DRIVER_H

#include "kz/Reference.h"
#include "kz/io/PrintWriter.h"
#include "output/MessageHelper.h"

// Standard output and standard error, flushed after every line.
extern kz::Reference<kz::io::PrintWriter> s_pw;
extern kz::Reference<kz::io::PrintWriter> s_errpw;

// Carries out the one command that the parsed command line describes, over the open connection, and
// closes the connection. Throws whatever the command throws.
void processCommand();

// How the program is called: a message, or the "usage" member of the JSON object.
void displayUsage();
// Opens the JSON object with the program's title, version and copyright.
void displayJsonHeaderMsg(kz::Reference<MessageHelper>& messages);

#endif
