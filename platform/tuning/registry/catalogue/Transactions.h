// Settings of transactions: their isolation, their number, how long they may live.
#ifndef KNOB_CATALOGUE_TRANSACTIONS_H
#define KNOB_CATALOGUE_TRANSACTIONS_H

#include <string_view>

#include "tuning/registry/catalogue/Entry.h"

namespace tn::registry::catalogue {

inline constexpr std::string_view kIsolations[] = {"read committed", "snapshot", "serial"};

inline constexpr CatalogueSetting kTransactions[] = {
    oneOf(17, "Default Isolation", "0", kIsolations,
          "Isolation of transactions that do not ask for one. With serial, transactions behave as "
          "if they ran one after another, and applications must retry transactions that fail to "
          "commit."),
    integer(85, "Transaction Table Size", "4096", 128, 262144,
            "Maximum number of concurrent transactions, including those of maintenance tasks. When "
            "the table is full, new transactions wait. Takes effect after a restart."),
    integer(86, "Undo Area Size", "1024", 64, TN_MAX_DISK,
            "MB on disk for the earlier versions of changed rows. Long queries during heavy "
            "updates need a large area. Takes effect after a restart."),
    integer(46, "Undo Retention", "60", 0, 43200,
            "Minutes for which earlier row versions are kept although no transaction needs them "
            "any more, so that queries can look back at a past state."),
    integer(18, "Transaction Age Warning", "30", 0, 10080,
            "Minutes after which an open transaction is reported in the message log; 0 disables "
            "the warning."),
    integer(19, "Idle Transaction Limit", "1800", 0, 604800,
            "Seconds that a session may sit idle inside an open transaction before it is rolled "
            "back. Idle transactions hold locks and undo space; 0 means no limit."),
    integer(21, "Savepoint Limit", "1000", 0, 65535,
            "Savepoints that one transaction may set. Programs that reach the limit usually do not "
            "release their savepoints."),
    boolean(47, "Read-Only by Default", false, kYesNo,
            "Starts transactions as read-only unless they specify otherwise. Useful for reporting "
            "systems."),
    onClient(boolean(20, "Automatic Commit", true, kOnOff,
                     "Commits after each statement of a client that has not begun a transaction "
                     "itself. Turn it off for interactive users who need to roll back.")),
};

}  // namespace tn::registry::catalogue

#endif
