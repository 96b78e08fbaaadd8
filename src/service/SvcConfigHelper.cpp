#include "service/SvcConfigHelper.h"

#include <algorithm>
#include <array>
#include <memory>
#include <string.h>
#include <vector>

namespace {

using StringList = SvcConfigHelper::StringList;

// What a list operation of the interface needs: room for its elements, and their number before and
// after the call.
template <int Capacity>
struct Room {
  std::array<std::int32_t, Capacity> elements{};
  int count = Capacity;
};

// A text of the interface in its buffer, also when the NUL is missing.
kz::String textOf(const char* buffer, std::size_t size) {
  return std::string_view(buffer, strnlen(buffer, size));
}

template <std::size_t Size>
kz::String textOf(const std::array<char, Size>& buffer) {
  return textOf(buffer.data(), buffer.size());
}

// The 8-bit form of a text in a buffer of the interface, wiped when it goes.
template <std::size_t Size>
class TextArgument {
 public:
  explicit TextArgument(const kz::String& text) {
    std::string bytes = text.getBytes();
    fits_ = bytes.size() < Size;
    holdsNul_ = bytes.find('\0') != std::string::npos;
    if (fits_) std::copy(bytes.begin(), bytes.end(), buffer_.begin());
    explicit_bzero(bytes.data(), bytes.size());
  }
  TextArgument(const TextArgument&) = delete;
  TextArgument& operator=(const TextArgument&) = delete;
  ~TextArgument() { explicit_bzero(buffer_.data(), buffer_.size()); }

  bool fits() const noexcept { return fits_; }
  // The interface would take such a text for a shorter one.
  bool holdsNul() const noexcept { return holdsNul_; }
  const char* get() const noexcept { return buffer_.data(); }

 private:
  std::array<char, Size> buffer_{};
  bool fits_ = false;
  bool holdsNul_ = false;
};

constexpr TnValueSelector selector(int which) { return static_cast<TnValueSelector>(which); }

// An interface that reports more elements than it was given room for has broken its contract;
// nothing of such a list can be trusted. A negative number is an empty list.
TnStatus checkedCount(TnStatus status, int count, int capacity) {
  return status == TN_SUCCESS && count > capacity ? TnStatus{TN_BUFFER_TOO_SMALL} : status;
}

}  // namespace

SvcConfigHelper::SvcConfigHelper()
    : interfaceMessages(new MessageHelper("TNMSG", "KZ_MSG_P_E_")),
      programMessages(new MessageHelper("KNOB", "KNOB_")) {}

void SvcConfigHelper::connect(kz::String server, kz::String user, kz::String password) {
  // Made before the interface is started, which has to be stopped whatever fails from there on.
  const TextArgument<TN_CONNECT_TEXT_SIZE> serverText(server);
  const TextArgument<TN_CONNECT_TEXT_SIZE> userText(user);
  const TextArgument<TN_CONNECT_TEXT_SIZE> passwordText(password);
  TnStart(0);
  if (server.isEmpty() && user.isEmpty() && password.isEmpty()) {
    handle = TN_LOCAL_HANDLE;
    return;
  }
  const TnStatus status = !serverText.fits()     ? TnStatus{TN_SERVER_NAME_TOO_LONG}
                          : !userText.fits()     ? TnStatus{TN_USER_NAME_TOO_LONG}
                          : !passwordText.fits() ? TnStatus{TN_PASSWORD_TOO_LONG}
                                                 : TnConnectServer(serverText.get(), userText.get(),
                                                                   passwordText.get(), &handle);
  if (status == TN_SUCCESS) return;
  stopped = true;
  TnStop(0);
  fail(status);
}

void SvcConfigHelper::disconnect() {
  if (handle != TN_NO_HANDLE) {
    TnDisconnect(handle);
    handle = TN_NO_HANDLE;
  }
  if (!stopped) {
    TnStop(0);
    stopped = true;
  }
}

