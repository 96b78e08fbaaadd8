#include "http/HttpDouble.h"

#include <algorithm>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

namespace {

sockaddr_in loopback(int port) {
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  address.sin_port = htons(static_cast<in_port_t>(port));
  return address;
}

int bound(int& port) {
  const int opened = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  sockaddr_in address = loopback(0);
  socklen_t size = sizeof address;
  auto* const general = reinterpret_cast<sockaddr*>(&address);
  const bool done = bind(opened, general, size) == 0 && getsockname(opened, general, &size) == 0;
  port = done ? ntohs(address.sin_port) : 0;
  return opened;
}

}  // namespace

HttpDouble::HttpDouble(Script script) : script_(std::move(script)), listener_(bound(port_)) {
  listen(listener_, SOMAXCONN);
  acceptor_ = std::thread([this] {
    for (int peer = 0; (peer = accept4(listener_, nullptr, nullptr, SOCK_CLOEXEC)) >= 0;) {
      const std::lock_guard lock(mutex_);
      connections_.emplace_back(peer, std::thread([this, peer] { serve(peer); }));
    }
  });
}

HttpDouble::~HttpDouble() {
  shutdown(listener_, SHUT_RDWR);
  acceptor_.join();
  close(listener_);
  for (auto& [connection, thread] : connections_) {
    shutdown(connection, SHUT_RDWR);
    thread.join();
    close(connection);
  }
}

std::vector<std::string> HttpDouble::requests() const {
  const std::lock_guard lock(mutex_);
  return requests_;
}

void HttpDouble::serve(int connection) {
  for (std::string request; !(request = readHttpMessage(connection)).empty();) {
    {
      const std::lock_guard lock(mutex_);
      requests_.push_back(request);
    }
    const Reply reply = script_(request);
    send(connection, reply.bytes.data(), reply.bytes.size(), MSG_NOSIGNAL);
    if (reply.close) break;
  }
  shutdown(connection, SHUT_RDWR);
}

std::string httpAnswer(int status, const std::string& body, const std::string& headers) {
  return "HTTP/1.1 " + std::to_string(status) + " -\r\n" + headers +
         "Content-Length: " + std::to_string(body.size()) + "\r\n\r\n" + body;
}

std::string readHttpMessage(int connection) {
  std::string message;
  char buffer[4096];
  std::size_t wanted = std::string::npos;
  while (message.size() < wanted) {
    const ssize_t size = recv(connection, buffer, sizeof buffer, 0);
    if (size <= 0) break;
    message.append(buffer, static_cast<std::size_t>(size));
    const std::size_t head = message.find("\r\n\r\n");
    if (wanted != std::string::npos || head == std::string::npos) continue;
    const std::size_t length = message.find("Content-Length: ");
    wanted = head + 4 + (length < head ? std::stoul(message.substr(length + 16)) : 0);
  }
  return message;
}

int connectTo(int port) {
  const int opened = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  const sockaddr_in address = loopback(port);
  if (connect(opened, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0) {
    return opened;
  }
  close(opened);
  return -1;
}

int freePort() {
  int port = 0;
  close(bound(port));
  return port;
}
