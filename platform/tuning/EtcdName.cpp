#include "tuning/EtcdName.h"

#include "tuning/Endpoints.h"

namespace tn {
namespace {

constexpr std::string_view kDefaultPort = "2379";

// An at sign in the path is that of a password with a slash before it. Keys below "/settings/" of
// one registry would damage it if they were those of another.
std::optional<std::string> prefixOf(std::string_view path) {
  if (path.find_first_of("?#@") != path.npos) return std::nullopt;
  const auto decoded = percentDecoded(path);
  if (!decoded) return std::nullopt;
  std::string prefix = '/' + *decoded;
  if (prefix.find("//") != prefix.npos) return std::nullopt;
  if (!prefix.ends_with('/')) prefix += '/';
  if (prefix.find("/settings/", 1) != prefix.npos) return std::nullopt;
  prefix.pop_back();
  if (prefix.empty()) return std::nullopt;
  return prefix;
}

}  // namespace

std::optional<EtcdName> EtcdName::parse(std::string_view text) {
  if (!begins(text)) return std::nullopt;
  const bool secure = text.starts_with(kSecure);
  text.remove_prefix(secure ? kSecure.size() : kPlain.size());
  std::string_view hosts = takeUntil(text, '/');
  std::string_view login;
  if (const size_t at = hosts.rfind('@'); at != hosts.npos) {
    login = hosts.substr(0, at);
    hosts.remove_prefix(at + 1);
  }
  const auto endpoints = Endpoints::of(secure ? "https" : "http", hosts, kDefaultPort);
  const auto prefix = prefixOf(text);
  const auto user = percentDecoded(takeUntil(login, ':'));
  const auto password = percentDecoded(login);
  if (!endpoints || !prefix || !user || !password) return std::nullopt;
  return EtcdName{secure, *endpoints, *prefix, *user, *password};
}

}  // namespace tn
