#include "diff/Side.h"

#include <algorithm>
#include <cctype>
#include <optional>
#include <string_view>
#include <strings.h>
#include <unistd.h>

#include "diff/Settings.h"

namespace diff {
namespace {

// Which variable takes the password for servers of a scheme.
struct Scheme {
  std::string_view name;
  const char* passwordVariable;
};
constexpr Scheme kSchemes[] = {{"postgresql", "PGPASSWORD"}, {"postgres", "PGPASSWORD"},
                               {"patroni", "PGPASSWORD"},    {"patronis", "PGPASSWORD"},
                               {"etcd", "ETCDCTL_PASSWORD"}, {"etcds", "ETCDCTL_PASSWORD"}};

// The part before the first colon, if it looks like one of an address, or "://" follows.
std::optional<std::string_view> schemeOf(std::string_view name) {
  const size_t colon = name.find(':');
  if (colon == name.npos) return std::nullopt;
  const std::string_view scheme = name.substr(0, colon);
  if (scheme.find('/') == scheme.npos && name.substr(colon).starts_with("://")) return scheme;
  const auto isPart = [](unsigned char c) { return std::isalnum(c) || c == '+' || c == '-'; };
  if (colon < 2 || !std::isalpha(static_cast<unsigned char>(name[0])) ||
      !std::ranges::all_of(scheme, isPart)) {
    return std::nullopt;
  }
  return scheme;
}

bool isThisMachine(const std::string& name) {
  char hostName[1025] = {};
  return strcasecmp(name.c_str(), "localhost") == 0 ||
         (gethostname(hostName, sizeof hostName - 1) == 0 &&
          strcasecmp(name.c_str(), hostName) == 0);
}

int hexDigit(char c) {
  constexpr std::string_view kDigits = "0123456789abcdef";
  const size_t at = kDigits.find(static_cast<char>(std::tolower(static_cast<unsigned char>(c))));
  return at == kDigits.npos ? -1 : static_cast<int>(at);
}

std::string percentDecoded(std::string_view text) {
  std::string decoded;
  for (size_t i = 0; i < text.size(); ++i) {
    const bool escape = text[i] == '%' && i + 2 < text.size() && hexDigit(text[i + 1]) >= 0 &&
                        hexDigit(text[i + 2]) >= 0;
    decoded +=
        escape ? static_cast<char>(hexDigit(text[i + 1]) * 16 + hexDigit(text[i + 2])) : text[i];
    if (escape) i += 2;
  }
  return decoded;
}

// Takes the password of "user:password@" out of the address.
std::optional<std::string> takePassword(std::string& address) {
  const size_t start = address.find("://");
  if (start == address.npos) return std::nullopt;
  const size_t login = start + 3;
  const size_t at = address.substr(0, address.find('/', login)).rfind('@');
  const size_t colon = address.find(':', login);
  if (at == address.npos || at < login || colon >= at) return std::nullopt;
  std::string password =
      percentDecoded(std::string_view(address).substr(colon + 1, at - colon - 1));
  address.erase(colon, at - colon);
  return password;
}

// Takes the options with such names out of the address, and gives the value of the last one, which
// is the one that counts.
std::optional<std::string> takeOptions(std::string& address,
                                       bool (*isWanted)(const std::string& name)) {
  std::optional<std::string> value;
  const size_t question = address.find('?');
  std::string rest = address.substr(0, question);
  for (size_t at = question; at < address.size();) {
    const size_t end = std::min(address.find('&', at + 1), address.size());
    const std::string option = address.substr(at + 1, end - at - 1);
    const size_t equals = std::min(option.find('='), option.size());
    if (isWanted(percentDecoded(option.substr(0, equals)))) {
      value = percentDecoded(option.substr(std::min(equals + 1, option.size())));
    } else {
      rest += (rest.size() == question ? '?' : '&') + option;
    }
    at = end;
  }
  address = rest;
  return value;
}

bool isPassword(const std::string& name) { return name == "password"; }

// Any of them in any letter case: "sslpassword" is one, too.
bool endsLikePassword(const std::string& name) {
  constexpr std::string_view kEnd = "password";
  return name.size() >= kEnd.size() &&
         strcasecmp(name.c_str() + name.size() - kEnd.size(), kEnd.data()) == 0;
}

// For people: also a mistyped address shows no password. One with a slash in it ends at an at sign
// behind that slash.
std::string withoutSecrets(std::string address) {
  takeOptions(address, endsLikePassword);
  const size_t login = address.find_first_not_of('/', address.find(':') + 1);
  const size_t colon = address.find(':', login);
  const size_t at = address.substr(0, address.find('?')).rfind('@');
  if (at != address.npos && colon < at) address.erase(colon, at - colon);
  return address;
}

}  // namespace

Side::Side(const std::string& name) : shown(name) {
  if (name.empty()) throw Trouble("a server or a file is named by an empty text");
  const auto scheme = schemeOf(name);
  if (!scheme && !isThisMachine(name)) {
    path = name;
    return;
  }
  server = name;
  if (scheme == "file" || scheme == "registry") return;  // and a path, whatever it looks like
  const auto* const known = std::ranges::find(kSchemes, scheme.value_or(""), &Scheme::name);
  if (known == std::end(kSchemes)) {
    server = shown = withoutSecrets(name);  // refused in any case
    return;
  }
  const auto beforeHost = takePassword(server);
  const auto option = takeOptions(server, isPassword);
  if (option || beforeHost) environment[known->passwordVariable] = option ? *option : *beforeHost;
  shown = withoutSecrets(server);
}

}  // namespace diff
