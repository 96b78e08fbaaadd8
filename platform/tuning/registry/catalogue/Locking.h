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
            "fails. Use a low value for interactive applications and a high value for batch jobs; "
            "with 0 a statement fails immediately."),
    integer(87, "Lock Table Size", "65536", 1024, 16777216,
            "How many locks fit in memory at once. When the table is full, row locks are escalated "
            "to table locks, which reduces concurrency. Takes effect after a restart."),
    integer(99, "Lock Table Partitions", "16", 1, 256,
            "Parts of the lock table that can be searched at the same time. Increase it if threads "
            "wait for access to the lock table. Takes effect after a restart."),
    integer(24, "Lock Escalation Mark", "5000", 0, 2147483647,
            "Number of row locks on one table at which they are escalated to a table lock. A high "
            "value uses more memory, a low value reduces concurrency."),
    integer(22, "Deadlock Search Delay", "1000", 10, 60000,
            "Milliseconds to wait for a lock before deadlock detection starts. Low values cost CPU "
            "time on busy engines."),
    oneOf(23, "Deadlock Victim", "1", kDeadlockVictims,
          "Which of the transactions in a deadlock is rolled back: the one begun last, the one "
          "with the fewest changes, or the one of lowest priority."),
    boolean(42, "Fair Lock Queue", true, kOnOff,
            "Grants locks strictly in the order of the requests. If it is off, readers can be "
            "served before a waiting writer, which increases throughput but can starve writers."),
    boolean(
        43, "Lock Wait Report", false, kEnabledDisabled,
        "Writes a line to the message log for every wait longer than Deadlock Search Delay, with "
        "the statements of both sides. Intended for troubleshooting, not for permanent use."),
};

}  // namespace tn::registry::catalogue

#endif
