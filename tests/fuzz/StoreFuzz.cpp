// A store file of any content: it is opened and changed well, or refused and left as it is.
#include "fuzz/Fuzz.h"
#include "tuning/StoreConnection.h"

void tryInput(const std::string& content) {
  static const TempFolder folder;
  static const std::string file = folder / "settings.db";
  std::filesystem::remove(file + "-journal");
  writeFile(file, content);
  bool changed = false;
  {
    const Connection connection("file:" + file);
    for (int id = 1; connection.status == TN_SUCCESS && id < 302; ++id) {
      char text[TN_TEXT_SIZE];
      int room = sizeof text;
      int32_t number = 0;
      TnGetStringValue(connection.handle, id, &room, text, TN_CURRENT_VALUE);
      TnGetLongValue(connection.handle, id, &number, TN_CURRENT_VALUE);
    }
    changed = connection.set(77) == TN_SUCCESS;
  }
  require(changed || readFile(file) == content);
  require(!changed || Connection("file:" + file).number() == 77);
}
