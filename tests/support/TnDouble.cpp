// A scripted double of the tuning interface, in front of the real library: linked into a test
// program, or put before the built program with LD_PRELOAD. It appends each call with what goes in,
// a line such as "TnSetLongValue 1 25 5 2", to the file that TN_RECORD names, and passes it on. At
// the end of the process its arguments go into the file that TN_RECORD_ARGUMENTS names.
//
// TN_ANSWER="CALL=ANSWER": calls that begin with these words get this answer: a status, or else
// what stands for the true number of elements, type of a setting, truth, name or description.
#include <array>
#include <cstdlib>
#include <dlfcn.h>
#include <fcntl.h>
#include <sstream>
#include <unistd.h>

#include "service/TuningInterface.h"

namespace {

std::string answer;  // to the call that was passed on last; empty for the true one

void append(const char* variable, std::string_view text) {
  const char* const path = std::getenv(variable);
  if (path == nullptr) return;
  const int file = open(path, O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0666);
  (void)!write(file, text.data(), text.size());
  close(file);
}

[[gnu::destructor]] void recordArguments() {
  std::array<char, 4096> arguments{};
  const int file = open("/proc/self/cmdline", O_RDONLY | O_CLOEXEC);
  const ssize_t size = read(file, arguments.data(), arguments.size());
  append("TN_RECORD_ARGUMENTS", {arguments.data(), static_cast<std::size_t>(size)});
  close(file);
}

void describe(std::ostream& call, const char* text) { call << ' ' << text; }
void describe(std::ostream& call, std::int64_t number) { call << ' ' << number; }
void describe(std::ostream&, void*) {}

template <typename Result, typename... Arguments>
Result passOn(const char* name, Result (*)(Arguments...), Arguments... arguments) {
  std::ostringstream call;
  call << name;
  (describe(call, arguments), ...);
  append("TN_RECORD", call.str() + "\n");
  const char* const variable = std::getenv("TN_ANSWER");
  const std::string plan = variable == nullptr ? "none=" : variable;
  const std::size_t end = plan.find('=');
  const bool meant = (call.str() + ' ').starts_with(plan.substr(0, end) + ' ');
  answer = meant ? plan.substr(end + 1) : "";
  const int number = std::atoi(answer.c_str());
  if (number >= TN_INVALID_ARGUMENT) return static_cast<Result>(number);
  return reinterpret_cast<Result (*)(Arguments...)>(dlsym(RTLD_NEXT, name))(arguments...);
}

template <typename Number>
TnStatus withNumber(TnStatus status, Number* number) {
  if (!answer.empty()) *number = static_cast<Number>(std::atoi(answer.c_str()));
  return status;
}

// Without a NUL when the text fills the room.
TnStatus withText(TnStatus status, char* text, std::size_t room) {
  if (!answer.empty()) (answer + '\0').copy(text, room);
  return status;
}

}  // namespace

extern "C" {

int TnStart(int reserved) { return passOn(__func__, TnStart, reserved); }
int TnStop(int reserved) { return passOn(__func__, TnStop, reserved); }
TnStatus TnConnectServer(const char* server, const char* user, const char* word, TnHandle* handle) {
  return passOn(__func__, TnConnectServer, server, user, word, handle);
}
TnStatus TnDisconnect(TnHandle handle) { return passOn(__func__, TnDisconnect, handle); }
TnStatus TnGetCategoryList(TnHandle handle, int* count, int* ids) {
  return withNumber(passOn(__func__, TnGetCategoryList, handle, count, ids), count);
}
TnStatus TnGetCategoryInfo(TnHandle handle, int id, TnCategoryRecord* record) {
  return withText(passOn(__func__, TnGetCategoryInfo, handle, id, record), record->name,
                  sizeof record->name);
}
TnStatus TnGetSettingList(TnHandle handle, int id, int* count, int* ids) {
  return withNumber(passOn(__func__, TnGetSettingList, handle, id, count, ids), count);
}
TnStatus TnGetSettingInfo(TnHandle handle, int id, TnSettingRecord* record) {
  return withNumber(passOn(__func__, TnGetSettingInfo, handle, id, record), &record->type);
}
int16_t TnIsSettingAvailable(TnHandle handle, int id) {
  int16_t available = passOn(__func__, TnIsSettingAvailable, handle, id);
  withNumber(TN_SUCCESS, &available);
  return available;
}
TnStatus TnGetBooleanValue(TnHandle handle, int id, int16_t* value, TnValueSelector which) {
  return withNumber(passOn(__func__, TnGetBooleanValue, handle, id, value, which), value);
}
TnStatus TnGetSelectionValue(TnHandle handle, int id, int* count, int32_t* items,
                             TnValueSelector which) {
  return withNumber(passOn(__func__, TnGetSelectionValue, handle, id, count, items, which), count);
}
TnStatus TnGetAllPossibleSelections(TnHandle handle, int id, int* count, int32_t* items) {
  return withNumber(passOn(__func__, TnGetAllPossibleSelections, handle, id, count, items), count);
}
TnStatus TnGetSettingHelp(int id, int* size, char* text) {
  const std::size_t room = static_cast<std::size_t>(*size);
  return withText(passOn(__func__, TnGetSettingHelp, id, size, text), text, room);
}
TnStatus TnSetLongValue(TnHandle handle, int id, int64_t value, TnValueSelector which) {
  return passOn(__func__, TnSetLongValue, handle, id, value, which);
}
TnStatus TnSetStringValue(TnHandle handle, int id, const char* value, TnValueSelector which) {
  return passOn(__func__, TnSetStringValue, handle, id, value, which);
}
}
