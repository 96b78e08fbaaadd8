// Settings of how clients reach the engine and what their connections may cost.
#ifndef KNOB_CATALOGUE_NETWORK_H
#define KNOB_CATALOGUE_NETWORK_H

#include <string_view>

#include "tuning/registry/catalogue/Entry.h"

namespace tn::registry::catalogue {

inline constexpr std::string_view kAddressFamilies[] = {"IPv4", "IPv6", "both"};
inline constexpr std::string_view kTransportEncryption[] = {"never", "on request", "required"};

inline constexpr CatalogueSetting kNetwork[] = {
    textOrNothing(74, "Listener Addresses", "", 1000,
                  "Network addresses on which the engine accepts connections, with commas between "
                  "them. If it is empty, only programs on the same machine can connect. Takes "
                  "effect after a restart."),
    integer(124, "Listener Port", "5790", 1024, 65535,
            "TCP port for client connections. Each engine on a machine needs a different port, and "
            "firewalls must permit it. Takes effect after a restart."),
    oneOf(132, "Address Family", "2", kAddressFamilies,
          "Versions of the internet protocol on which the engine listens. Restrict it if only one "
          "of them is in use. Takes effect after a restart."),
    text(130, "Local Socket Folder", "/run/engine", 100,
         "Folder of the socket through which programs on the same machine connect without the "
         "network. Takes effect after a restart."),
    integer(125, "Connection Limit", "200", 1, 65535,
            "Sessions that can be connected at once. Each takes about 400 KB even when idle, so "
            "use a connection pool for thousands of users. Takes effect after a restart."),
    integer(126, "Administrator Connections", "3", 0, 50,
            "Number of connections of Connection Limit that are reserved for administrators. Takes "
            "effect after a restart."),
    integer(127, "Pending Connection Queue", "128", 8, 4096,
            "Maximum number of connections waiting to be accepted. Increase it if connections are "
            "refused when many clients connect at the same time. Takes effect after a restart."),
    integer(93, "Sign-In Time Limit", "15", 1, 300,
            "Seconds in which a new connection must complete authentication. Low values prevent "
            "port scanners from occupying connections."),
    integer(89, "Idle Session Limit", "0", 0, 10080,
            "Minutes without a statement after which a session is closed; 0 means no limit."),
    integer(
        90, "Keep-Alive Interval", "60", 0, 7200,
        "Seconds of inactivity after which the engine checks whether the client is still "
        "connected. Use a value below the idle timeout of your firewalls; 0 disables the check."),
    integer(91, "Send Buffer Size", "64", 4, 16384,
            "KB buffered for a client before they are sent. Use 256 or more for large results over "
            "slow networks."),
    boolean(92, "Message Compression", true, kAllowRefuse,
            "Whether clients may ask for compressed traffic. Refuse it if the CPU, not the "
            "network, is the bottleneck."),
    oneOf(94, "Transport Encryption", "1", kTransportEncryption,
          "Use of TLS on network connections; connections through the local socket are never "
          "encrypted. Use required except in closed networks."),
};

}  // namespace tn::registry::catalogue

#endif
