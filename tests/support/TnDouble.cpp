// A scripted double of the tuning interface, put before the real library with LD_PRELOAD. It
// appends each call with what goes in, a line such as "TnSetLongValue 1 25 5 2", to the file that
// TN_RECORD names, and passes it on. At the end of the process its arguments go into the file that
// TN_RECORD_ARGUMENTS names.
//
// TN_ANSWER="CALL=ANSWER": calls that begin with these words get this answer: a status, or else
// what stands for the true number of elements or description.
#include <cstdlib>
#include <cstring>
#include <dlfcn.h>
#include <fstream>
#include <sstream>

#include "service/TuningInterface.h"

namespace {

std::string answer;  // to the call that was passed on last; empty for the true one

[[gnu::destructor]] void recordArguments() {
  std::ofstream(std::getenv("TN_RECORD_ARGUMENTS")) << std::ifstream("/proc/self/cmdline").rdbuf();
}

void describe(std::ostream& call, const char* text) { call << ' ' << text; }
void describe(std::ostream& call, std::int64_t number) { call << ' ' << number; }
void describe(std::ostream&, void*) {}

template <typename Result, typename... Arguments>
Result passOn(const char* name, Result (*)(Arguments...), Arguments... arguments) {
  std::ostringstream call;
  call << name;
  (describe(call, arguments), ...);
  std::ofstream(std::getenv("TN_RECORD"), std::ios::app) << call.str() << '\n';
  const std::string plan = std::getenv("TN_ANSWER");
  const std::size_t end = plan.find('=');
  const bool meant = (call.str() + ' ').starts_with(plan.substr(0, end) + ' ');
  answer = meant ? plan.substr(end + 1) : "";
  const int number = std::atoi(answer.c_str());
  if (number >= TN_INVALID_ARGUMENT) return static_cast<Result>(number);
  return reinterpret_cast<Result (*)(Arguments...)>(dlsym(RTLD_NEXT, name))(arguments...);
}

TnStatus withCount(TnStatus status, int* count) {
  if (!answer.empty()) *count = std::atoi(answer.c_str());
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
  return withCount(passOn(__func__, TnGetCategoryList, handle, count, ids), count);
}
TnStatus TnGetSettingList(TnHandle handle, int id, int* count, int* ids) {
  return withCount(passOn(__func__, TnGetSettingList, handle, id, count, ids), count);
}
TnStatus TnGetSettingInfo(TnHandle handle, int id, TnSettingRecord* record) {
  return passOn(__func__, TnGetSettingInfo, handle, id, record);
}
TnStatus TnGetSelectionValue(TnHandle handle, int id, int* count, int32_t* items,
                             TnValueSelector which) {
  return withCount(passOn(__func__, TnGetSelectionValue, handle, id, count, items, which), count);
}
TnStatus TnGetSettingHelp(int id, int* size, char* text) {
  const TnStatus status = passOn(__func__, TnGetSettingHelp, id, size, text);
  if (!answer.empty()) std::strcpy(text, answer.c_str());
  return status;
}
TnStatus TnSetLongValue(TnHandle handle, int id, int64_t value, TnValueSelector which) {
  return passOn(__func__, TnSetLongValue, handle, id, value, which);
}
TnStatus TnSetStringValue(TnHandle handle, int id, const char* value, TnValueSelector which) {
  return passOn(__func__, TnSetStringValue, handle, id, value, which);
}
}
