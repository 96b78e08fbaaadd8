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
                     "Seconds after which a client gives up an attempt to connect.")),
    onClient(integer(96, "Connect Attempts", "3", 1, 100,
                     "How often a client tries to connect before it reports failure; the pause "
                     "between attempts doubles each time, starting at half a second.")),
    onClient(
        boolean(107, "Switch to Standby", false, kYesNo,
                "Reconnects to a replica when the preferred server is gone. Open transactions are "
                "lost in any case, so choose yes only for programs that can repeat their work.")),
    onClient(integer(136, "Client Connection Pool", "8", 0, 256,
                     "Open connections that a client library keeps for reuse within one program; 0 "
                     "opens a new one each time. Takes effect after a restart.")),
    onClient(integer(
        134, "Client Row Cache Size", "1024", 0, TN_MAX_MEMORY,
        "KB in which a client library holds rows that were fetched ahead. Enlarge it for programs "
        "that scroll back and forth in long lists. Takes effect after a restart.")),
    onClient(integer(97, "Fetch Batch Size", "100", 1, 100000,
                     "Rows requested from the server in one go. Over lines with a long delay, "
                     "thousands are appropriate; on the same machine the default is ample.")),
    onClient(boolean(98, "Client Compression", false, kOnOff,
                     "Asks the server to compress the traffic. Worth it on lines below about 50 "
                     "Mbit per second.")),
    onClient(oneOf(101, "Server Certificate Check", "2", kCertificateChecks,
                   "How far a client trusts the certificate it is shown: blindly, if a known "
                   "issuer signed it, or if it is also made out to the host that was asked for. "
                   "Anything but the last leaves room for impostors.")),
    onClient(text(102, "Application Label", "unnamed", 63,
                  "Name under which programs that do not introduce themselves appear in session "
                  "lists and in the message log.")),
    onClient(text(133, "Client Work Folder", "/var/tmp/engine-client", 255,
                  "Where client libraries put trace files and large results. It must be writable "
                  "for everyone who runs a client program. Takes effect after a restart.")),
    onClient(boolean(104, "Client Trace", false, kOnOff,
                     "Writes every call of the client library to a file in Client Work Folder. "
                     "Such files grow quickly and may hold confidential values.")),
    onClient(integer(
        106, "Client Time Zone Offset", "0", -720, 840,
        "Minutes by which the local time of clients is ahead of universal time, for programs that "
        "cannot tell it themselves. West of Greenwich the number is negative.")),
    unavailable(onClient(boolean(105, "Single Sign-On", false, kEnabledDisabled,
                                 "Hands the identity of the desktop session to the server, so that "
                                 "users need not enter a password."))),
};

}  // namespace tn::registry::catalogue

#endif
