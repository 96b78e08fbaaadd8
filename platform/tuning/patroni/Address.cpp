#include "tuning/patroni/Address.h"

#include <algorithm>
#include <iterator>

#include "tuning/Endpoints.h"
#include "tuning/TuningError.h"
#include "tuning/postgresql/ValueText.h"

namespace tn::patroni {
namespace {

constexpr std::string_view kPlain = "patroni://";
constexpr std::string_view kSecure = "patronis://";
constexpr std::string_view kDefaultPort = "8008";

constexpr std::string_view kNamesServer[] = {"host", "hostaddr", "port", "target_session_attrs"};

void require(bool condition) {
  if (!condition) throw TuningError(TN_PATRONI_ADDRESS_INVALID);
}

void readOptions(Address& address) {
  address.hasConnectTimeout = !variable("PGCONNECT_TIMEOUT").empty();
  std::string_view rest = address.options;
  while (!rest.empty()) {
    std::string_view option = takeUntil(rest, '&');
    const auto name = percentDecoded(takeUntil(option, '='));
    require(name && std::ranges::find(kNamesServer, *name) == std::end(kNamesServer));
    if (*name == "connect_timeout") address.hasConnectTimeout = true;
  }
}

}  // namespace

Address Address::parse(std::string_view server) {
  const bool secure = server.starts_with(kSecure);
  require(secure || server.starts_with(kPlain));
  server.remove_prefix(secure ? kSecure.size() : kPlain.size());

  Address address;
  std::string_view options = server;
  std::string_view path = takeUntil(options, '?');
  std::string_view hosts = takeUntil(path, '/');
  address.options = options;
  readOptions(address);
  if (!path.empty()) address.database = '/' + std::string(path);
  if (const size_t at = hosts.rfind('@'); at != std::string_view::npos) {
    address.login = hosts.substr(0, at + 1);
    hosts.remove_prefix(at + 1);
  }
  const auto endpoints = Endpoints::of(secure ? "https" : "http", hosts, kDefaultPort);
  require(endpoints.has_value());
  address.endpoints = *endpoints;

  address.apiUser = variable("PATRONI_RESTAPI_USERNAME");
  address.apiPassword = variable("PATRONI_RESTAPI_PASSWORD");
  if (secure) {
    const auto insecure = postgresql::ValueText::boolean(variable("PATRONI_CTL_INSECURE"));
    address.tls = {variable("PATRONI_CTL_CACERT"), variable("PATRONI_CTL_CERTFILE"),
                   variable("PATRONI_CTL_KEYFILE"), !insecure.value_or(false)};
  }
  return address;
}

// Of two options with one name libpq takes the later. An empty address keeps it from taking the one
// of the environment.
std::string Address::serverUri(const std::string& host, int port, std::string_view extra) const {
  std::string uri = "postgresql://" + login + (database.empty() ? "/" : database) + '?' + options;
  if (!options.empty()) uri += '&';
  return uri + "host=" + percentEncoded(host) + "&hostaddr=&port=" + std::to_string(port) +
         "&target_session_attrs=any" + std::string(extra);
}

}  // namespace tn::patroni
