// The Tn functions: the edge between callers in C and the engines. Arguments are checked here,
// results are copied into the caller's memory here, and every exception ends here as a status.
// What a setting is and which values it takes is the engines' business.
#include <cstring>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

#include "service/TuningInterface.h"
#include "tuning/Engine.h"
#include "tuning/EngineDirectory.h"
#include "tuning/Guarded.h"
#include "tuning/HandleTable.h"
#include "tuning/TuningError.h"

namespace tn {
namespace {

// Never destroyed: a caller that ends without TnStop abandons its connections, since the libraries
// behind them may be gone by the time this one is taken down.
HandleTable& handles() {
  static auto* const table = new HandleTable;
  return *table;
}

void require(bool condition, TnStatus otherwise) {
  if (!condition) throw TuningError(otherwise);
}

void check(TnStatus status) { require(status == TN_SUCCESS, status); }

using IdList = std::vector<int32_t>;

// What one of an engine's operations gives: `T` is filled in by the operation.
template <typename T, typename... Parameters, typename... Arguments>
T ask(Engine& engine, TnStatus (Engine::*operation)(Parameters...) noexcept,
      Arguments... arguments) {
  T answer{};
  check((engine.*operation)(arguments..., answer));
  return answer;
}

template <typename... Pointers>
void requirePointers(const Pointers*... pointers) {
  require(((pointers != nullptr) && ...), TN_INVALID_ARGUMENT);
}

Selector readSelector(TnValueSelector selector) {
  require(selector == TN_DEFAULT_VALUE || selector == TN_CURRENT_VALUE, TN_INVALID_SELECTOR);
  return static_cast<Selector>(selector);
}

void requireWritable(TnValueSelector selector) {
  require(readSelector(selector) == Selector::currentValue, TN_DEFAULT_NOT_WRITABLE);
}

// The caller's text, read no further than `capacity` bytes.
std::string boundedText(const char* text, size_t capacity, TnStatus tooLong) {
  const size_t length = strnlen(text, capacity);
  require(length < capacity, tooLong);
  return {text, length};
}

// True when the caller's array is large enough; otherwise writes the needed capacity back.
bool hasRoom(size_t needed, int* capacity) {
  require(*capacity >= 0, TN_INVALID_ARGUMENT);
  if (needed <= static_cast<size_t>(*capacity)) return true;
  *capacity = static_cast<int>(needed);
  return false;
}

void copyText(std::string_view text, int* size, char* buffer) {
  std::memcpy(buffer, text.data(), text.size());
  buffer[text.size()] = '\0';
  *size = static_cast<int>(text.size());
}

void returnText(std::string_view text, int* size, char* buffer) {
  require(hasRoom(text.size() + 1, size), TN_BUFFER_TOO_SMALL);
  copyText(text, size, buffer);
}

void returnList(const IdList& list, int* count, int32_t* buffer) {
  require(hasRoom(list.size(), count), TN_BUFFER_TOO_SMALL);
  if (!list.empty()) std::memcpy(buffer, list.data(), list.size() * sizeof list[0]);
  *count = static_cast<int>(list.size());
}

void returnName(std::string_view name, char (&field)[TN_NAME_SIZE]) {
  require(name.size() < TN_NAME_SIZE, TN_BUFFER_TOO_SMALL);
  std::memcpy(field, name.data(), name.size());
}

}  // namespace
}  // namespace tn

using namespace tn;  // NOLINT(google-build-using-namespace): the functions below are its C face

static_assert(std::is_same_v<int, int32_t>, "ids travel in arrays of int");

int TnStart(int /*reserved*/) { return TN_SUCCESS; }

int TnStop(int /*reserved*/) {
  return guarded([] { check(handles().closeAll()); });
}

