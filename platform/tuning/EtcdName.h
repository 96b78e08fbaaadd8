// The name of a registry in etcd, taken apart:
//
//   etcd://[USER[:PASSWORD]@]HOST[:PORT][,HOST2[:PORT2]...]/PREFIX     etcds://... with TLS
//
// The port is 2379 unless given; an IPv6 address stands in brackets. User, password and prefix are
// percent-decoded. The one place that knows this form, for all who open such a registry and all who
// only check its name.
#ifndef KNOB_TUNING_ETCD_NAME_H
#define KNOB_TUNING_ETCD_NAME_H

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tn {

struct EtcdName {
  static constexpr std::string_view kPlain = "etcd://";
  static constexpr std::string_view kSecure = "etcds://";

  // Whether the text begins as such a name does.
  static bool begins(std::string_view text) {
    return text.starts_with(kPlain) || text.starts_with(kSecure);
  }
  // Not there for a text that is no such name.
  static std::optional<EtcdName> parse(std::string_view text);

  bool secure = false;
  std::vector<std::string> endpoints{};  // "http://HOST:PORT"
  std::string prefix{};                  // with the slash at its beginning, without one at its end
  std::string user{};                    // empty for none
  std::string password{};
};

}  // namespace tn

#endif
