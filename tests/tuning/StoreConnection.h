// A connection to a store through the tuning interface, closed at its end.
#ifndef KNOB_TESTS_TUNING_STORE_CONNECTION_H
#define KNOB_TESTS_TUNING_STORE_CONNECTION_H

#include <string>

#include "service/TuningInterface.h"

inline constexpr int kNumber = 25;         // an integer
inline constexpr int kDefaultNumber = 20;  // what it is by default
inline constexpr int kText = 74;           // a text, the one that may be empty

struct Connection {
  explicit Connection(const std::string& server)
      : status(TnConnectServer(server.c_str(), "", "", &handle)) {}
  Connection(const Connection&) = delete;
  Connection& operator=(const Connection&) = delete;
  ~Connection() {
    if (status == TN_SUCCESS) TnDisconnect(handle);
  }

  // The status is that of connecting where that failed.
  TnStatus set(int64_t number) const {
    if (status != TN_SUCCESS) return status;
    return TnSetLongValue(handle, kNumber, number, TN_CURRENT_VALUE);
  }
  TnStatus set(const std::string& text) const {
    return TnSetStringValue(handle, kText, text.c_str(), TN_CURRENT_VALUE);
  }
  // -1 and "refused" if they cannot be read.
  int32_t number() const {
    int32_t value = 0;
    const TnStatus read = TnGetLongValue(handle, kNumber, &value, TN_CURRENT_VALUE);
    return read == TN_SUCCESS ? value : -1;
  }
  std::string text() const {
    char value[TN_TEXT_SIZE];
    int size = sizeof value;
    const TnStatus read = TnGetStringValue(handle, kText, &size, value, TN_CURRENT_VALUE);
    return read == TN_SUCCESS ? value : "refused";
  }

  TnHandle handle = TN_NO_HANDLE;
  TnStatus status;
};

#endif
