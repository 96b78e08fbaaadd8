// A member of a cluster under Patroni, or whatever listens in its place, that answers every request
// with any text.
#include "fuzz/Fuzz.h"
#include "http/HttpDouble.h"
#include "tuning/TuningError.h"
#include "tuning/patroni/RestApi.h"

int LLVMFuzzerTestOneInput(const uint8_t *data, std::size_t size) {
  static std::string answer;
  static const HttpDouble server([](const std::string &) { return Reply{answer, true}; });
  static const auto address = tn::patroni::Address::parse("patroni://" + server.address());
  answer = httpAnswer(200, std::string(textOf(data, size)));
  for (const bool configuration : {false, true}) {
    try {
      tn::patroni::RestApi api(address);
      if (configuration) {
        (void)api.configuration().change("work_mem", api.configuration().stored("work_mem"));
      } else {
        (void)api.members();
      }
    } catch (const tn::TuningError &) {
      // Said in a status.
    }
  }
  return 0;
}
