// Which etcd is meant, which keys in it, and as whom: what the name of a registry says
// (EtcdName.h). Where a user or password is given neither in the name nor beside it, and for the
// files of TLS, the variables of etcdctl hold: ETCDCTL_USER (NAME or NAME:PASSWORD),
// ETCDCTL_PASSWORD, ETCDCTL_CACERT, ETCDCTL_CERT, ETCDCTL_KEY.
#ifndef KNOB_ETCD_ADDRESS_H
#define KNOB_ETCD_ADDRESS_H

#include <string>
#include <string_view>
#include <vector>

#include "tuning/http/Client.h"

namespace tn::etcd {

struct Address {
  // The user and password given beside the name win; each may be empty. Throws TuningError with
  // TN_ETCD_ADDRESS_INVALID.
  static Address parse(std::string_view server, std::string_view user, std::string_view password);

  std::vector<std::string> endpoints{};  // "http://HOST:PORT"
  std::string prefix{};                  // with the slash at its beginning, without one at its end
  std::string user{};                    // empty for none
  std::string password{};
  http::Tls tls{};
};

}  // namespace tn::etcd

#endif
