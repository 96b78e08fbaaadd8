#include "support/Proxy.h"

#include <algorithm>
#include <array>
#include <climits>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

namespace {

sockaddr_in localAddress(int port) {
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_port = htons(static_cast<uint16_t>(port));
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  return address;
}

}  // namespace

Proxy::Proxy(int serverPort, Trouble trouble, Direction direction, long after)
    : serverPort_(serverPort),
      trouble_(trouble),
      direction_(direction),
      after_(trouble == Trouble::none ? LONG_MAX : after),
      listener_(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
  sockaddr_in address = localAddress(0);
  socklen_t size = sizeof address;
  (void)!bind(listener_, reinterpret_cast<sockaddr*>(&address), size);
  (void)!listen(listener_, SOMAXCONN);
  (void)!getsockname(listener_, reinterpret_cast<sockaddr*>(&address), &size);
  port_ = ntohs(address.sin_port);
  acceptor_ = std::thread([this] {
    for (int client = 0; (client = accept4(listener_, nullptr, nullptr, SOCK_CLOEXEC)) >= 0;) {
      const bool whole = trouble_ == Trouble::cut && !connections_.empty();
      connections_.emplace_back([=, this] { serve(client, whole ? LONG_MAX : after_); });
    }
  });
}

Proxy::~Proxy() {
  over_ = true;
  shutdown(listener_, SHUT_RDWR);
  acceptor_.join();
  for (std::thread& each : connections_) each.join();
  close(listener_);
}

void Proxy::serve(int client, long left) {
  const int server = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  const sockaddr_in address = localAddress(serverPort_);
  (void)!connect(server, reinterpret_cast<const sockaddr*>(&address), sizeof address);
  std::array<pollfd, 2> from{{{client, POLLIN, 0}, {server, POLLIN, 0}}};  // by direction
  std::array<char, 65536> bytes;
  for (bool open = true; open && !over_;) {
    poll(from.data(), from.size(), 20);
    for (const Direction each : {toServer, toClient}) {
      if (!open || from[each].revents == 0) continue;
      const bool troubled = each == direction_ && left <= 0;
      if (troubled && trouble_ == Trouble::stall && from[each].events == POLLIN) {
        from[each].events = POLLRDHUP;  // only its end is waited for
        continue;
      }
      const bool passes = !troubled || trouble_ == Trouble::slow;
      const auto most =
          static_cast<std::size_t>(each == direction_ ? std::max(left, 1L) : LONG_MAX);
      const ssize_t size =
          passes ? recv(from[each].fd, bytes.data(), std::min(bytes.size(), most), 0) : -1;
      const auto sent = static_cast<std::size_t>(size);
      open = size > 0 && send(from[1 - each].fd, bytes.data(), sent, MSG_NOSIGNAL) == size;
      passed_[each] += open ? size : 0;
      if (each == direction_) left -= size;
    }
  }
  close(server);
  close(client);
}
