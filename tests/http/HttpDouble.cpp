#include "http/HttpDouble.h"

#include <map>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>
#include <vector>

namespace {

int listening(int& port) {
  const int opened = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  sockaddr_in address{AF_INET, 0, {htonl(INADDR_LOOPBACK)}, {}};
  socklen_t size = sizeof address;
  auto* const general = reinterpret_cast<sockaddr*>(&address);
  bind(opened, general, size);
  listen(opened, SOMAXCONN);
  getsockname(opened, general, &size);
  port = ntohs(address.sin_port);
  return opened;
}

// As its head and Content-Length say.
bool isWhole(const std::string& request) {
  const std::size_t head = request.find("\r\n\r\n"), length = request.find("Content-Length: ");
  if (head == request.npos) return false;
  return request.size() >= head + 4 + (length < head ? std::stoul(request.substr(length + 16)) : 0);
}

}  // namespace

HttpDouble::HttpDouble(Script script)
    : script_(std::move(script)), listener_(listening(port_)), server_([this] { serve(); }) {}

HttpDouble::~HttpDouble() {
  shutdown(listener_, SHUT_RDWR);
  server_.join();
}

void HttpDouble::serve() {
  std::vector<pollfd> sockets = {{listener_, POLLIN, 0}};
  std::map<int, std::string> received;
  while (poll(sockets.data(), sockets.size(), -1) > 0) {
    std::erase_if(sockets, [&](const pollfd& each) {
      const bool ended =
          each.fd != listener_ && each.revents != 0 && !answer(each.fd, received[each.fd]);
      return ended && close(each.fd) == 0;
    });
    if (sockets.front().revents == 0) continue;
    const int peer = accept4(listener_, nullptr, nullptr, SOCK_CLOEXEC);
    if (peer < 0) break;
    sockets.push_back({peer, POLLIN, 0});
    received[peer].clear();
  }
  for (const pollfd& each : sockets) close(each.fd);
}

// What there is of a request may not be all yet; false when the connection shall end.
bool HttpDouble::answer(int connection, std::string& request) {
  char buffer[4096];
  const ssize_t size = recv(connection, buffer, sizeof buffer, 0);
  if (size <= 0) return false;
  if (!isWhole(request.append(buffer, static_cast<std::size_t>(size)))) return true;
  ++requests_;
  const Reply reply = script_(request);
  request.clear();
  send(connection, reply.bytes.data(), reply.bytes.size(), MSG_NOSIGNAL);
  return !reply.close;
}

std::string httpAnswer(long status, const std::string& body, const std::string& headers) {
  return "HTTP/1.1 " + std::to_string(status) + " -\r\n" + headers +
         "Content-Length: " + std::to_string(body.size()) + "\r\n\r\n" + body;
}

int freePort() {
  int port = 0;
  close(listening(port));
  return port;
}