kz::String SvcConfigHelper::createErrorMsg(int code) {
  const kz::String number = kz::String::valueOf(code);
  if (code >= SvcException::FIRST_PROGRAM_CODE) {
    return programMessages->getResStr(number.getBytes().c_str());
  }
  return number + ": " + interfaceMessages->getResStr(number.getBytes().c_str());
}

void SvcConfigHelper::check(TnStatus status) {
  if (status != TN_SUCCESS) fail(status);
}

void SvcConfigHelper::fail(int code) { throw SvcException(createErrorMsg(code), code); }

kz::collections::List<CategoryInfo>* SvcConfigHelper::getCategoryList() {
  Room<TN_CATEGORY_CAPACITY> ids;
  const TnStatus status = TnGetCategoryList(handle, &ids.count, ids.elements.data());
  check(checkedCount(status, ids.count, TN_CATEGORY_CAPACITY));
  auto list = std::make_unique<kz::collections::List<CategoryInfo>>();
  for (int i = 0; i < ids.count; ++i) {
    const int id = ids.elements[static_cast<std::size_t>(i)];
    TnCategoryRecord record{};
    check(TnGetCategoryInfo(handle, id, &record));
    list->add(new CategoryInfo(id, textOf(record.name, sizeof record.name), record.extraInfo));
  }
  return list.release();
}

int SvcConfigHelper::getCategoryListCount() {
  int count = 0;
  check(TnGetCategoryListCount(handle, &count));
  return count;
}

kz::collections::List<SettingInfo>* SvcConfigHelper::getSettingInfoList(int categoryId) {
  Room<TN_SETTING_CAPACITY> ids;
  const TnStatus status = TnGetSettingList(handle, categoryId, &ids.count, ids.elements.data());
  check(checkedCount(status, ids.count, TN_SETTING_CAPACITY));
  auto list = std::make_unique<kz::collections::List<SettingInfo>>();
  for (int i = 0; i < ids.count; ++i) {
    const int id = ids.elements[static_cast<std::size_t>(i)];
    TnSettingRecord record{};
    check(TnGetSettingInfo(handle, id, &record));
    list->add(makeSettingInfo(id, record));
  }
  return list.release();
}

SettingInfo* SvcConfigHelper::getSettingInfo(int settingId, bool mustBeAvailable) {
  TnSettingRecord record{};
  if (TnGetSettingInfo(handle, settingId, &record) != TN_SUCCESS) {
    fail(SvcException::UNKNOWN_SETTING);
  }
  std::unique_ptr<SettingInfo> info(makeSettingInfo(settingId, record));
  if (mustBeAvailable && !info->available) fail(SvcException::UNKNOWN_SETTING);
  return info.release();
}

SettingInfo* SvcConfigHelper::makeSettingInfo(int settingId, const TnSettingRecord& record) {
  return std::make_unique<SettingInfo>(settingId, record.type,
                                       textOf(record.name, sizeof record.name), record.extraInfo,
                                       record.clientServer, isSettingAvailable(settingId))
      .release();
}

bool SvcConfigHelper::isSettingAvailable(int settingId) {
  return TnIsSettingAvailable(handle, settingId) != 0;
}

kz::String SvcConfigHelper::getStringValue(int settingId, int which) {
  std::array<char, TN_TEXT_SIZE> text{};
  int size = TN_TEXT_SIZE;
  check(TnGetStringValue(handle, settingId, &size, text.data(), selector(which)));
  return textOf(text);
}

kz::String SvcConfigHelper::getLongValue(int settingId, int which) {
  std::int32_t value = 0;
  check(TnGetLongValue(handle, settingId, &value, selector(which)));
  return kz::String::valueOf(value);
}

kz::String SvcConfigHelper::getBooleanValue(int settingId, int which) {
  std::int16_t value = 0;
  check(TnGetBooleanValue(handle, settingId, &value, selector(which)));
  return value != 0 ? getBooleanTrueStr(settingId) : getBooleanFalseStr(settingId);
}

