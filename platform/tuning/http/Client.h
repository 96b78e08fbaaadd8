// A client of services that answer over HTTP, for engine modules whose server has such an
// interface: a few endpoints that are alike, small requests and answers, and a clear word on what
// went wrong.
//
// The caller has to know one thing above all: whether a request that failed may have been carried
// out. So failures are told apart by it (see Failure), and a request that must not be carried out
// twice is never sent twice: not to another endpoint, and not over again on a connection that the
// server had closed.
//
// Redirects are not followed. Proxies and ~/.netrc play no part, whatever the environment says.
#ifndef KNOB_HTTP_CLIENT_H
#define KNOB_HTTP_CLIENT_H

#include <chrono>
#include <cstddef>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace tn::http {

using Clock = std::chrono::steady_clock;
using Deadline = Clock::time_point;

enum class Method { get, post, patch };

enum class Failure {
  none,  // there is an answer, with whatever status

  // Nothing was carried out.
  unreachable,  // no such host, refused, or not connected in time
  tls,  // the certificate is not accepted, on either side; no TLS there; own TLS files unusable

  // The request may have been carried out.
  timeout,   // connected, but no answer in time
  tooLarge,  // the answer is larger than allowed
  cut        // the connection ended before the answer did, or the answer is not HTTP
};

struct Request {
  Method method = Method::get;
  std::string path;                    // with the slash at its beginning, escaped
  std::string body{};                  // JSON; empty for none
  std::vector<std::string> headers{};  // "Name: value"
  // Whether carrying it out twice is as good as once: then every endpoint may be asked.
  bool repeatable = false;
};

struct Answer {
  Failure failure = Failure::none;
  long status = 0;     // of HTTP; 0 after a failure
  std::string body{};  // as far as `failure` is none
};

// Files in PEM form, each may be empty. A key with a pass phrase cannot be used.
struct Tls {
  std::string authority{};  // certificates to trust; the system's when empty
  std::string certificate{};
  std::string key{};
  bool verify = true;
};

struct Options {
  Tls tls{};
  std::string user{};  // basic authentication; none when empty
  std::string password{};
  std::chrono::milliseconds connectTime{2000};  // name lookup, connection and TLS together
  std::chrono::milliseconds requestTime{3000};  // one request to one endpoint, connecting included
  std::size_t largestAnswer = 4 << 20;          // bytes of the body; a head has 256 KiB at most
};

class Client {
 public:
  // Endpoints are "http://HOST:PORT" or "https://HOST:PORT"; at least one. Connects to none yet.
  explicit Client(std::vector<std::string> endpoints, Options options = {});
  ~Client();
  Client(const Client&) = delete;
  Client& operator=(const Client&) = delete;

  // Asks the endpoints in order, each once, from the one that answered last, until one answers or
  // the deadline has passed; past an endpoint that may have carried the request out it goes on only
  // with a repeatable request. When none answers: the failure that tells most, which is the last in
  // the order of Failure, and the next request begins with the next endpoint. Throws
  // std::bad_alloc only; libcurl takes a line of a head over 100 KiB for a lack of memory, too.
  Answer send(const Request& request, Deadline deadline);

  // Lets the next request begin with the next endpoint.
  void skipEndpoint();
  std::size_t endpointCount() const { return endpoints_.size(); }
  // One more, asked after the others.
  void addEndpoint(std::string endpoint) { endpoints_.push_back(std::move(endpoint)); }

 private:
  struct Transfer;

  Answer ask(const Request& request, std::chrono::milliseconds time);

  std::vector<std::string> endpoints_;
  Options options_;
  std::size_t current_ = 0;
  std::unique_ptr<Transfer> transfer_;
};

}  // namespace tn::http

#endif