TnStatus TnConnectServer(const char* server, const char* user, const char* password,
                         TnHandle* handle) {
  return guarded([&] {
    requirePointers(server, user, password, handle);
    const Login login{
        boundedText(server, TN_CONNECT_TEXT_SIZE, TN_SERVER_NAME_TOO_LONG),
        boundedText(user, TN_CONNECT_TEXT_SIZE, TN_USER_NAME_TOO_LONG),
        boundedText(password, TN_CONNECT_TEXT_SIZE, TN_PASSWORD_TOO_LONG),
    };
    *handle = handles().add(EngineDirectory::open(login));
  });
}

TnStatus TnDisconnect(TnHandle handle) {
  return guarded([&] { check(handles().close(handle)); });
}

TnStatus TnGetCategoryListCount(TnHandle handle, int* count) {
  return guarded([&] {
    requirePointers(count);
    *count = static_cast<int>(ask<IdList>(handles().engine(handle), &Engine::tryCategories).size());
  });
}

TnStatus TnGetCategoryList(TnHandle handle, int* count, int* categoryIds) {
  return guarded([&] {
    requirePointers(count, categoryIds);
    returnList(ask<IdList>(handles().engine(handle), &Engine::tryCategories), count, categoryIds);
  });
}

TnStatus TnGetCategoryInfo(TnHandle handle, int categoryId, TnCategoryRecord* record) {
  return guarded([&] {
    requirePointers(record);
    const auto info = ask<CategoryInfo>(handles().engine(handle), &Engine::tryCategory, categoryId);
    TnCategoryRecord filled{};
    returnName(info.name, filled.name);
    filled.extraInfo = info.changed;
    *record = filled;
  });
}

TnStatus TnGetSettingList(TnHandle handle, int categoryId, int* count, int* settingIds) {
  return guarded([&] {
    requirePointers(count, settingIds);
    returnList(ask<IdList>(handles().engine(handle), &Engine::trySettings, categoryId), count,
               settingIds);
  });
}

TnStatus TnGetSettingInfo(TnHandle handle, int settingId, TnSettingRecord* record) {
  return guarded([&] {
    requirePointers(record);
    const auto info = ask<SettingInfo>(handles().engine(handle), &Engine::trySetting, settingId);
    TnSettingRecord filled{};
    filled.type = info.type;
    returnName(info.name, filled.name);
    filled.clientServer = info.server ? 1 : 0;
    *record = filled;
  });
}

int16_t TnIsSettingAvailable(TnHandle handle, int settingId) {
  bool available = false;
  guarded(
      [&] { available = ask<bool>(handles().engine(handle), &Engine::tryIsAvailable, settingId); });
  return available ? 1 : 0;
}

TnStatus TnGetStringValue(TnHandle handle, int settingId, int* size, char* value,
                          TnValueSelector selector) {
  return guarded([&] {
    requirePointers(size, value);
    Engine& engine = handles().engine(handle);
    returnText(ask<std::string>(engine, &Engine::tryStringValue, settingId, readSelector(selector)),
               size, value);
  });
}

TnStatus TnGetLongValue(TnHandle handle, int settingId, int32_t* value, TnValueSelector selector) {
  return guarded([&] {
    requirePointers(value);
    Engine& engine = handles().engine(handle);
    *value = ask<int32_t>(engine, &Engine::tryIntegerValue, settingId, readSelector(selector));
  });
}

TnStatus TnGetBooleanValue(TnHandle handle, int settingId, int16_t* value,
                           TnValueSelector selector) {
  return guarded([&] {
    requirePointers(value);
    Engine& engine = handles().engine(handle);
    *value = ask<bool>(engine, &Engine::tryBooleanValue, settingId, readSelector(selector)) ? 1 : 0;
  });
}

