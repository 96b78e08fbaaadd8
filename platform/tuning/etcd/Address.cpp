#include "tuning/etcd/Address.h"

#include "tuning/TuningError.h"
#include "tuning/http/Endpoints.h"

namespace tn::etcd {
namespace {

using http::takeUntil;
using http::variable;

constexpr std::string_view kPlain = "etcd://";
constexpr std::string_view kSecure = "etcds://";
constexpr std::string_view kDefaultPort = "2379";

void require(bool condition) {
  if (!condition) throw TuningError(TN_ETCD_ADDRESS_INVALID);
}

std::string decoded(std::string_view text) {
  const auto plain = http::percentDecoded(text);
  require(plain.has_value());
  return *plain;
}

std::string prefixOf(std::string_view path) {
  require(path.find_first_of("?#") == std::string_view::npos);
  std::string prefix = '/' + decoded(path);
  require(prefix.find("//") == std::string::npos);
  if (prefix.ends_with('/')) prefix.pop_back();
  require(!prefix.empty());
  return prefix;
}

struct Login {
  std::string user{};
  std::string password{};
};

Login loginInName(std::string_view text) {
  Login login;
  login.user = decoded(takeUntil(text, ':'));
  login.password = decoded(text);
  return login;
}

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
  const bool secure = server.starts_with(kSecure);
  require(secure || server.starts_with(kPlain));
  server.remove_prefix(secure ? kSecure.size() : kPlain.size());

  Address address;
  std::string_view authority = takeUntil(server, '/');
  address.prefix = prefixOf(server);
  const Login environment = loginInEnvironment();
  Login named;
  if (const size_t at = authority.rfind('@'); at != std::string_view::npos) {
    named = loginInName(authority.substr(0, at));
    authority.remove_prefix(at + 1);
  }
  const auto endpoints = http::Endpoints::of(secure ? "https" : "http", authority, kDefaultPort);
  require(endpoints.has_value());
  address.endpoints = *endpoints;

  address.user = !user.empty() ? user : !named.user.empty() ? named.user : environment.user;
  // A password that stands beside a name belongs to that name alone.
  address.password = password;
  const bool alone = !variable("ETCDCTL_PASSWORD").empty();
  if (address.password.empty() && named.user == address.user) address.password = named.password;
  if (address.password.empty() && (alone || environment.user == address.user)) {
    address.password = environment.password;
  }
  if (secure) {
    address.tls = {variable("ETCDCTL_CACERT"), variable("ETCDCTL_CERT"), variable("ETCDCTL_KEY")};
  }
  return address;
}

}  // namespace tn::etcd
