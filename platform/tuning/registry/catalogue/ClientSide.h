// Settings that client programs on this machine read.
#ifndef KNOB_CATALOGUE_CLIENT_SIDE_H
#define KNOB_CATALOGUE_CLIENT_SIDE_H

#include <string_view>

#include "tuning/registry/catalogue/Entry.h"

namespace tn::registry::catalogue {

inline constexpr std::string_view kCertificateChecks[] = {"none", "issuer", "issuer and name"};

inline constexpr CatalogueSetting kClientSide[] = {
    onClient(text(137, "Preferred Server", "localhost", 255,
                  "Host to which client programs connect when their user names none. Programs that "
                  "are already running keep their connection. Takes effect after a restart.")),
    onClient(integer(95, "Connect Time Limit", "10", 1, 600,
                     "Seconds after which an attempt of a client to connect times out.")),
    onClient(integer(96, "Connect Attempts", "3", 1, 100,
                     "Number of attempts to connect before a client reports an error; the pause "
                     "between attempts doubles each time, starting at half a second.")),
    onClient(boolean(
        107, "Switch to Standby", false, kYesNo,
        "Reconnects to a replica when the preferred server is not available. Open transactions are "
        "lost, so choose yes only for programs that can retry their transactions.")),
    onClient(integer(136, "Client Connection Pool", "8", 0, 256,
                     "Open connections that a client library keeps for reuse within one program; 0 "
                     "opens a new one each time. Takes effect after a restart.")),
    onClient(
        integer(134, "Client Row Cache Size", "1024", 0, TN_MAX_MEMORY,
                "KB in which a client library holds rows that were fetched ahead. Increase it for "
                "programs that scroll through long result lists. Takes effect after a restart.")),
    onClient(integer(97, "Fetch Batch Size", "100", 1, 100000,
                     "Rows requested from the server in one go. Use several thousand for networks "
                     "with high latency; the default is sufficient on the same machine.")),
    onClient(boolean(98, "Client Compression", false, kOnOff,
                     "Asks the server to compress the traffic. Useful on networks slower than "
                     "about 50 Mbit per second.")),
    onClient(
        oneOf(101, "Server Certificate Check", "2", kCertificateChecks,
              "How a client verifies the server certificate: not at all, by its issuer, or by its "
              "issuer and host name. Only the last protects against man-in-the-middle attacks.")),
    onClient(text(
        102, "Application Label", "unnamed", 63,
        "Name shown in session lists and in the message log for programs that do not set one.")),
    onClient(text(133, "Client Work Folder", "/var/tmp/engine-client", 255,
                  "Where client libraries put trace files and large results. It must be writable "
                  "for everyone who runs a client program. Takes effect after a restart.")),
    onClient(boolean(104, "Client Trace", false, kOnOff,
                     "Writes every call of the client library to a file in Client Work Folder. "
                     "Such files grow quickly and may hold confidential values.")),
    onClient(integer(106, "Client Time Zone Offset", "0", -720, 840,
                     "Minutes by which the local time of clients is ahead of universal time, for "
                     "programs that do not set it. The offset is negative west of Greenwich.")),
    unavailable(onClient(boolean(105, "Single Sign-On", false, kEnabledDisabled,
                                 "Passes the identity of the desktop session to the server, so "
                                 "that users do not have to enter a password."))),
};

}  // namespace tn::registry::catalogue

#endif
