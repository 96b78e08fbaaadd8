// Stands between a client and a server on 127.0.0.1, and after so many bytes in one direction cuts
// the first connection, or stalls every connection, or goes on with it byte by byte.
#ifndef KNOB_TESTS_SUPPORT_PROXY_H
#define KNOB_TESTS_SUPPORT_PROXY_H

#include <atomic>
#include <list>
#include <thread>

class Proxy {
 public:
  enum class Trouble { none, cut, stall, slow };
  enum Direction { toServer, toClient };

  // `after`: as many bytes of the direction still pass.
  Proxy(int serverPort, Trouble trouble = Trouble::none, Direction direction = toServer,
        long after = 0);
  ~Proxy();

  int port() const { return port_; }
  // The bytes that have passed so far.
  long passed(Direction direction) const { return passed_[direction]; }

 private:
  void serve(int client, long left);  // the bytes that pass before the trouble begins

  int serverPort_;
  Trouble trouble_;
  Direction direction_;
  long after_;
  int listener_;
  int port_ = 0;
  std::atomic<bool> over_ = false;
  std::atomic<long> passed_[2] = {0, 0};
  std::list<std::thread> connections_{};
  std::thread acceptor_{};
};

#endif
