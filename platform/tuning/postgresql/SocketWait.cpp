#include "tuning/postgresql/SocketWait.h"

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <limits>
#include <poll.h>

namespace tn::postgresql {

int millisecondsUntil(std::chrono::steady_clock::time_point deadline) {
  const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(
      deadline - std::chrono::steady_clock::now());
  return static_cast<int>(std::clamp<int64_t>(left.count(), 0, std::numeric_limits<int>::max()));
}

bool waitForSocket(int socket, short events, int timeoutMilliseconds) {
  if (timeoutMilliseconds == 0) return false;
  pollfd entry{socket, events, 0};
  for (;;) {
    const int ready = ::poll(&entry, 1, timeoutMilliseconds);
    if (ready >= 0) return ready > 0;
    if (errno != EINTR) return true;  // libpq will meet the same trouble and report it
  }
}

}  // namespace tn::postgresql
