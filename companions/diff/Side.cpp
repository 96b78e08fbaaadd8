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

// The part before the first colon, if it looks like one of an address.
std::optional<std::string_view> schemeOf(std::string_view name) {
  const size_t colon = name.find(':');
  const auto isPart = [](unsigned char c) { return std::isalnum(c) || c == '+' || c == '-'; };
  if (colon == name.npos || colon < 2 || !std::isalpha(static_cast<unsigned char>(name[0])) ||
      !std::all_of(name.begin(), name.begin() + static_cast<std::ptrdiff_t>(colon), isPart)) {
    return std::nullopt;
  }
  return name.substr(0, colon);
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
  const size_t at = address.substr(0, address.find_first_of("/?#", login)).rfind('@');
  const size_t colon = address.find(':', login);
  if (at == address.npos || at < login || colon >= at) return std::nullopt;
  std::string password =
      percentDecoded(std::string_view(address).substr(colon + 1, at - colon - 1));
  address.erase(colon, at - colon);
  return password;
}

// The same for a "password=" among the options of an address.
std::optional<std::string> takePasswordOption(std::string& address) {
  constexpr std::string_view kOption = "password=";
  const size_t question = address.find('?');
  for (size_t at = question; at < address.size(); at = address.find('&', at + 1)) {
    if (address.compare(at + 1, kOption.size(), kOption) != 0) continue;
    const size_t value = at + 1 + kOption.size();
    const size_t end = std::min(address.find('&', value), address.size());
    std::string password = percentDecoded(std::string_view(address).substr(value, end - value));
    address.erase(at + 1, std::min(end + 1, address.size()) - at - 1);
    if (address.ends_with('?') || address.ends_with('&')) address.pop_back();
    return password;
  }
  return std::nullopt;
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
  const auto* const known = std::ranges::find(kSchemes, scheme.value_or(""), &Scheme::name);
  if (known != std::end(kSchemes)) {
    const auto beforeHost = takePassword(server);
    const auto option = takePasswordOption(server);
    if (option || beforeHost) environment[known->passwordVariable] = option ? *option : *beforeHost;
  }
  shown = server;
}

}  // namespace diff
