// A server on a free port of 127.0.0.1 that answers every HTTP request with what the test gives it,
// byte for byte, and counts the requests. Ends with the object.
#ifndef KNOB_TESTS_HTTP_HTTP_DOUBLE_H
#define KNOB_TESTS_HTTP_HTTP_DOUBLE_H

#include <atomic>
#include <functional>
#include <string>
#include <thread>

inline std::string local(int port) { return "127.0.0.1:" + std::to_string(port); }

struct Reply {
  std::string bytes;   // an answer that is not complete and not closed is one to wait for
  bool close = false;  // ends the connection after it
};

class HttpDouble {
 public:
  // Called with the whole request, always from the same thread.
  using Script = std::function<Reply(const std::string& request)>;

  explicit HttpDouble(Script script);
  explicit HttpDouble(const Reply& always)
      : HttpDouble([=](const std::string&) { return always; }) {}
  ~HttpDouble();

  std::string address() const { return local(port_); }
  int requests() const { return requests_; }

 private:
  void serve();
  bool answer(int connection, std::string& request);

  Script script_;
  int port_ = 0;
  int listener_;
  std::atomic<int> requests_ = 0;
  std::thread server_;
};

// A complete answer.
std::string httpAnswer(long status, const std::string& body, const std::string& headers = "");

// A port of 127.0.0.1 that nobody uses at the moment.
int freePort();

#endif
