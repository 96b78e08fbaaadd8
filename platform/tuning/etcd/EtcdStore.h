// A store that many machines share: keys of an etcd cluster. Below the prefix of the address lie
//
//   PREFIX/format          "knob-registry 1": tells a registry from other keys, with its layout
//   PREFIX/settings/ID     the value of the setting with this id, byte for byte
//
// Everything is read in one transaction that a majority of the servers agrees to, so what comes out
// is never older than a change that was reported as stored. Every change is a transaction that
// takes effect only on what was read: of two machines that change a setting at the same time the
// later one wins, and no change wins over one that it has not seen.
//
// When the answer to a change is lost the change may have been carried out, and may still be later.
// Then the same transaction is sent again, which at most one of the two survives. If it no longer
// applies, the key's history tells whether the first one did: only then is it certain that our
// value is not written over another machine's later one.
#ifndef KNOB_ETCD_ETCD_STORE_H
#define KNOB_ETCD_ETCD_STORE_H

#include <cstdint>
#include <map>
#include <optional>
#include <string>

#include "tuning/etcd/Gateway.h"
#include "tuning/registry/Store.h"

namespace tn::etcd {

class EtcdStore final : public registry::Store {
 public:
  // Connects to nothing yet.
  explicit EtcdStore(const Address& address);

  // Both take ten seconds at most, and throw TuningError with a TN_ETCD_... or TN_REGISTRY_...
  // status or TN_SERVER_UNREACHABLE.
  std::map<int32_t, std::string> readAll() override;
  // TN_ETCD_OUTCOME_UNKNOWN when it cannot be found out whether the value was stored.
  void write(int32_t settingId, const std::string& value) override;

 private:
  struct Kept {
    std::string value{};
    int64_t revision = 0;  // of the last change of the key
    bool isFirst = false;  // since the key came, or came again, into being
  };
  struct Contents {
    bool exists = false;  // has a format
    std::map<int32_t, Kept> settings{};
  };

  Contents contentsOf(const http::Json& ranges) const;
  http::Json readEverything() const;
  http::Json changeOf(int32_t settingId, const std::string& value) const;
  void change(int32_t settingId, const std::string& value, http::Deadline deadline, bool& unknown);
  bool wasStored(int32_t settingId, const std::string& value, int64_t since,
                 http::Deadline deadline);
  std::optional<Kept> keptAt(int32_t settingId, int64_t revision, http::Deadline deadline);
  static Kept keptIn(const http::Json& entry);
  std::string keyOf(int32_t settingId) const;
  int64_t revisionOf(int32_t settingId) const;

  std::string formatKey_;
  std::string settingsKey_;  // what the keys of all settings begin with
  Gateway gateway_;
  std::optional<Contents> seen_{};  // as read last
};

}  // namespace tn::etcd

#endif
