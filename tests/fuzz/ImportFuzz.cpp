// A settings file of any content, imported into a store.
#include "commands/CommandProcessor.h"
#include "fuzz/Fuzz.h"
#include "kz/Exception.h"
#include "kz/io/FileOutputStream.h"
#include "kz/io/OutputStreamWriter.h"

void tryInput(const std::string& text) {
  static const TempFolder folder;
  writeFile(folder / "import", text);
  static kz::Reference<kz::io::PrintWriter> silent(
      new kz::io::PrintWriter(new kz::io::OutputStreamWriter(
                                  new kz::io::FileOutputStream("/dev/null", true), nullptr, 2048),
                              true));
  kz::Reference<SvcConfigHelper> service(new SvcConfigHelper);
  service->connect(("file:" + folder / "settings.db").c_str(), "", "");
  kz::Reference<Logger> logger(new Logger);
  try {
    CommandProcessor(service, silent, silent, logger, "", (folder / "import").c_str())
        .readConfiguration(true);
  } catch (const kz::Exception&) {
    // What cannot be said any better than by a status.
  }
}
