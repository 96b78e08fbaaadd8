// Settings of what the engine tells about itself: messages, measurements, slow statements.
#ifndef KNOB_CATALOGUE_MONITORING_H
#define KNOB_CATALOGUE_MONITORING_H

#include <string_view>

#include "tuning/registry/catalogue/Entry.h"

namespace tn::registry::catalogue {

inline constexpr std::string_view kMessageLevels[] = {"errors", "warnings", "notices", "details"};
inline constexpr std::string_view kMeasures[] = {"memory",     "caches", "locks",
                                                 "statements", "files",  "replication"};

inline constexpr CatalogueSetting kMonitoring[] = {
    text(172, "Message Log File", "engine.log", 255,
         "File for messages to the administrator; a relative name lies in the data folder. Takes "
         "effect after a restart."),
    oneOf(143, "Message Log Level", "2", kMessageLevels,
          "Least important kind of message that is still written. Details are for hunting a fault "
          "and can fill a disk within hours."),
    integer(151, "Message Log Size", "64", 1, 4096,
            "MB at which the message log is renamed and a new one is begun."),
    integer(152, "Message Log Generations", "10", 0, 999,
            "Renamed message logs that are kept; the oldest is deleted when there are more."),
    integer(150, "Slow Statement Mark", "1000", -1, 2147483647,
            "Statements that take at least this many milliseconds go to the message log with their "
            "plan. With 0 all of them do, with -1 none."),
    integer(170, "Event Buffer Size", "1024", 64, 1048576,
            "KB for the most recent internal events, which are written to a file if the engine "
            "crashes. Support may ask you to enlarge it. Takes effect after a restart."),
    boolean(173, "Wait Time Measurement", true, kOnOff,
            "Measures what sessions wait for, such as locks, disks or memory. It costs about one "
            "percent of speed and answers most questions about slowness. Takes effect after a "
            "restart."),
    integer(171, "Measurement Port", "5792", 1024, 65535,
            "TCP port on which monitoring programs collect figures, readable without signing in. "
            "Takes effect after a restart."),
    anyOf(153, "Published Measures", "0 1 2 3", kMeasures,
          "Groups of figures offered on Measurement Port. Figures about statements include their "
          "texts, without the values."),
    integer(154, "Sampling Interval", "10", 1, 3600,
            "Seconds between two samples of the published figures. Shorter intervals show brief "
            "peaks and make the history larger."),
    unavailable(boolean(155, "Processor Counters", false, kYesNo,
                        "Adds counters of the processor, such as missed branches, to the plan of a "
                        "slow statement.")),
};

}  // namespace tn::registry::catalogue

#endif
