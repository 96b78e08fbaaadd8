// Settings of copies that are kept up to date on other servers.
#ifndef KNOB_CATALOGUE_REPLICATION_H
#define KNOB_CATALOGUE_REPLICATION_H

#include <string_view>

#include "tuning/registry/catalogue/Entry.h"

namespace tn::registry::catalogue {

inline constexpr std::string_view kReplicationRoles[] = {"none", "source", "replica"};
inline constexpr std::string_view kAcknowledgements[] = {"none", "received", "written", "applied"};
inline constexpr std::string_view kReplicatedChanges[] = {"rows", "definitions", "rights",
                                                          "sequences"};

inline constexpr CatalogueSetting kReplication[] = {
    oneOf(138, "Replication Role", "0", kReplicationRoles,
          "Part that this engine plays: it stands alone, feeds replicas, or follows a source. A "
          "replica refuses changes by users. Takes effect after a restart."),
    integer(140, "Replica Number", "1", 1, 65535,
            "Identifies this engine among all that replicate with each other; two with the same "
            "number shut each other out. Takes effect after a restart."),
    text(146, "Source Server", "localhost", 255,
         "Host whose changes this engine follows when its role is replica. Takes effect after a "
         "restart."),
    text(147, "Replication Account", "replicator", 63,
         "Account with which a replica signs in at its source. It needs the right to read the "
         "change log and no other. Takes effect after a restart."),
    integer(144, "Replication Port", "5791", 1024, 65535,
            "TCP port on which a source waits for its replicas, separate from the one for clients "
            "so that a firewall can treat them differently. Takes effect after a restart."),
    integer(145, "Replica Slots", "4", 0, 64,
            "Replicas that can follow this source at the same time. Reserve one more than you "
            "have, for moving a replica to a new machine. Takes effect after a restart."),
    anyOf(128, "Replicated Changes", "0 1 3", kReplicatedChanges,
          "What a source passes on. Leave out rights if a replica is to have users of its own."),
    oneOf(108, "Replica Acknowledgement", "0", kAcknowledgements,
          "What a commit on the source waits for: nothing, or until one replica has received, "
          "written or applied the change. Each step is safer and slower than the one before."),
    integer(109, "Replica Delay", "0", 0, 86400,
            "Seconds that a replica stays behind on purpose. A delay of an hour leaves time to "
            "rescue a table that was dropped by mistake on the source."),
    integer(113, "Replica Lag Warning", "60", 0, 86400,
            "A replica that is this many seconds late, beyond Replica Delay, is mentioned in the "
            "message log of its source; 0 mentions none."),
    integer(116, "Log Kept for Replicas", "2048", 0, TN_MAX_DISK,
            "MB of change log that a source keeps for replicas that are out of reach. One that "
            "stays away longer has to be set up again from a backup."),
    boolean(119, "Reads on Replica", true, kAllowRefuse,
            "Whether users may query a replica. Refuse it on a pure standby, where long queries "
            "would hold up the changes."),
};

}  // namespace tn::registry::catalogue

#endif
