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
          "Decides when a commit is reported to the client as done. With every commit, the engine "
          "writes the change log and waits for the disk separately for each transaction: nothing "
          "that was confirmed can be lost, and the number of commits per second is bound by the "
          "number of disk flushes per second. With grouped, transactions that commit within Group "
          "Commit Delay of each other share one flush; a confirmed commit is just as safe, each "
          "one takes slightly longer, and many sessions together get far more done. With relaxed, "
          "the commit is confirmed as soon as its record is in the log buffer, which is flushed at "
          "least once a second: a crash of the machine can then undo the confirmed transactions of "
          "that last second, although the database itself stays consistent. Three cases override "
          "the choice. A transaction that changes definitions or rights is always flushed alone. A "
          "transaction that waits for a replica (see Replica Acknowledgement) is never relaxed, "
          "because a replica must not be ahead of its source. A session may ask for a stricter "
          "level than the one set here, never for a weaker one. Choose relaxed only for data that "
          "can be loaded again, such as imports and measurements."),
    integer(37, "Group Commit Delay", "200", 0, 100000,
            "Microseconds that a commit waits for others to share its disk flush; used when Commit "
            "Durability is grouped. Raise it with the number of sessions, not with the speed of "
            "the disk."),
    text(67, "Change Log Folder", "/srv/engine/log", 255,
         "Where the change log is written. A volume of its own keeps commits fast and lets the "
         "data survive the loss of either volume. Takes effect after a restart."),
    boolean(
        73, "Mirrored Change Log", false, kOnOff,
        "Writes every log record to a second folder as well and goes on with the other copy when "
        "one fails. Unnecessary if the volume is redundant already. Takes effect after a restart."),
    text(183, "Change Log Mirror Folder", "/srv/logmirror", 255,
         "Folder of the second copy when Mirrored Change Log is on. On the same disk as the first "
         "it would protect against nothing. Takes effect after a restart."),
    integer(68, "Log Buffer Size", "4096", 64, 262144,
            "KB in which log records gather before they are written. Transactions that load many "
            "rows or large objects benefit from 16 MB and more. Takes effect after a restart."),
    integer(69, "Log File Size", "256", 8, 8192,
            "MB of one change log file; when it is full the next is begun. Frequent switches point "
            "to a size that is too small. Takes effect after a restart."),
    integer(38, "Checkpoint Spacing", "300", 10, 86400,
            "Longest time in seconds between two checkpoints. Wider spacing spreads the writing "
            "and prolongs recovery after a crash roughly in proportion."),
    integer(39, "Log Space Limit", "4096", 64, TN_MAX_DISK,
            "MB that the change log may occupy before a checkpoint is forced. Keep it at several "
            "times Log File Size."),
    boolean(40, "Log Compression", false, kEnabledDisabled,
            "Compresses row images in the change log. It trades processor time for disk traffic "
            "and helps most where replicas are fed over slow lines."),
    anyOf(41, "Extra Log Details", "0 1", kLogDetails,
          "What is logged about a transaction beyond its changes, for later inquiries. Statement "
          "texts and old row values can multiply the size of the log."),
};

}  // namespace tn::registry::catalogue

#endif
