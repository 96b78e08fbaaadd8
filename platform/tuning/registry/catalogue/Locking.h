// Settings of locks: how many there can be, how long they are waited for, what ends a deadlock.
#ifndef KNOB_CATALOGUE_LOCKING_H
#define KNOB_CATALOGUE_LOCKING_H

#include <string_view>

#include "tuning/registry/catalogue/Entry.h"

namespace tn::registry::catalogue {

inline constexpr std::string_view kDeadlockVictims[] = {"youngest", "least work",
                                                        "lowest priority"};

inline constexpr CatalogueSetting kLocking[] = {
    integer(25, "Lock Wait Limit", "20", 0, 3600,
            "Seconds that a statement waits for a lock held by another transaction before it "
            "fails. Lower it where a quick error is better than a screen that hangs, raise it for "
            "nightly batch runs; 0 never waits."),
    integer(
        87, "Lock Table Size", "65536", 1024, 16777216,
        "How many locks fit in memory at once. When the table runs full, row locks are exchanged "
        "for table locks and more users block each other. Takes effect after a restart."),
    integer(99, "Lock Table Partitions", "16", 1, 256,
            "Parts of the lock table that can be searched at the same time. Double it when a "
            "profile shows threads queueing for the table itself. Takes effect after a restart."),
    integer(24, "Lock Escalation Mark", "5000", 0, 2147483647,
            "Row locks on one table after which a transaction is given a lock on the whole table "
            "instead. A high mark costs memory, a low one costs concurrency."),
    integer(22, "Deadlock Search Delay", "1000", 10, 60000,
            "Milliseconds for which a lock must have been waited for before a deadlock is "
            "suspected. Searching early costs processor time on busy engines."),
    oneOf(23, "Deadlock Victim", "1", kDeadlockVictims,
          "Which of the transactions in a deadlock is rolled back: the one begun last, the one "
          "with the fewest changes, or the one of lowest priority."),
    boolean(42, "Fair Lock Queue", true, kOnOff,
            "Grants locks strictly in the order of the requests. Off, readers may overtake a "
            "waiting writer, which raises throughput and can starve the writer."),
    boolean(
        43, "Lock Wait Report", false, kEnabledDisabled,
        "Writes a line to the message log for every wait longer than Deadlock Search Delay, with "
        "the statements of both sides. Meant for finding a culprit, not for everyday use."),
};

}  // namespace tn::registry::catalogue

#endif
