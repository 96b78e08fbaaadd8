// A store file of any content: it is opened and changed well, or refused and left as it is.
#include <sys/syscall.h>
#include <unistd.h>

#include "fuzz/Fuzz.h"
#include "service/TuningInterface.h"

namespace {

constexpr int kNumber = 25;

struct Connection {
  explicit Connection(const std::string& file)
      : status(TnConnectServer(("file:" + file).c_str(), "", "", &handle)) {}
  ~Connection() {
    if (status == TN_SUCCESS) TnDisconnect(handle);
  }
  TnHandle handle = TN_NO_HANDLE;
  TnStatus status;
};

void readAll(const Connection& connection) {
  for (int id = 1; id < 302; ++id) {
    char text[TN_TEXT_SIZE];
    int size = sizeof text;
    int32_t number = 0;
    TnGetStringValue(connection.handle, id, &size, text, TN_CURRENT_VALUE);
    TnGetLongValue(connection.handle, id, &number, TN_CURRENT_VALUE);
  }
}

}  // namespace

int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size) {
  useFastFolder();
  static const TempFolder folder;
  static const std::string file = folder / "settings.db";
  const std::string content(textOf(data, size));
  std::filesystem::remove(file + "-journal");
  writeFile(file, content);
  bool changed = false;
  {
    const Connection connection(file);
    if (connection.status == TN_SUCCESS) {
      readAll(connection);
      changed = TnSetLongValue(connection.handle, kNumber, 77, TN_CURRENT_VALUE) == TN_SUCCESS;
    }
  }
  require(changed || readFile(file) == content);
  const Connection later(file);
  int32_t number = 0;
  require(!changed ||
          (TnGetLongValue(later.handle, kNumber, &number, TN_CURRENT_VALUE) == TN_SUCCESS &&
           number == 77));
  return 0;
}
