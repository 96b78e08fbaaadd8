#include "tuning/etcd/Address.h"

#include "tuning/Endpoints.h"
#include "tuning/EtcdName.h"
#include "tuning/TuningError.h"

namespace tn::etcd {
namespace {

struct Login {
  std::string user{};
  std::string password{};
};

// As etcdctl reads them: beside a password of its own the user variable holds the name alone.
Login loginInEnvironment() {
  Login login{variable("ETCDCTL_USER"), variable("ETCDCTL_PASSWORD")};
  if (login.password.empty()) {
    std::string_view text = login.user;
    const std::string name(takeUntil(text, ':'));
    login = {name, std::string(text)};
  }
  return login;
}

}  // namespace

Address Address::parse(std::string_view server, std::string_view user, std::string_view password) {
  const auto named = EtcdName::parse(server);
  if (!named) throw TuningError(TN_ETCD_ADDRESS_INVALID);
  const Login environment = loginInEnvironment();

  Address address;
  address.endpoints = named->endpoints;
  address.prefix = named->prefix;
  address.user = !user.empty() ? user : !named->user.empty() ? named->user : environment.user;
  // A password that stands beside a name belongs to that name alone.
  address.password = password;
  const bool alone = !variable("ETCDCTL_PASSWORD").empty();
  if (address.password.empty() && named->user == address.user) address.password = named->password;
  if (address.password.empty() && (alone || environment.user == address.user)) {
    address.password = environment.password;
  }
  if (named->secure) {
    address.tls = {variable("ETCDCTL_CACERT"), variable("ETCDCTL_CERT"), variable("ETCDCTL_KEY")};
  }
  return address;
}

}  // namespace tn::etcd
