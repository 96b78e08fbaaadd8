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
          "Role of this engine: none, source of replicas, or replica. A replica is read-only for "
          "users. Takes effect after a restart."),
    integer(140, "Replica Number", "1", 1, 65535,
            "Identifies this engine among all that replicate with each other; each engine needs a "
            "different number. Takes effect after a restart."),
    text(146, "Source Server", "localhost", 255,
         "Host whose changes this engine follows when its role is replica. Takes effect after a "
         "restart."),
    text(147, "Replication Account", "replicator", 63,
         "Account with which a replica connects to its source. It needs only the privilege to read "
         "the change log. Takes effect after a restart."),
    integer(144, "Replication Port", "5791", 1024, 65535,
            "TCP port on which a source waits for its replicas, separate from the one for clients "
            "so that a firewall can treat them differently. Takes effect after a restart."),
    integer(145, "Replica Slots", "4", 0, 64,
            "Replicas that can follow this source at the same time. Use one more than the number "
            "of replicas, so that a replica can be moved. Takes effect after a restart."),
    anyOf(128, "Replicated Changes", "0 1 3", kReplicatedChanges,
          "Changes that a source replicates. Deselect rights if a replica has its own users."),
    oneOf(108, "Replica Acknowledgement", "0", kAcknowledgements,
          "What a commit on the source waits for: nothing, or until one replica has received, "
          "written or applied the change. Each option is safer and slower than the previous one."),
    integer(109, "Replica Delay", "0", 0, 86400,
            "Seconds by which a replica is intentionally delayed. With a delay of an hour, a table "
            "that was dropped by mistake can be recovered from the replica."),
    integer(113, "Replica Lag Warning", "60", 0, 86400,
            "Lag in seconds, in addition to Replica Delay, at which the source logs a warning "
            "about a replica; 0 disables the warning."),
    integer(116, "Log Kept for Replicas", "2048", 0, TN_MAX_DISK,
            "MB of change log that a source keeps for disconnected replicas. A replica that needs "
            "older log has to be rebuilt from a backup."),
    boolean(119, "Reads on Replica", true, kAllowRefuse,
            "Whether users may query a replica. Refuse it on a standby where long queries would "
            "delay replication."),
};

}  // namespace tn::registry::catalogue

#endif
