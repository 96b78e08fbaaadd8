#include "tuning/etcd/Address.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <cstdlib>

#include "tuning/TuningError.h"

namespace tn::etcd {
namespace {

constexpr std::string_view kPlain = "etcd://";
constexpr std::string_view kSecure = "etcds://";
constexpr std::string_view kDefaultPort = "2379";

void require(bool condition) {
  if (!condition) throw TuningError(TN_ETCD_ADDRESS_INVALID);
}

// What comes before the separator; the text keeps what comes after it, nothing if there is none.
std::string_view takeUntil(std::string_view& text, char separator) {
  const size_t end = std::min(text.find(separator), text.size());
  const std::string_view taken = text.substr(0, end);
  text.remove_prefix(std::min(end + 1, text.size()));
  return taken;
}

std::string percentDecoded(std::string_view text) {
  std::string decoded;
  while (!text.empty()) {
    if (text.front() != '%') {
      decoded += text.front();
      text.remove_prefix(1);
      continue;
    }
    uint8_t byte = 0;
    const std::string_view digits = text.substr(1, 2);
    const char* const end = digits.data() + digits.size();
    const auto [rest, error] = std::from_chars(digits.data(), end, byte, 16);
    require(digits.size() == 2 && error == std::errc() && rest == end);
    decoded += static_cast<char>(byte);
    text.remove_prefix(3);
  }
  return decoded;
}

bool isAlphanumeric(char character) {
  return (character >= '0' && character <= '9') || (character >= 'a' && character <= 'z') ||
         (character >= 'A' && character <= 'Z');
}

bool consistsOf(std::string_view text, std::string_view more) {
  return !text.empty() && std::ranges::all_of(text, [&](char character) {
    return isAlphanumeric(character) || more.find(character) != std::string_view::npos;
  });
}

void checkHost(std::string_view host) {
  const bool bracketed = host.starts_with('[') && host.ends_with(']') && host.size() > 2;
  require(bracketed ? consistsOf(host.substr(1, host.size() - 2), ":.%") : consistsOf(host, ".-_"));
}

void checkPort(std::string_view port) {
  uint16_t number = 0;
  const auto [rest, error] = std::from_chars(port.data(), port.data() + port.size(), number);
  require(error == std::errc() && rest == port.data() + port.size() && number > 0);
}

std::string endpointOf(std::string_view scheme, std::string_view hostAndPort) {
  const size_t colon = hostAndPort.rfind(':');
  const bool hasPort = colon != std::string_view::npos && !hostAndPort.ends_with(']');
  const std::string_view host = hasPort ? hostAndPort.substr(0, colon) : hostAndPort;
  const std::string_view port = hasPort ? hostAndPort.substr(colon + 1) : kDefaultPort;
  checkHost(host);
  checkPort(port);
  return std::string(scheme) + std::string(host) + ':' + std::string(port);
}

std::string prefixOf(std::string_view path) {
  require(path.find_first_of("?#") == std::string_view::npos);
  std::string prefix = '/' + percentDecoded(path);
  require(prefix.find("//") == std::string::npos);
  if (prefix.ends_with('/')) prefix.pop_back();
  require(!prefix.empty());
  return prefix;
}

std::string variable(const char* name) {
  const char* const value = std::getenv(name);
  return value == nullptr ? "" : value;
}

struct Login {
  std::string user{};
  std::string password{};
};

Login loginInName(std::string_view text) {
  Login login;
  login.user = percentDecoded(takeUntil(text, ':'));
  login.password = percentDecoded(text);
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
  for (bool more = true; more;) {
    more = authority.find(',') != std::string_view::npos;
    address.endpoints.push_back(
        endpointOf(secure ? "https://" : "http://", takeUntil(authority, ',')));
  }

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
