// Settings of transactions: their isolation, their number, how long they may live.
#ifndef KNOB_CATALOGUE_TRANSACTIONS_H
#define KNOB_CATALOGUE_TRANSACTIONS_H

#include <string_view>

#include "tuning/registry/catalogue/Entry.h"

namespace tn::registry::catalogue {

inline constexpr std::string_view kIsolations[] = {"read committed", "snapshot", "serial"};

inline constexpr CatalogueSetting kTransactions[] = {
    oneOf(17, "Default Isolation", "0", kIsolations,
          "Isolation of transactions that do not ask for one. Serial gives results as if they had "
          "run one after another, and programs must be ready to repeat a refused commit."),
    integer(
        85, "Transaction Table Size", "4096", 128, 262144,
        "Room for this many transactions at the same time, those of maintenance tasks included. "
        "When the table is full new ones have to wait. Takes effect after a restart."),
    integer(86, "Undo Area Size", "1024", 64, TN_MAX_DISK,
            "MB on disk for the earlier versions of changed rows. Long reports beside heavy "
            "updating need a large area. Takes effect after a restart."),
    integer(46, "Undo Retention", "60", 0, 43200,
            "Minutes for which earlier row versions are kept although no transaction needs them "
            "any more, so that queries can look back at a past state."),
    integer(18, "Transaction Age Warning", "30", 0, 10080,
            "Names a transaction in the message log when it has been open for this many minutes. "
            "With 0 no one is warned."),
    integer(19, "Idle Transaction Limit", "1800", 0, 604800,
            "Seconds that a session may sit idle inside an open transaction before it is rolled "
            "back. Forgotten transactions hold locks and undo space; 0 lets them live."),
    integer(21, "Savepoint Limit", "1000", 0, 65535,
            "Savepoints that one transaction may set. Generated programs that run into it usually "
            "forget to release theirs."),
    boolean(47, "Read-Only by Default", false, kYesNo,
            "Starts every transaction as a reading one unless it declares otherwise. Useful on "
            "engines that serve reports only."),
    onClient(boolean(20, "Automatic Commit", true, kOnOff,
                     "Commits after each statement of a client that has not begun a transaction "
                     "itself. Interactive users who want a chance to roll back turn it off.")),
};

}  // namespace tn::registry::catalogue

#endif
