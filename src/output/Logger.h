// A sink of text lines with a threshold and any number of writers behind it. It serves as the debug
// log and as the channel through which a command writes its text output to the screen or to a file.
//
// A record is written unchanged, with a line feed after it, to each handler in the order they were
// added, and flushed at once; what a writer throws passes to the caller.
#ifndef KNOB_OUTPUT_LOGGER_H
#define KNOB_OUTPUT_LOGGER_H

#include <utility>

#include "kz/collections/List.h"
#include "kz/io/OutputStream.h"
#include "kz/io/PrintWriter.h"
#include "output/Level.h"
#include "output/MessageHelper.h"

class Logger : public kz::Object {
 public:
  // Writes nothing until a level is set and a handler added. The messages word file failures.
  Logger() : Logger("KNOB", "KNOB_") {}
  Logger(const char* bundle, const char* prefix);
  ~Logger() override;

  void addStdOutHandler();
  // Creates the missing directories of the path and the file; an existing file is emptied, one that
  // this process has open is refused. Throws what throwError does, and then has no new handler.
  void addFileHandler(kz::String name);

  void setLevel(Level threshold) { level = threshold; }
  // By name, ignoring case. Any other text silences the log.
  void setLevel(kz::String name);

  void log(Level recordLevel, kz::String text);
  void severe(kz::String text) { log(Level::SEVERE, std::move(text)); }
  void warning(kz::String text) { log(Level::WARNING, std::move(text)); }
  void info(kz::String text) { log(Level::INFO, std::move(text)); }
  void config(kz::String text) { log(Level::CONFIG, std::move(text)); }
  void fine(kz::String text) { log(Level::FINE, std::move(text)); }
  void finer(kz::String text) { log(Level::FINER, std::move(text)); }
  void finest(kz::String text) { log(Level::FINEST, std::move(text)); }

  // Closes every handler's writer, in order, and takes it off: for whoever has to know that all
  // that was written has arrived. The destructor closes too, but cannot report a failure.
  void close();

  // Throws IoException for refused access, a missing file and one in use, ResultException for any
  // other status.
  [[noreturn]] void throwError(int status, kz::String fileName);

 private:
  void addHandler(kz::Reference<kz::io::OutputStream> stream);

  Level level = Level::OFF;
  kz::Reference<kz::collections::List<kz::io::PrintWriter>> handlers;
  kz::Reference<MessageHelper> messages;
};

#endif
