// A member of a cluster under Patroni, or whatever listens in its place, that answers every request
// with any text.
#include "fuzz/Fuzz.h"
#include "http/HttpDouble.h"
#include "support/StatusOf.h"
#include "tuning/patroni/RestApi.h"

void tryInput(const std::string& text) {
  static std::string answer;
  static const HttpDouble server([](const std::string&) { return Reply{answer, true}; });
  static const auto address = tn::patroni::Address::parse("patroni://" + server.address());
  answer = httpAnswer(200, text);
  statusOf([] { tn::patroni::RestApi(address).members(); });
  statusOf([] {
    tn::patroni::RestApi api(address);
    (void)api.configuration().change("work_mem", api.configuration().stored("work_mem"));
  });
}
