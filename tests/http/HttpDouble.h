// A server on a free port of 127.0.0.1 that answers every HTTP request with what the test gives it,
// byte for byte, and keeps the requests. Ends with the object.
#ifndef KNOB_TESTS_HTTP_HTTP_DOUBLE_H
#define KNOB_TESTS_HTTP_HTTP_DOUBLE_H

#include <atomic>
#include <functional>
#include <list>
#include <mutex>
#include <string>
#include <thread>
#include <utility>
#include <vector>

inline std::string local(int port) { return "127.0.0.1:" + std::to_string(port); }

struct Reply {
  std::string bytes;   // an answer that is not complete and not closed is one to wait for
  bool close = false;  // ends the connection after it
};

class HttpDouble {
 public:
  // Called with the whole request, from one thread for each connection.
  using Script = std::function<Reply(const std::string& request)>;
  // The first row whose text the request holds tells the answer; the last one's text is empty.
  using Table = std::vector<std::pair<std::string, Reply>>;

  explicit HttpDouble(Script script);
  explicit HttpDouble(Table table);
  explicit HttpDouble(const Reply& always) : HttpDouble(Table{{"", always}}) {}
  ~HttpDouble();

  std::string address() const { return local(port_); }
  std::vector<std::string> requests() const {
    const std::lock_guard lock(mutex_);
    return requests_;
  }

 private:
  struct Connection {
    explicit Connection(int peer) : socket(peer) {}
    ~Connection();
    int socket;
    std::atomic<bool> ended{false};
    std::thread thread{};
  };
  void serve(int connection);

  Script script_;
  int port_ = 0;
  int listener_;
  mutable std::mutex mutex_{};
  std::vector<std::string> requests_{};
  std::list<Connection> connections_{};
  std::thread acceptor_{};
};

// A complete answer.
std::string httpAnswer(int status, const std::string& body, const std::string& headers = "");

// A port of 127.0.0.1 that nobody uses at the moment.
int freePort();

#endif
