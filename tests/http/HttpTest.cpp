// The HTTP client on servers that answer as no good server does, where the engines cannot tell
// what it makes of them.
#include <gtest/gtest.h>

#include "http/HttpDouble.h"
#include "tuning/http/Client.h"

namespace {

using namespace tn::http;
using std::chrono::milliseconds;

constexpr std::size_t kLargest = 100'000;
const Reply kGood{httpAnswer(200, "good")};

Client clientOf(std::vector<std::string> endpoints, milliseconds requestTime = milliseconds(300)) {
  return Client(std::move(endpoints), {.requestTime = requestTime, .largestAnswer = kLargest});
}

Deadline soon() { return Clock::now() + std::chrono::seconds(20); }

std::string refusing() { return "http://" + local(freePort()); }

std::string endpoint(const HttpDouble& server) { return "http://" + server.address(); }

TEST(Http, TellsFailuresApart) {
  const std::string head = "HTTP/1.1 200 OK\r\n";
  const std::string large(kLargest, 'x');
  const std::pair<Reply, Failure> cases[] = {
      {{httpAnswer(200, large)}, Failure::none},
      {{httpAnswer(200, large + "x")}, Failure::tooLarge},
      {{head + "\r\n" + large + "x"}, Failure::tooLarge},
      {{head + "A: " + large + "\r\nB: " + large + "\r\nC: " + large + "\r\n"}, Failure::tooLarge},
      {{head + "Content-Length: 9\r\n\r\n1234"}, Failure::timeout},
      {{head + "Content-Length: 9\r\n\r\n1234", true}, Failure::cut},
      {{head, true}, Failure::cut},
      {{"220 mail.example ESMTP\r\n", true}, Failure::cut},
  };
  for (const auto& [reply, failure] : cases) {
    SCOPED_TRACE(reply.bytes.substr(0, 60));
    const HttpDouble server(reply);
    const Answer answer = clientOf({endpoint(server)}).send({Method::post, "/", "{}"}, soon());
    EXPECT_EQ(failure, answer.failure);
    EXPECT_EQ(failure == Failure::none ? kLargest : 0, answer.body.size());
    EXPECT_EQ(1U, server.requests().size());
  }
  const HttpDouble plain(kGood);
  Client trusting({"https://" + plain.address()}, {.tls = {.authority = "/nonexistent.pem"}});
  EXPECT_EQ(Failure::tls, trusting.send({Method::get, "/"}, soon()).failure);
}

TEST(Http, AsksAgainOnlyWhereThatIsSafe) {
  const HttpDouble closing(
      HttpDouble::Table{{"/first", {httpAnswer(200, "first")}}, {"", {"", true}}});
  const HttpDouble good(kGood);
  Client client = clientOf({refusing(), endpoint(closing), endpoint(good)});
  Request request{Method::post, "/first", "{}"};
  EXPECT_EQ("first", client.send(request, soon()).body);
  request.path = "/";  // not again on a new connection either
  EXPECT_EQ(Failure::cut, client.send(request, soon()).failure);
  EXPECT_EQ(2U, closing.requests().size());
  EXPECT_EQ(0U, good.requests().size());
  EXPECT_EQ("good", client.send(request, soon()).body);  // the next one, and it stays with it
  EXPECT_EQ("good", client.send(request, soon()).body);
  client.skipEndpoint();
  request.repeatable = true;
  EXPECT_EQ("good", client.send(request, soon()).body);
  EXPECT_EQ(3U, closing.requests().size());
  EXPECT_EQ(Failure::unreachable, client.send(request, Clock::now()).failure);
}

TEST(Http, KeepsToTheDeadlineOfTheWholeCall) {
  const HttpDouble silent(Reply{""});
  Client client = clientOf({endpoint(silent), endpoint(silent)}, std::chrono::minutes(5));
  Request request{Method::get, "/"};
  request.repeatable = true;
  EXPECT_EQ(Failure::timeout, client.send(request, Clock::now() + milliseconds(200)).failure);
  EXPECT_EQ(1U, silent.requests().size());
}

}  // namespace
