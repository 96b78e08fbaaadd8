#include "support/TnDouble.h"

#include <algorithm>
#include <cstring>
#include <sstream>
#include <string_view>
#include <utility>

namespace {

using Answer = TnDouble::Answer;

TnDouble engine;

template <typename... Arguments>
Answer called(const char* name, const Arguments&... arguments) {
  std::ostringstream text;
  const char* separator = "(";
  text << name;
  ((text << std::exchange(separator, ",") << arguments), ...);
  engine.calls.push_back(text.str() + ")");
  const auto answer = engine.answers.find(engine.calls.back());
  if (answer != engine.answers.end()) return answer->second;
  const bool change = std::string_view(name).starts_with("TnSet");
  return {static_cast<TnStatus>(change ? TN_SUCCESS : TN_UNKNOWN_SETTING), {0, 0}};
}

TnStatus putText(const std::string& text, int* size, char* buffer) {
  const int given = std::exchange(*size, static_cast<int>(text.size()) + 1);
  if (given < *size) return TN_BUFFER_TOO_SMALL;
  std::memcpy(buffer, text.c_str(), text.size() + 1);
  --*size;
  return TN_SUCCESS;
}

TnStatus putText(const Answer& answer, int* size, char* buffer) {
  return answer.status != TN_SUCCESS ? answer.status : putText(answer.text, size, buffer);
}

TnStatus putList(const Answer& answer, int* count, std::int32_t* elements) {
  const std::size_t given = std::min(answer.numbers.size(), static_cast<std::size_t>(*count));
  std::copy_n(answer.numbers.begin(), given, elements);
  *count = answer.claimedCount.value_or(static_cast<int>(answer.numbers.size()));
  return answer.status;
}

template <typename... Numbers>
TnStatus putNumbers(const Answer& answer, Numbers*... numbers) {
  std::size_t at = 0;
  ((*numbers = static_cast<Numbers>(answer.numbers.at(at++))), ...);
  return answer.status;
}

// Without a NUL when the name fills the field.
template <typename Record>
void putName(const Answer& answer, Record* record) {
  answer.text.copy(record->name, sizeof record->name);
}

void addSetting(int id, TnValueType type, const char* name, const char* getter,
                const Answer& current, const Answer& standard, int available = -1,
                int clientServer = 0xFFFF) {
  const std::string number = std::to_string(id), key = "(-1," + number;
  const char* const capacity = type > 1 ? ",1024)" : ")";
  std::map<std::string, Answer> added = {
      {"TnGetSettingInfo" + key + ")", {0, {type, -id, clientServer}, name}},
      {"TnIsSettingAvailable" + key + ")", {0, {available}}},
      {getter + key + ",1" + capacity, standard},
      {getter + key + ",2" + capacity, current},
      {"TnGetBooleanStrings" + key + ",125,125)", {0, {}, "Yes/Nope"}},
      {"TnGetValueLimit" + key + ")", {0, {100, -3}}},
      {"TnCountSelectionItems" + key + ")", {0, {3}}},
      {"TnGetAllPossibleSelections" + key + ",3)", {0, {10, 11, 12}}},
      {"TnGetSelectionString" + key + ",10,1024)", {0, {}, "red"}},
      {"TnGetSelectionString" + key + ",11,1024)", {0, {}, "green"}},
      {"TnGetSelectionString" + key + ",12,1024)", {0, {}, "blue"}},
      {"TnGetSettingHelp(" + number + ",1024)", {0, {}, "Help."}}};
  engine.answers.merge(added);
}

}  // namespace

TnDouble& TnDouble::reset() {
  engine = {{{"TnGetCategoryList(-1,30)", {0, {1, 2}}},
             {"TnGetCategoryInfo(-1,1)", {0, {6}, "Caches"}},
             {"TnGetCategoryInfo(-1,2)", {0, {0}, "Files"}},
             {"TnGetSettingList(-1,1,50)", {0, {25, 26, 27}}},
             {"TnGetSettingList(-1,2,50)", {0, {74, 81, 82}}}}};
  addSetting(25, 1, "Cache Size", "TnGetLongValue", {0, {5}}, {0, {4}});
  addSetting(26, 0, "Cache Max Size", "TnGetBooleanValue", {0, {-1}}, {0, {0}}, -1, 0);
  addSetting(27, 1, "Cache Secret", "TnGetLongValue", {0, {1}}, {0, {1}}, 0);
  addSetting(74, 2, "Log Path", "TnGetStringValue", {0, {}, "C:\\a"}, {0, {}, "\\"});
  addSetting(81, 4, "Colors", "TnGetSelectionValue", {0, {0, 2}}, {});
  addSetting(82, 9, "Odd", "", {}, {});
  engine.answers["TnGetSettingHelp(25,1024)"].text = "The \"size\" on C:\\.";
  return engine;
}

