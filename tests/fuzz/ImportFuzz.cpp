// A settings file of any content, imported into a store.
#include <fcntl.h>
#include <unistd.h>

#include "commands/CommandProcessor.h"
#include "fuzz/Fuzz.h"
#include "kz/Exception.h"
#include "kz/io/OutputStreamWriter.h"
#include "kz/io/StdioOutputStream.h"

namespace {

kz::Reference<kz::io::PrintWriter> errorWriter() {
  const kz::Reference<kz::io::OutputStream> stream = kz::io::StdioOutputStream::getStdErrorStream();
  const kz::Reference<kz::io::Writer> writer(
      new kz::io::OutputStreamWriter(stream.get(), nullptr, 2048));
  return kz::Reference<kz::io::PrintWriter>(new kz::io::PrintWriter(writer.get(), true));
}

}  // namespace

int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size) {
  useFastFolder();
  static const TempFolder folder;
  writeFile(folder / "import", std::string(textOf(data, size)));
  static kz::Reference<kz::io::PrintWriter> silent = [] {
    const int nowhere = open("/dev/null", O_WRONLY);
    const int kept = dup(STDERR_FILENO);
    dup2(nowhere, STDERR_FILENO);
    auto writer = errorWriter();
    dup2(kept, STDERR_FILENO);
    return writer;
  }();
  kz::Reference<SvcConfigHelper> service(new SvcConfigHelper);
  service->connect(("file:" + folder / "settings.db").c_str(), "", "");
  kz::Reference<Logger> logger(new Logger);
  try {
    CommandProcessor(service, silent, silent, logger, "", (folder / "import").c_str())
        .readConfiguration(true);
  } catch (const kz::Exception&) {
    // What cannot be said any better than by a status.
  }
  return 0;
}
