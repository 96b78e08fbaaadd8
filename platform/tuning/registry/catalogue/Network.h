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
            "TCP port for client connections. Every engine on a machine needs one of its own, and "
            "firewalls must let it through. Takes effect after a restart."),
    oneOf(132, "Address Family", "2", kAddressFamilies,
          "Versions of the internet protocol on which the engine listens. Restrict it where one of "
          "the two is not meant to be in use. Takes effect after a restart."),
    text(130, "Local Socket Folder", "/run/engine", 100,
         "Folder of the socket through which programs on the same machine connect without the "
         "network. Takes effect after a restart."),
    integer(125, "Connection Limit", "200", 1, 65535,
            "Sessions that can be connected at once. Each takes about 400 KB even when idle, so "
            "put a connection pool in front of thousands of users. Takes effect after a restart."),
    integer(126, "Administrator Connections", "3", 0, 50,
            "Part of Connection Limit that is kept free for administrators, who can thus still get "
            "in when everything else is taken. Takes effect after a restart."),
    integer(127, "Pending Connection Queue", "128", 8, 4096,
            "Connections that the operating system holds until the engine has time to accept them. "
            "Raise it if clients are turned away when all of them connect in the morning. Takes "
            "effect after a restart."),
    integer(93, "Sign-In Time Limit", "15", 1, 300,
            "Seconds within which a new connection must have signed in. Short limits keep port "
            "scanners from holding connections."),
    integer(89, "Idle Session Limit", "0", 0, 10080,
            "Minutes without a statement after which a session is closed; 0 leaves idle sessions "
            "alone."),
    integer(
        90, "Keep-Alive Interval", "60", 0, 7200,
        "Seconds of silence after which the engine tests whether the client is still there. Choose "
        "less than the idle time at which your firewalls drop connections; 0 does not test."),
    integer(91, "Send Buffer Size", "64", 4, 16384,
            "KB collected for a client before they are sent. Large results over distant lines "
            "travel faster with 256 and more."),
    boolean(92, "Message Compression", true, kAllowRefuse,
            "Whether clients may ask for compressed traffic. Refuse it when the processors, not "
            "the lines, are the bottleneck."),
    oneOf(94, "Transport Encryption", "1", kTransportEncryption,
          "Use of TLS on network connections; connections through the local socket are never "
          "encrypted. Required is the right choice outside a closed network."),
};

}  // namespace tn::registry::catalogue

#endif
