#include "output/Logger.h"

#include <exception>

#include "kz/Exception.h"
#include "kz/io/FileOutputStream.h"
#include "kz/io/OpenFiles.h"
#include "kz/io/OutputStreamWriter.h"
#include "kz/io/StdioOutputStream.h"
#include "kz/util/FilePath.h"
#include "output/FileFailure.h"
#include "util/Utils.h"

namespace {

using Handlers = kz::collections::List<kz::io::PrintWriter>;

constexpr long kBufferSize = 2048;

struct LevelName {
  const char* name;
  Level level;
};
constexpr LevelName kLevelNames[] = {{"SEVERE", Level::SEVERE}, {"WARNING", Level::WARNING},
                                     {"INFO", Level::INFO},     {"CONFIG", Level::CONFIG},
                                     {"FINE", Level::FINE},     {"FINER", Level::FINER},
                                     {"FINEST", Level::FINEST}, {"ALL", Level::ALL}};

// A bare name is told with the folder that it is meant in, unless that folder is gone.
kz::String reportedName(const kz::String& name) {
  const kz::String delimiter(std::wstring(1, kz::util::FilePath::dirDelim));
  if (name.indexOf(delimiter, 0, false) >= 0) return name;
  try {
    return kz::util::FilePath::getCurrentDir() + name;
  } catch (const kz::Exception&) {
    return name;
  }
}

}  // namespace

Logger::Logger(const char* bundle, const char* prefix)
    : handlers(new Handlers), messages(new MessageHelper(bundle, prefix)) {}

Logger::~Logger() {
  try {
    close();
  } catch (...) {
    // Every record was flushed when it was logged, and whoever needs the close to succeed calls it.
  }
}

void Logger::addStdOutHandler() {
  addHandler(kz::Reference<kz::io::OutputStream>(new kz::io::StdioOutputStream));
}

void Logger::addFileHandler(kz::String name) {
  const int status = Utils::createDirs(name);
  if (status != 0) throwError(status, name);
  // The engine may have it open, as its store.
  if (kz::io::isOpenHere(name.getBytes())) {
    throw fileFailure(*messages, "ERR_CREATE_FILE", reportedName(name), "FILE_IN_USE_ERROR",
                      kz::kStatusFileInUse);
  }
  try {
    addHandler(kz::Reference<kz::io::OutputStream>(new kz::io::FileOutputStream(name, false)));
  } catch (const kz::Exception& failure) {
    throwError(failure.getResult(), reportedName(name));
  }
}

void Logger::addHandler(kz::Reference<kz::io::OutputStream> stream) {
  const kz::Reference<kz::io::Writer> writer(
      new kz::io::OutputStreamWriter(stream.get(), nullptr, kBufferSize));
  handlers->add(new kz::io::PrintWriter(writer.get(), false));
}

void Logger::setLevel(kz::String name) {
  level = Level::OFF;
  for (const LevelName& known : kLevelNames) {
    if (name.equalsIgnoreCase(known.name)) level = known.level;
  }
}

void Logger::log(Level recordLevel, kz::String text) {
  if (level > recordLevel || handlers->size() == 0) return;
  for (int i = 0; i < handlers->size(); ++i) {
    handlers->get(i)->println(text);
    handlers->get(i)->flush();
  }
}

void Logger::close() {
  const kz::Reference<Handlers> closing = handlers;
  handlers = kz::Reference<Handlers>(new Handlers);
  std::exception_ptr failure;
  for (int i = 0; i < closing->size(); ++i) {
    try {
      closing->get(i)->close();
    } catch (const kz::Exception&) {
      if (!failure) failure = std::current_exception();
    }
  }
  if (failure) std::rethrow_exception(failure);
}

void Logger::throwError(int status, kz::String fileName) {
  throwFileFailure(*messages, "ERR_CREATE_FILE", fileName, status);
}