TnStatus TnGetBooleanStrings(TnHandle handle, int settingId, int* trueSize, char* trueWord,
                             int* falseSize, char* falseWord) {
  return guarded([&] {
    requirePointers(trueSize, trueWord, falseSize, falseWord);
    const auto words =
        ask<BooleanWords>(handles().engine(handle), &Engine::tryBooleanWords, settingId);
    // Both sizes are checked before either word is written.
    const bool trueFits = hasRoom(words.whenTrue.size() + 1, trueSize);
    const bool falseFits = hasRoom(words.whenFalse.size() + 1, falseSize);
    require(trueFits && falseFits, TN_BUFFER_TOO_SMALL);
    copyText(words.whenTrue, trueSize, trueWord);
    copyText(words.whenFalse, falseSize, falseWord);
  });
}

TnStatus TnGetSelectionValue(TnHandle handle, int settingId, int* count, int32_t* items,
                             TnValueSelector selector) {
  return guarded([&] {
    requirePointers(count, items);
    Engine& engine = handles().engine(handle);
    returnList(ask<IdList>(engine, &Engine::trySelectionValue, settingId, readSelector(selector)),
               count, items);
  });
}

TnStatus TnCountSelectionItems(TnHandle handle, int settingId, int* count) {
  return guarded([&] {
    requirePointers(count);
    *count = static_cast<int>(
        ask<IdList>(handles().engine(handle), &Engine::trySelectionItems, settingId).size());
  });
}

TnStatus TnGetAllPossibleSelections(TnHandle handle, int settingId, int* count, int32_t* items) {
  return guarded([&] {
    requirePointers(count, items);
    returnList(ask<IdList>(handles().engine(handle), &Engine::trySelectionItems, settingId), count,
               items);
  });
}

TnStatus TnGetSelectionString(TnHandle handle, int settingId, int32_t item, int* size, char* text) {
  return guarded([&] {
    requirePointers(size, text);
    returnText(
        ask<std::string>(handles().engine(handle), &Engine::trySelectionText, settingId, item),
        size, text);
  });
}

TnStatus TnGetValueLimit(TnHandle handle, int settingId, int32_t* maximum, int32_t* minimum) {
  return guarded([&] {
    requirePointers(maximum, minimum);
    const auto limits = ask<Limits>(handles().engine(handle), &Engine::tryLimits, settingId);
    *maximum = limits.maximum;
    *minimum = limits.minimum;
  });
}

TnStatus TnGetSettingHelp(int settingId, int* size, char* text) {
  return guarded([&] {
    requirePointers(size, text);
    returnText(ask<std::string>(handles().latest(), &Engine::tryDescription, settingId), size,
               text);
  });
}

TnStatus TnSetStringValue(TnHandle handle, int settingId, const char* value,
                          TnValueSelector selector) {
  return guarded([&] {
    requirePointers(value);
    Engine& engine = handles().engine(handle);
    requireWritable(selector);
    check(engine.trySetString(settingId, boundedText(value, TN_TEXT_SIZE, TN_VALUE_TOO_LONG)));
  });
}

TnStatus TnSetLongValue(TnHandle handle, int settingId, int64_t value, TnValueSelector selector) {
  return guarded([&] {
    Engine& engine = handles().engine(handle);
    requireWritable(selector);
    check(engine.trySetInteger(settingId, value));
  });
}

TnStatus TnSetBooleanValue(TnHandle handle, int settingId, int value, TnValueSelector selector) {
  return guarded([&] {
    require(value == 0 || value == 1, TN_INVALID_ARGUMENT);
    Engine& engine = handles().engine(handle);
    requireWritable(selector);
    check(engine.trySetBoolean(settingId, value == 1));
  });
}

TnStatus TnSetSelectionValue(TnHandle handle, int settingId, int count, const int32_t* items,
                             TnValueSelector selector) {
  return guarded([&] {
    require(count >= 0 && (count == 0 || items != nullptr), TN_INVALID_ARGUMENT);
    // More could not be read back; it also bounds what is read of the caller's memory.
    require(count <= TN_SELECTION_CAPACITY, TN_VALUE_TOO_LONG);
    Engine& engine = handles().engine(handle);
    requireWritable(selector);
    check(engine.trySetSelection(settingId, IdList(items, items + count)));
  });
}
