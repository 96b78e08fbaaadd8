// Settings of what the engine keeps in memory in order not to read or compute it again.
#ifndef KNOB_CATALOGUE_CACHES_H
#define KNOB_CATALOGUE_CACHES_H

#include <string_view>

#include "tuning/registry/catalogue/Entry.h"

namespace tn::registry::catalogue {

inline constexpr std::string_view kReplacementPolicies[] = {"recency", "frequency", "adaptive"};

inline constexpr CatalogueSetting kCaches[] = {
    integer(48, "Page Cache Size", "512", 8, TN_MAX_MEMORY,
            "MB of data and index pages kept in memory, the setting with the greatest effect on "
            "performance. Increase it until the cache hit ratio stops improving. Takes effect "
            "after a restart."),
    integer(49, "Page Cache Partitions", "8", 1, 128,
            "Number of independent parts into which the page cache is split. More partitions "
            "reduce contention on machines with many cores; one per four cores is a good starting "
            "point. Takes effect after a restart."),
    oneOf(15, "Cache Replacement Policy", "2", kReplacementPolicies,
          "Which page is evicted when the page cache is full: the least recently used, the least "
          "frequently used, or a combination that adapts to the workload. Frequency keeps a small "
          "working set in memory during large scans."),
    integer(16, "Changed Page Share", "40", 5, 90,
            "Percent of the page cache that changed pages may fill before they are written out in "
            "the background. A high value reduces writes, a low value shortens crash recovery."),
    integer(13, "Read-Ahead Depth", "32", 0, 1024,
            "Pages fetched in advance once a scan is seen to read in order. Hard disks benefit "
            "from a high value, solid-state disks hardly do; 0 disables read-ahead."),
    boolean(12, "Cache Warm-Up", true, kEnabledDisabled,
            "Reloads in the background, right after the start, the pages that were in the page "
            "cache at the last shutdown. Disable it if the disks are too busy at startup."),
    text(58, "Cache Snapshot File", "cache.snapshot", 255,
         "File in which the list of cached pages is kept for Cache Warm-Up; a relative name lies "
         "in the data folder. Takes effect after a restart."),
    integer(57, "Statement Cache Size", "64", 1, 16384,
            "MB for prepared statements and their plans, shared by all sessions. Increase it if "
            "the same statements are prepared repeatedly. Takes effect after a restart."),
    integer(14, "Definition Cache Entries", "20000", 500, 5000000,
            "How many table, column and index definitions stay in memory. Databases with thousands "
            "of tables need more than the default."),
    integer(
        28, "Result Cache Lifetime", "0", 0, 86400,
        "Seconds for which the result of a read-only statement may be served again without "
        "executing it. A change to a table involved invalidates the result; 0 disables the cache."),
};

}  // namespace tn::registry::catalogue

#endif
