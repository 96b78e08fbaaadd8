// An etcd cluster, or whatever listens in its place, that answers every request with any text.
// (With other answers than these the client asks again until its deadline.)
#include "fuzz/Fuzz.h"
#include "http/HttpDouble.h"
#include "support/StatusOf.h"
#include "tuning/etcd/EtcdStore.h"

void tryInput(const std::string& text) {
  static std::string answer;
  static const HttpDouble server([](const std::string&) { return Reply{answer, true}; });
  static const std::string name = "etcd://" + server.address() + "/p";
  answer = httpAnswer(200, text);
  statusOf([] { tn::etcd::EtcdStore(tn::etcd::Address::parse(name, "", "")).readAll(); });
}
