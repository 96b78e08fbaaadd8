// Whom the HTTP client asks when a server does not answer.
#include <gtest/gtest.h>

#include "http/HttpDouble.h"
#include "tuning/http/Client.h"

namespace {

using namespace tn::http;

TEST(Http, AsksAgainOnlyWhereThatIsSafe) {
  setenv("http_proxy", "http://127.0.0.1:1", 1);  // plays no part
  const HttpDouble closing([](const std::string& request) -> Reply {
    if (request.find("/first") == request.npos) return {"", true};
    return {httpAnswer(200, "first")};
  });
  const HttpDouble good(Reply{httpAnswer(200, "good")});
  const std::string http = "http://";
  Client client({http + local(freePort()), http + closing.address(), http + good.address()});
  const Deadline soon = Clock::now() + std::chrono::seconds(20);
  Request request{Method::post, "/first", "{}"};
  EXPECT_EQ("first", client.send(request, soon).body);
  request.path = "/";  // not again on a new connection either
  EXPECT_EQ(Failure::cut, client.send(request, soon).failure);
  EXPECT_EQ(2, closing.requests());
  EXPECT_EQ(0, good.requests());
  EXPECT_EQ("good", client.send(request, soon).body);
  client.skipEndpoint();
  request.repeatable = true;
  EXPECT_EQ("good", client.send(request, soon).body);
  EXPECT_EQ(3, closing.requests());
}

}  // namespace
