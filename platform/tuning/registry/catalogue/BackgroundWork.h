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
            "Threads that gather statistics, reclaim space and rebuild indexes. One for every "
            "eight cores is usually enough. Takes effect after a restart."),
    integer(111, "Page Writer Threads", "2", 1, 64,
            "Threads that write changed pages to disk ahead of checkpoints. Add some if statements "
            "have to write pages themselves. Takes effect after a restart."),
    integer(112, "Task Queue Length", "256", 16, 8192,
            "Maintenance tasks that can wait for a thread. A task that finds the queue full is "
            "dropped and noticed again at the next round. Takes effect after a restart."),
    text(114, "Maintenance Plan File", "maintenance.plan", 255,
         "File with the timetable of your own recurring tasks, relative to the data folder. A "
         "missing file stands for an empty timetable. Takes effect after a restart."),
    text(71, "Quiet Hours", "22:00-05:00", 11,
         "Time of day, from and to in local time, in which maintenance may use the machine without "
         "regard to Maintenance Throttle."),
    anyOf(78, "Maintenance Days", "0 1 2 3 4 5 6", kWeekdays,
          "Weekdays on which costly maintenance may begin. Deselect the days on which the month is "
          "closed or a batch run needs the disks."),
    integer(72, "Maintenance Throttle", "25", 1, 100,
            "Percent of the disk throughput that maintenance may use outside Quiet Hours. At 100 "
            "it competes with users on equal terms."),
    boolean(75, "Automatic Statistics", true, kEnabledDisabled,
            "Refreshes planner statistics of a table after a tenth of its rows have changed. "
            "Disable it only if a task of your own does this."),
    boolean(76, "Automatic Space Reclaim", true, kEnabledDisabled,
            "Gives the space of deleted rows back for new ones. Without it, tables with many "
            "updates grow until they are rebuilt by hand."),
    integer(77, "Reclaim Threshold", "20", 1, 95,
            "Percent of dead rows at which a table is queued for space reclaim. Lower values suit "
            "large tables, where a fifth is already a lot of disk."),
};

}  // namespace tn::registry::catalogue

#endif