void SvcConfigHelper::getBooleanStrings(int settingId, kz::String& trueWord,
                                        kz::String& falseWord) {
  // The interface is told of less room than there is.
  constexpr int kToldSize = 125;
  std::array<char, TN_WORD_SIZE> trueText{};
  std::array<char, TN_WORD_SIZE> falseText{};
  int trueSize = kToldSize;
  int falseSize = kToldSize;
  check(TnGetBooleanStrings(handle, settingId, &trueSize, trueText.data(), &falseSize,
                            falseText.data()));
  trueWord = textOf(trueText);
  falseWord = textOf(falseText);
}

kz::String SvcConfigHelper::getBooleanTrueStr(int settingId) {
  kz::String trueWord;
  kz::String falseWord;
  getBooleanStrings(settingId, trueWord, falseWord);
  return trueWord;
}

kz::String SvcConfigHelper::getBooleanFalseStr(int settingId) {
  kz::String trueWord;
  kz::String falseWord;
  getBooleanStrings(settingId, trueWord, falseWord);
  return falseWord;
}

StringList* SvcConfigHelper::getSelectionValues(int settingId, int which) {
  Room<TN_SELECTION_CAPACITY> items;
  const TnStatus status =
      TnGetSelectionValue(handle, settingId, &items.count, items.elements.data(), selector(which));
  check(checkedCount(status, items.count, TN_SELECTION_CAPACITY));
  auto list = std::make_unique<StringList>();
  for (int i = 0; i < items.count; ++i) {
    list->add(new kz::String(kz::String::valueOf(items.elements[static_cast<std::size_t>(i)])));
  }
  return list.release();
}

kz::String SvcConfigHelper::getSelectionString(int settingId, int item) {
  std::array<char, TN_TEXT_SIZE> text{};
  int size = TN_TEXT_SIZE;
  check(TnGetSelectionString(handle, settingId, item, &size, text.data()));
  return textOf(text);
}

StringList* SvcConfigHelper::getAllPossibleSelections(int settingId) {
  int count = 1;
  check(TnCountSelectionItems(handle, settingId, &count));
  const int capacity = std::max(count, 0);
  // Never without an element: the interface is not given a null pointer.
  std::vector<std::int32_t> items(static_cast<std::size_t>(capacity) + 1);
  count = capacity;
  const TnStatus status = TnGetAllPossibleSelections(handle, settingId, &count, items.data());
  check(checkedCount(status, count, capacity));
  auto list = std::make_unique<StringList>();
  for (int i = 0; i < count; ++i) {
    list->add(new kz::String(getSelectionString(settingId, items[static_cast<std::size_t>(i)])));
  }
  return list.release();
}

void SvcConfigHelper::getValueLimit(int settingId, int* maximum, int* minimum) {
  check(TnGetValueLimit(handle, settingId, maximum, minimum));
}

kz::String SvcConfigHelper::getSettingHelp(int settingId) {
  int size = TN_TEXT_SIZE;
  std::vector<char> text(TN_TEXT_SIZE);
  TnStatus status = TnGetSettingHelp(settingId, &size, text.data());
  if (status == TN_BUFFER_TOO_SMALL && size > 0) {
    text.assign(static_cast<std::size_t>(size), '\0');
    status = TnGetSettingHelp(settingId, &size, text.data());
  }
  check(status);
  return textOf(text.data(), text.size());
}

void SvcConfigHelper::setStringValue(int settingId, kz::String value, int which) {
  const TextArgument<TN_TEXT_SIZE> text(value);
  if (!text.fits()) fail(TN_VALUE_TOO_LONG);
  if (text.holdsNul()) fail(TN_CONTROL_CHARACTER);
  check(TnSetStringValue(handle, settingId, text.get(), selector(which)));
}

void SvcConfigHelper::setLongValue(int settingId, std::int64_t value, int which) {
  check(TnSetLongValue(handle, settingId, value, selector(which)));
}

void SvcConfigHelper::setBooleanValue(int settingId, bool value, int which) {
  check(TnSetBooleanValue(handle, settingId, value ? 1 : 0, selector(which)));
}

void SvcConfigHelper::setSelectionValue(int settingId, int count, int* items, int which) {
  check(TnSetSelectionValue(handle, settingId, count, items, selector(which)));
}
