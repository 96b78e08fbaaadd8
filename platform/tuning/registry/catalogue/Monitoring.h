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
          "Lowest severity of messages that are written. Use details only for troubleshooting: "
          "they can fill a disk within hours."),
    integer(151, "Message Log Size", "64", 1, 4096,
            "Size in MB at which the message log is rotated."),
    integer(152, "Message Log Generations", "10", 0, 999,
            "Number of rotated message logs to keep."),
    integer(150, "Slow Statement Mark", "1000", -1, 2147483647,
            "Statements that run at least this many milliseconds are written to the message log "
            "with their plan; 0 logs all statements, -1 none."),
    integer(170, "Event Buffer Size", "1024", 64, 1048576,
            "KB for the most recent internal events, which are written to a file if the engine "
            "crashes. Increase it when support asks for it. Takes effect after a restart."),
    boolean(173, "Wait Time Measurement", true, kOnOff,
            "Measures what sessions wait for, such as locks, disks or memory. The overhead is "
            "about one percent. Takes effect after a restart."),
    integer(171, "Measurement Port", "5792", 1024, 65535,
            "TCP port for monitoring programs. No authentication is required. Takes effect after a "
            "restart."),
    anyOf(153, "Published Measures", "0 1 2 3", kMeasures,
          "Groups of metrics available on Measurement Port. Statement metrics include the "
          "statement texts without values."),
    integer(154, "Sampling Interval", "10", 1, 3600,
            "Seconds between two samples of the published metrics. Shorter intervals show brief "
            "peaks but need more space."),
    unavailable(boolean(155, "Processor Counters", false, kYesNo,
                        "Adds counters of the processor, such as missed branches, to the plan of a "
                        "slow statement.")),
};

}  // namespace tn::registry::catalogue

#endif
