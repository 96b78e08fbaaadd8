#include "tuning/http/Client.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <curl/curl.h>
#include <new>
#include <string_view>
#include <utility>

namespace tn::http {
namespace {

constexpr const char* kMethods[] = {"GET", "POST", "PATCH"};
constexpr size_t kLargestHead = size_t{256} << 10;  // below the limit of libcurl

struct CodeMeaning {
  CURLcode code;
  Failure failure;
};

// Codes that are not here, and come before a request was sent, mean that nobody was reached.
constexpr CodeMeaning kMeanings[] = {
    {CURLE_SSL_CONNECT_ERROR, Failure::tls}, {CURLE_PEER_FAILED_VERIFICATION, Failure::tls},
    {CURLE_SSL_CERTPROBLEM, Failure::tls},   {CURLE_SSL_CACERT_BADFILE, Failure::tls},
    {CURLE_SSL_CRL_BADFILE, Failure::tls},   {CURLE_SSL_ISSUER_ERROR, Failure::tls},
    {CURLE_SSL_CIPHER, Failure::tls},        {CURLE_USE_SSL_FAILED, Failure::tls},
};

struct FreeList {
  void operator()(curl_slist* list) const { curl_slist_free_all(list); }
};
using HeaderList = std::unique_ptr<curl_slist, FreeList>;

void add(HeaderList& list, const std::string& line) {
  curl_slist* const longer = curl_slist_append(list.get(), line.c_str());
  if (longer == nullptr) throw std::bad_alloc();
  (void)list.release();
  list.reset(longer);
}

// "Expect" without a value is not sent: nobody waits for leave to send the body.
HeaderList headersOf(const Request& request) {
  HeaderList list;
  add(list, "Expect:");
  if (!request.body.empty()) add(list, "Content-Type: application/json");
  for (const std::string& line : request.headers) add(list, line);
  return list;
}

bool initialized() {
  static const bool done = curl_global_init(CURL_GLOBAL_DEFAULT) == CURLE_OK;
  return done;
}

}  // namespace

// One handle for all requests: it keeps connections open from one to the next.
struct Client::Transfer {
  explicit Transfer(size_t largestAnswer)
      : handle(initialized() ? curl_easy_init() : nullptr), room(largestAnswer) {
    if (handle == nullptr) throw std::bad_alloc();
  }
  Transfer(const Transfer&) = delete;
  Transfer& operator=(const Transfer&) = delete;
  ~Transfer() { curl_easy_cleanup(handle); }

  template <typename Value>
  void set(CURLoption option, Value value) {
    if (curl_easy_setopt(handle, option, value) == CURLE_OUT_OF_MEMORY) throw std::bad_alloc();
  }
  void setText(CURLoption option, const std::string& text) {
    if (!text.empty()) set(option, text.c_str());
  }

  void begin(std::string_view requestBody) {
    unsent = requestBody;
    headSize = 0;
    headEnded = false;
    body.clear();
    overflow = false;
    memoryIsShort = false;
    message[0] = '\0';
  }

  // What libcurl calls. The body goes out through a callback that cannot begin again: so libcurl,
  // which would repeat any request on finding that the server has closed a kept connection, does
  // not repeat one that was sent.
  static size_t giveBody(char* buffer, size_t size, size_t count, void* self) {
    std::string_view& unsent = static_cast<Transfer*>(self)->unsent;
    const size_t taken = unsent.copy(buffer, size * count);
    unsent.remove_prefix(taken);
    return taken;
  }
  static size_t takeHead(const char* line, size_t size, size_t count, void* self) {
    auto& transfer = *static_cast<Transfer*>(self);
    const std::string_view text(line, size * count);
    if (text.starts_with("HTTP/")) transfer.headEnded = false;
    if (text == "\r\n" || text == "\n") transfer.headEnded = true;
    transfer.headSize += size * count;
    transfer.overflow = transfer.headSize > kLargestHead;
    return transfer.overflow ? 0 : size * count;
  }
  static size_t takeBody(const char* bytes, size_t size, size_t count, void* self) {
    auto& transfer = *static_cast<Transfer*>(self);
    transfer.overflow = size * count > transfer.room - transfer.body.size();
    if (transfer.overflow) return 0;
    try {
      transfer.body.append(bytes, size * count);
    } catch (const std::bad_alloc&) {  // not through the frames of libcurl
      transfer.memoryIsShort = true;
      return 0;
    }
    return size * count;
  }

  Failure failureOf(CURLcode code) const {
    // A connection that ends between two lines of the head is an answer to libcurl.
    if (code == CURLE_OK) return headEnded ? Failure::none : Failure::cut;
    if (memoryIsShort || code == CURLE_OUT_OF_MEMORY) throw std::bad_alloc();
    if (overflow || code == CURLE_FILESIZE_EXCEEDED) return Failure::tooLarge;
    const auto* const known =
        std::ranges::find(kMeanings, code, [](const CodeMeaning& m) { return m.code; });
    if (known != std::end(kMeanings)) return known->failure;
    long sent = 0;
    curl_easy_getinfo(handle, CURLINFO_REQUEST_SIZE, &sent);
    if (sent == 0) return Failure::unreachable;
    if (code == CURLE_OPERATION_TIMEDOUT) return Failure::timeout;
    // From TLS 1.3 on a server refuses a client's certificate only after the handshake.
    return std::strstr(message.data(), "alert") != nullptr ? Failure::tls : Failure::cut;
  }

