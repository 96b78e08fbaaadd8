// The hosts in a server name, and what else of it is percent-encoded.
#ifndef KNOB_TUNING_ENDPOINTS_H
#define KNOB_TUNING_ENDPOINTS_H

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tn {

class Endpoints {
 public:
  // "HOST[:PORT][,HOST2[:PORT2]...]" as "SCHEME://HOST:PORT" each; an IPv6 address stands in
  // brackets. Not there when one of them is no host and port.
  static std::optional<std::vector<std::string>> of(std::string_view scheme, std::string_view hosts,
                                                    std::string_view defaultPort);
};

// Not there when a percent sign is not followed by two hexadecimal digits.
std::optional<std::string> percentDecoded(std::string_view text);
// What is no letter, digit or one of ".-_~" becomes a percent sign and two digits.
std::string percentEncoded(std::string_view text);

// The text up to the separator; `text` keeps what comes after it, nothing if there is none.
std::string_view takeUntil(std::string_view& text, char separator);

// The value of a variable of the environment; empty when it is not set.
std::string variable(const char* name);

}  // namespace tn

#endif
