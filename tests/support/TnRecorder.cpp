// Put in front of the tuning library with LD_PRELOAD: writes the name of the call, a line each,
// into the file that TN_RECORD names, and passes the call on. At the end of the process its
// arguments go into the file that TN_RECORD_ARGUMENTS names.
#include <array>
#include <cstdlib>
#include <dlfcn.h>
#include <fcntl.h>
#include <string_view>
#include <unistd.h>

#include "service/TuningInterface.h"

namespace {

void append(const char* variable, std::string_view text) {
  const char* const path = std::getenv(variable);
  if (path == nullptr) return;
  const int file = open(path, O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0666);
  (void)!write(file, text.data(), text.size());
  close(file);
}

void record(std::string_view name) {
  append("TN_RECORD", name);
  append("TN_RECORD", "\n");
}

[[gnu::destructor]] void recordArguments() {
  std::array<char, 4096> arguments{};
  const int file = open("/proc/self/cmdline", O_RDONLY | O_CLOEXEC);
  const ssize_t size = read(file, arguments.data(), arguments.size());
  append("TN_RECORD_ARGUMENTS", {arguments.data(), static_cast<std::size_t>(size)});
  close(file);
}

template <typename Result, typename... Arguments>
Result passOn(const char* name, Result (*)(Arguments...), Arguments... arguments) {
  record(name);
  return reinterpret_cast<Result (*)(Arguments...)>(dlsym(RTLD_NEXT, name))(arguments...);
}

}  // namespace

extern "C" {

int TnStart(int reserved) { return passOn("TnStart", TnStart, reserved); }
int TnStop(int reserved) { return passOn("TnStop", TnStop, reserved); }
TnStatus TnConnectServer(const char* server, const char* user, const char* password,
                         TnHandle* handle) {
  const TnStatus status =
      passOn("TnConnectServer", TnConnectServer, server, user, password, handle);
  if (status != TN_SUCCESS) record("refused");
  return status;
}
TnStatus TnDisconnect(TnHandle handle) { return passOn("TnDisconnect", TnDisconnect, handle); }
TnStatus TnGetSettingInfo(TnHandle handle, int id, TnSettingRecord* record) {
  return passOn("TnGetSettingInfo", TnGetSettingInfo, handle, id, record);
}
int16_t TnIsSettingAvailable(TnHandle handle, int id) {
  return passOn("TnIsSettingAvailable", TnIsSettingAvailable, handle, id);
}
TnStatus TnSetLongValue(TnHandle handle, int id, int64_t value, TnValueSelector selector) {
  return passOn("TnSetLongValue", TnSetLongValue, handle, id, value, selector);
}
TnStatus TnSetStringValue(TnHandle handle, int id, const char* value, TnValueSelector selector) {
  return passOn("TnSetStringValue", TnSetStringValue, handle, id, value, selector);
}
TnStatus TnSetBooleanValue(TnHandle handle, int id, int value, TnValueSelector selector) {
  return passOn("TnSetBooleanValue", TnSetBooleanValue, handle, id, value, selector);
}
TnStatus TnSetSelectionValue(TnHandle handle, int id, int count, const int32_t* items,
                             TnValueSelector selector) {
  return passOn("TnSetSelectionValue", TnSetSelectionValue, handle, id, count, items, selector);
}
}
