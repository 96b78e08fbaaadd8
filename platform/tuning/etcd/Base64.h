// Bytes as etcd's JSON carries keys and values: the standard alphabet, padded.
#ifndef KNOB_ETCD_BASE64_H
#define KNOB_ETCD_BASE64_H

#include <optional>
#include <string>
#include <string_view>

namespace tn::etcd {

std::string toBase64(std::string_view bytes);
// Nothing for text that is not base64.
std::optional<std::string> fromBase64(std::string_view text);

}  // namespace tn::etcd

#endif