  CURL* handle;
  size_t room;
  std::string_view unsent{};
  size_t headSize = 0;
  bool headEnded = false;
  std::string body{};
  bool overflow = false;
  bool memoryIsShort = false;
  std::array<char, CURL_ERROR_SIZE> message{};
};

Client::Client(std::vector<std::string> endpoints, Options options)
    : endpoints_(std::move(endpoints)),
      options_(std::move(options)),
      transfer_(std::make_unique<Transfer>(options_.largestAnswer)) {
  Transfer& transfer = *transfer_;
  transfer.set(CURLOPT_PROTOCOLS_STR, "http,https");
  transfer.set(CURLOPT_HTTP_VERSION, static_cast<long>(CURL_HTTP_VERSION_1_1));
  transfer.set(CURLOPT_PROXY, "");
  transfer.set(CURLOPT_NETRC, static_cast<long>(CURL_NETRC_IGNORED));
  transfer.set(CURLOPT_FOLLOWLOCATION, 0L);
  transfer.set(CURLOPT_QUICK_EXIT, 1L);  // nobody waits for a name lookup that hangs
  transfer.set(CURLOPT_CONNECTTIMEOUT_MS, static_cast<long>(options_.connectTime.count()));
  transfer.set(CURLOPT_MAXFILESIZE_LARGE, static_cast<curl_off_t>(options_.largestAnswer));
  transfer.set(CURLOPT_READFUNCTION, Transfer::giveBody);
  transfer.set(CURLOPT_READDATA, static_cast<void*>(&transfer));
  transfer.set(CURLOPT_HEADERFUNCTION, Transfer::takeHead);
  transfer.set(CURLOPT_HEADERDATA, static_cast<void*>(&transfer));
  transfer.set(CURLOPT_WRITEFUNCTION, Transfer::takeBody);
  transfer.set(CURLOPT_WRITEDATA, static_cast<void*>(&transfer));
  transfer.set(CURLOPT_ERRORBUFFER, transfer.message.data());

  const Tls& tls = options_.tls;
  transfer.setText(CURLOPT_CAINFO, tls.authority);
  transfer.setText(CURLOPT_SSLCERT, tls.certificate);
  transfer.setText(CURLOPT_SSLKEY, tls.key);
  transfer.set(CURLOPT_KEYPASSWD, "");  // OpenSSL would ask for one on the terminal
  transfer.set(CURLOPT_SSL_VERIFYPEER, tls.verify ? 1L : 0L);
  transfer.set(CURLOPT_SSL_VERIFYHOST, tls.verify ? 2L : 0L);
  if (!options_.user.empty()) {
    transfer.set(CURLOPT_HTTPAUTH, static_cast<long>(CURLAUTH_BASIC));
    transfer.setText(CURLOPT_USERNAME, options_.user);
    transfer.setText(CURLOPT_PASSWORD, options_.password);
  }
}

Client::~Client() = default;

Answer Client::send(const Request& request, Deadline deadline) {
  Answer worst{Failure::unreachable};
  for (size_t tries = 0; tries < endpoints_.size(); ++tries) {
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - Clock::now());
    if (left.count() <= 0) break;
    Answer answer = ask(request, std::min(left, options_.requestTime));
    if (answer.failure == Failure::none) return answer;
    skipEndpoint();
    worst.failure = std::max(worst.failure, answer.failure);
    if (answer.failure >= Failure::timeout && !request.repeatable) break;
  }
  return worst;
}

void Client::skipEndpoint() { current_ = (current_ + 1) % endpoints_.size(); }

Answer Client::ask(const Request& request, std::chrono::milliseconds time) {
  Transfer& transfer = *transfer_;
  transfer.begin(request.body);
  const HeaderList headers = headersOf(request);
  transfer.set(CURLOPT_URL, (endpoints_[current_] + request.path).c_str());
  transfer.set(CURLOPT_HTTPHEADER, headers.get());
  transfer.set(CURLOPT_TIMEOUT_MS, static_cast<long>(time.count()));
  if (request.method == Method::get) {
    transfer.set(CURLOPT_HTTPGET, 1L);
  } else {
    transfer.set(CURLOPT_POST, 1L);
    transfer.set(CURLOPT_POSTFIELDSIZE_LARGE, static_cast<curl_off_t>(request.body.size()));
  }
  transfer.set(CURLOPT_CUSTOMREQUEST, kMethods[static_cast<size_t>(request.method)]);

  const CURLcode code = curl_easy_perform(transfer.handle);
  transfer.set(CURLOPT_HTTPHEADER, static_cast<curl_slist*>(nullptr));
  Answer answer{transfer.failureOf(code)};
  if (answer.failure == Failure::none) {
    curl_easy_getinfo(transfer.handle, CURLINFO_RESPONSE_CODE, &answer.status);
    answer.body = std::move(transfer.body);
  }
  return answer;
}

}  // namespace tn::http
