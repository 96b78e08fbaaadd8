// Waiting for a server no longer than until a deadline.
#ifndef KNOB_POSTGRESQL_SOCKET_WAIT_H
#define KNOB_POSTGRESQL_SOCKET_WAIT_H

#include <chrono>

namespace tn::postgresql {

// How long it is until then, not below 0.
int millisecondsUntil(std::chrono::steady_clock::time_point deadline);

// True when the socket is ready for the events of poll(2); false when the time has passed. A
// negative time waits without end.
bool waitForSocket(int socket, short events, int timeoutMilliseconds);

}  // namespace tn::postgresql

#endif