std::vector<std::string> TnDouble::callsOf(const std::string& beginning) const {
  std::vector<std::string> found;
  std::copy_if(calls.begin(), calls.end(), std::back_inserter(found),
               [&](const std::string& call) { return call.starts_with(beginning); });
  return found;
}

int TnStart(int reserved) { return called("TnStart", reserved).status; }
int TnStop(int reserved) { return called("TnStop", reserved).status; }
TnStatus TnDisconnect(TnHandle handle) { return called("TnDisconnect", handle).status; }

TnStatus TnConnectServer(const char* server, const char* user, const char* password,
                         TnHandle* handle) {
  return putNumbers(called("TnConnectServer", server, user, password), handle);
}

TnStatus TnGetCategoryListCount(TnHandle handle, int* count) {
  return putNumbers(called("TnGetCategoryListCount", handle), count);
}

TnStatus TnGetCategoryList(TnHandle handle, int* count, int* ids) {
  return putList(called("TnGetCategoryList", handle, *count), count, ids);
}

TnStatus TnGetCategoryInfo(TnHandle handle, int id, TnCategoryRecord* record) {
  const Answer answer = called("TnGetCategoryInfo", handle, id);
  putName(answer, record);
  return putNumbers(answer, &record->extraInfo);
}

TnStatus TnGetSettingList(TnHandle handle, int categoryId, int* count, int* ids) {
  return putList(called("TnGetSettingList", handle, categoryId, *count), count, ids);
}

TnStatus TnGetSettingInfo(TnHandle handle, int id, TnSettingRecord* record) {
  Answer answer = called("TnGetSettingInfo", handle, id);
  putName(answer, record);
  answer.numbers.resize(3);
  return putNumbers(answer, &record->type, &record->extraInfo, &record->clientServer);
}

int16_t TnIsSettingAvailable(TnHandle handle, int id) {
  return static_cast<int16_t>(called("TnIsSettingAvailable", handle, id).numbers.at(0));
}

TnStatus TnGetStringValue(TnHandle handle, int id, int* size, char* value, TnValueSelector which) {
  return putText(called("TnGetStringValue", handle, id, which, *size), size, value);
}

TnStatus TnGetLongValue(TnHandle handle, int id, int32_t* value, TnValueSelector which) {
  return putNumbers(called("TnGetLongValue", handle, id, which), value);
}

TnStatus TnGetBooleanValue(TnHandle handle, int id, int16_t* value, TnValueSelector which) {
  return putNumbers(called("TnGetBooleanValue", handle, id, which), value);
}

TnStatus TnGetBooleanStrings(TnHandle handle, int id, int* trueSize, char* trueWord, int* falseSize,
                             char* falseWord) {
  Answer answer = called("TnGetBooleanStrings", handle, id, *trueSize, *falseSize);
  const std::size_t slash = answer.text.find('/');
  putText(answer.text.substr(slash + 1), falseSize, falseWord);
  answer.text.resize(slash);
  return putText(answer, trueSize, trueWord);
}

TnStatus TnGetSelectionValue(TnHandle handle, int id, int* count, int32_t* items,
                             TnValueSelector which) {
  return putList(called("TnGetSelectionValue", handle, id, which, *count), count, items);
}

TnStatus TnCountSelectionItems(TnHandle handle, int id, int* count) {
  return putNumbers(called("TnCountSelectionItems", handle, id), count);
}

TnStatus TnGetAllPossibleSelections(TnHandle handle, int id, int* count, int32_t* items) {
  return putList(called("TnGetAllPossibleSelections", handle, id, *count), count, items);
}

TnStatus TnGetSelectionString(TnHandle handle, int id, int32_t item, int* size, char* text) {
  return putText(called("TnGetSelectionString", handle, id, item, *size), size, text);
}

TnStatus TnGetValueLimit(TnHandle handle, int id, int32_t* maximum, int32_t* minimum) {
  return putNumbers(called("TnGetValueLimit", handle, id), maximum, minimum);
}

TnStatus TnGetSettingHelp(int id, int* size, char* text) {
  return putText(called("TnGetSettingHelp", id, *size), size, text);
}

TnStatus TnSetStringValue(TnHandle handle, int id, const char* value, TnValueSelector which) {
  return called("TnSetStringValue", handle, id, value, which).status;
}

TnStatus TnSetLongValue(TnHandle handle, int id, int64_t value, TnValueSelector which) {
  return called("TnSetLongValue", handle, id, value, which).status;
}

TnStatus TnSetBooleanValue(TnHandle handle, int id, int value, TnValueSelector which) {
  return called("TnSetBooleanValue", handle, id, value, which).status;
}

TnStatus TnSetSelectionValue(TnHandle handle, int id, int count, const int32_t* items,
                             TnValueSelector which) {
  std::string list;
  for (int i = 0; i < count; ++i) list += std::to_string(items[i]) + " ";
  return called("TnSetSelectionValue", handle, id, list, which).status;
}
