// Settings of the log of changes, from which the engine recovers after a crash.
#ifndef KNOB_CATALOGUE_CHANGE_LOG_H
#define KNOB_CATALOGUE_CHANGE_LOG_H

#include <string_view>

#include "tuning/registry/catalogue/Entry.h"

namespace tn::registry::catalogue {

inline constexpr std::string_view kDurabilityLevels[] = {"every commit", "grouped", "relaxed"};
inline constexpr std::string_view kLogDetails[] = {"user name", "client address", "statement text",
                                                   "old row values"};

inline constexpr CatalogueSetting kChangeLog[] = {
    oneOf(36, "Commit Durability", "1", kDurabilityLevels,
          "Determines when a commit is reported to the client. With every commit, the engine "
          "writes the change log and waits for the disk separately for each transaction: nothing "
          "that was confirmed can be lost, and the number of commits per second is bound by the "
          "number of disk flushes per second. With grouped, transactions that commit within Group "
          "Commit Delay of each other share one flush; a confirmed commit is just as safe, each "
          "one takes slightly longer, and the total throughput of many sessions is much higher. "
          "With relaxed, the commit is confirmed as soon as its record is in the log buffer, which "
          "is flushed at least once a second: a crash of the machine can then undo the confirmed "
          "transactions of that last second, although the database itself stays consistent. Three "
          "cases override the choice. A transaction that changes definitions or rights is always "
          "flushed alone. A transaction that waits for a replica (see Replica Acknowledgement) is "
          "never relaxed, because a replica must not be ahead of its source. A session may ask for "
          "a stricter level than the one set here, never for a weaker one. Choose relaxed only for "
          "data that can be loaded again, such as imports and measurements."),
    integer(37, "Group Commit Delay", "200", 0, 100000,
            "Microseconds that a commit waits for others to share its disk flush; used when Commit "
            "Durability is grouped. Raise it with the number of sessions, not with the speed of "
            "the disk."),
    text(67, "Change Log Folder", "/srv/engine/log", 255,
         "Location of the change log. Use a separate volume: commits are faster, and the data "
         "survives the loss of either volume. Takes effect after a restart."),
    boolean(73, "Mirrored Change Log", false, kOnOff,
            "Writes every log record to a second folder as well and continues with the other copy "
            "if one fails. Not needed on redundant storage. Takes effect after a restart."),
    text(183, "Change Log Mirror Folder", "/srv/logmirror", 255,
         "Folder of the second copy when Mirrored Change Log is on. Use a different disk than for "
         "the change log. Takes effect after a restart."),
    integer(68, "Log Buffer Size", "4096", 64, 262144,
            "KB of memory for log records before they are written to disk. Transactions that load "
            "many rows or large objects benefit from 16 MB or more. Takes effect after a restart."),
    integer(69, "Log File Size", "256", 8, 8192,
            "Size in MB of a change log file. Increase it if log switches are frequent. Takes "
            "effect after a restart."),
    integer(38, "Checkpoint Spacing", "300", 10, 86400,
            "Longest time in seconds between two checkpoints. A longer interval spreads writes "
            "over time and makes crash recovery proportionally longer."),
    integer(39, "Log Space Limit", "4096", 64, TN_MAX_DISK,
            "MB that the change log may occupy before a checkpoint is forced. Keep it at several "
            "times Log File Size."),
    boolean(40, "Log Compression", false, kEnabledDisabled,
            "Compresses row images in the change log. This uses CPU time to reduce disk and "
            "network traffic, and helps most with replicas on slow networks."),
    anyOf(41, "Extra Log Details", "0 1", kLogDetails,
          "Additional information about a transaction that is written to the change log for "
          "auditing. Statement texts and old row values can multiply the size of the log."),
};

}  // namespace tn::registry::catalogue

#endif
