#include "http/HttpDouble.h"

#include <algorithm>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

namespace {

int bound(int& port) {
  const int opened = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  sockaddr_in address{AF_INET, 0, {htonl(INADDR_LOOPBACK)}, {}};
  socklen_t size = sizeof address;
  auto* const general = reinterpret_cast<sockaddr*>(&address);
  bind(opened, general, size);
  getsockname(opened, general, &size);
  port = ntohs(address.sin_port);
  return opened;
}

// As far as its head and Content-Length say; less if the peer ends it.
std::string readRequest(int connection) {
  std::string request;
  char buffer[4096];
  for (ssize_t size = 0; (size = recv(connection, buffer, sizeof buffer, 0)) > 0;) {
    request.append(buffer, static_cast<std::size_t>(size));
    const std::size_t head = request.find("\r\n\r\n");
    if (head == request.npos) continue;
    const std::size_t length = request.find("Content-Length: ");
    const std::size_t body = length < head ? std::stoul(request.substr(length + 16)) : 0;
    if (request.size() >= head + 4 + body) break;
  }
  return request;
}

}  // namespace

HttpDouble::HttpDouble(Table table)
    : HttpDouble([rows = std::move(table)](const std::string& request) {
        return std::ranges::find_if(
                   rows, [&](const auto& row) { return request.find(row.first) != request.npos; })
            ->second;
      }) {}

HttpDouble::HttpDouble(Script script) : script_(std::move(script)), listener_(bound(port_)) {
  listen(listener_, SOMAXCONN);
  acceptor_ = std::thread([this] {
    for (int peer = 0; (peer = accept4(listener_, nullptr, nullptr, SOCK_CLOEXEC)) >= 0;) {
      connections_.remove_if([](const Connection& each) { return each.ended.load(); });
      Connection& connection = connections_.emplace_back(peer);
      connection.thread = std::thread([this, &connection] {
        serve(connection.socket);
        connection.ended = true;
      });
    }
  });
}

HttpDouble::~HttpDouble() {
  shutdown(listener_, SHUT_RDWR);
  acceptor_.join();
  close(listener_);
}

HttpDouble::Connection::~Connection() {
  shutdown(socket, SHUT_RDWR);
  thread.join();
  close(socket);
}

void HttpDouble::serve(int connection) {
  for (std::string request; !(request = readRequest(connection)).empty();) {
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

int freePort() {
  int port = 0;
  close(bound(port));
  return port;
}
