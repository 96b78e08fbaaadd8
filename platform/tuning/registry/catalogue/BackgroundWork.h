// Settings of the work that the engine does on its own account while users are served.
#ifndef KNOB_CATALOGUE_BACKGROUND_WORK_H
#define KNOB_CATALOGUE_BACKGROUND_WORK_H

#include <string_view>

#include "tuning/registry/catalogue/Entry.h"

namespace tn::registry::catalogue {

inline constexpr std::string_view kWeekdays[] = {"Monday", "Tuesday",  "Wednesday", "Thursday",
                                                 "Friday", "Saturday", "Sunday"};

inline constexpr CatalogueSetting kBackgroundWork[] = {
    integer(110, "Maintenance Threads", "2", 1, 32,
            "Number of threads that gather statistics, reclaim space and rebuild indexes. One for "
            "every eight cores is usually enough. Takes effect after a restart."),
    integer(111, "Page Writer Threads", "2", 1, 64,
            "Threads that write changed pages to disk ahead of checkpoints. Increase it if "
            "statements have to write pages themselves. Takes effect after a restart."),
    integer(112, "Task Queue Length", "256", 16, 8192,
            "Maintenance tasks that can wait for a thread. If the queue is full, a task is skipped "
            "until the next maintenance cycle. Takes effect after a restart."),
    text(114, "Maintenance Plan File", "maintenance.plan", 255,
         "File with the schedule of user-defined recurring tasks, relative to the data folder. A "
         "missing file means an empty schedule. Takes effect after a restart."),
    text(71, "Quiet Hours", "22:00-05:00", 11,
         "Time of day, from and to in local time, in which Maintenance Throttle does not limit "
         "maintenance."),
    anyOf(78, "Maintenance Days", "0 1 2 3 4 5 6", kWeekdays,
          "Weekdays on which expensive maintenance may start. Deselect days with heavy batch "
          "processing."),
    integer(72, "Maintenance Throttle", "25", 1, 100,
            "Percent of the disk throughput that maintenance may use outside Quiet Hours. With 100 "
            "maintenance is not throttled."),
    boolean(75, "Automatic Statistics", true, kEnabledDisabled,
            "Refreshes planner statistics of a table after a tenth of its rows have changed. "
            "Disable it only if statistics are gathered by other means."),
    boolean(76, "Automatic Space Reclaim", true, kEnabledDisabled,
            "Makes the space of deleted rows available for new rows. If it is disabled, tables "
            "with many updates grow until they are rebuilt manually."),
    integer(77, "Reclaim Threshold", "20", 1, 95,
            "Percent of dead rows at which a table is queued for space reclaim. Use lower values "
            "for large tables."),
};

}  // namespace tn::registry::catalogue

#endif
