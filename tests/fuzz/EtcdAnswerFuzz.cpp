// An etcd cluster, or whatever listens in its place, that answers every request with any text.
// (With other answers than these the client asks again until its deadline.)
#include "fuzz/Fuzz.h"
#include "http/HttpDouble.h"
#include "tuning/TuningError.h"
#include "tuning/etcd/EtcdStore.h"

int LLVMFuzzerTestOneInput(const uint8_t *data, std::size_t size) {
  static std::string answer;
  static const HttpDouble server([](const std::string &) { return Reply{answer, true}; });
  static const std::string name = "etcd://" + server.address() + "/p";
  answer = httpAnswer(200, std::string(textOf(data, size)));
  try {
    tn::etcd::EtcdStore store(tn::etcd::Address::parse(name, "", ""));
    store.readAll();
  } catch (const tn::TuningError &) {
    // Said in a status.
  }
  return 0;
}
