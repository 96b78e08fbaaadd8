#include "support/Proxy.h"

#include <arpa/inet.h>
#include <array>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

namespace {

constexpr int kGlanceMilliseconds = 20;

int connection(int port) {
  const int opened = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_port = htons(static_cast<uint16_t>(port));
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  (void)!connect(opened, reinterpret_cast<sockaddr*>(&address), sizeof address);
  return opened;
}

}  // namespace

Proxy::Proxy(int serverPort, Trouble trouble, Direction direction, long after)
    : serverPort_(serverPort),
      trouble_(trouble),
      direction_(direction),
      after_(after),
      listener_(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  socklen_t size = sizeof address;
  (void)!bind(listener_, reinterpret_cast<sockaddr*>(&address), size);
  (void)!listen(listener_, SOMAXCONN);
  (void)!getsockname(listener_, reinterpret_cast<sockaddr*>(&address), &size);
  port_ = ntohs(address.sin_port);
  acceptor_ = std::thread([this] { accept(); });
}

Proxy::~Proxy() {
  over_ = true;
  shutdown(listener_, SHUT_RDWR);
  acceptor_.join();
  for (std::thread& each : connections_) each.join();
  close(listener_);
}

void Proxy::accept() {
  for (int client = 0; (client = accept4(listener_, nullptr, nullptr, SOCK_CLOEXEC)) >= 0;) {
    const bool later = !connections_.empty();
    const Trouble trouble = later && trouble_ == Trouble::cut ? Trouble::none : trouble_;
    connections_.emplace_back([this, client, trouble] { serve(client, trouble); });
  }
}

void Proxy::serve(int client, Trouble trouble) {
  const int server = connection(serverPort_);
  std::array<pollfd, 2> ends{{{client, POLLIN, 0}, {server, POLLIN, 0}}};
  long counts[2] = {0, 0};
  for (bool open = true; open && !over_;) {
    poll(ends.data(), ends.size(), kGlanceMilliseconds);
    if (ends[0].revents != 0) open = pass(client, server, toServer, trouble, counts[toServer]);
    if (open && ends[1].revents != 0) {
      open = pass(server, client, toClient, trouble, counts[toClient]);
    }
  }
  close(server);
  close(client);
}

// False when the connection is over.
bool Proxy::pass(int from, int to, Direction direction, Trouble trouble, long& count) {
  std::array<char, 65536> bytes;
  const bool troubled = trouble != Trouble::none && direction == direction_;
  const long left = after_ - count;
  if (troubled && left <= 0 && trouble == Trouble::cut) return false;
  if (troubled && left <= 0 && trouble == Trouble::stall) {
    pollfd end{direction == toServer ? from : to, POLLRDHUP, 0};
    while (!over_ && poll(&end, 1, kGlanceMilliseconds) == 0) {
    }
    return false;
  }
  std::size_t most = bytes.size();
  if (troubled) most = left > 0 ? std::min(most, static_cast<std::size_t>(left)) : 1;
  const ssize_t size = recv(from, bytes.data(), most, 0);
  if (size <= 0 || send(to, bytes.data(), static_cast<std::size_t>(size), MSG_NOSIGNAL) != size) {
    return false;
  }
  count += size;
  passed_[direction] += size;
  return true;
}
