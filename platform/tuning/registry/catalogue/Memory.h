// Settings of the memory that the engine and its sessions may take, other than the caches.
#ifndef KNOB_CATALOGUE_MEMORY_H
#define KNOB_CATALOGUE_MEMORY_H

#include <string_view>

#include "tuning/registry/catalogue/Entry.h"

namespace tn::registry::catalogue {

inline constexpr std::string_view kMemoryPages[] = {"standard", "large", "huge"};
inline constexpr std::string_view kShortageActions[] = {"wait", "spill to disk", "fail"};

inline constexpr CatalogueSetting kMemory[] = {
    integer(26, "Total Memory Limit", "2048", 128, TN_MAX_MEMORY,
            "Upper bound in MB for everything the engine allocates, caches included. On a "
            "dedicated machine, leave about 20 percent of the memory to the operating system. "
            "Takes effect after a restart."),
    integer(27, "Start-Up Memory Reserve", "256", 16, TN_MAX_MEMORY,
            "MB that are allocated at startup, so that a shortage is detected then and not under "
            "load. Keep it well below Total Memory Limit. Takes effect after a restart."),
    oneOf(44, "Memory Page Kind", "0", kMemoryPages,
          "Size of the memory pages requested from the operating system. Large and huge pages "
          "speed up caches of many GB, but must be reserved in the operating system first. Takes "
          "effect after a restart."),
    unavailable(boolean(45, "Resident Memory", false, kOnOff,
                        "Locks the engine's memory so that it is not swapped out. This requires "
                        "the privilege to lock memory and a Total Memory Limit that fits into "
                        "physical memory. Takes effect after a restart.")),
    integer(6, "Sort Area Size", "16384", 64, TN_MAX_MEMORY,
            "KB that one sort may use before it continues in temporary files. Raise it when index "
            "builds and large ORDER BY statements write many temporary files."),
    integer(
        7, "Hash Area Size", "32768", 64, TN_MAX_MEMORY,
        "KB for the hash table of one join or one grouping; a larger table is split and written to "
        "disk in parts. A statement with several joins can use this amount several times."),
    integer(8, "Session Memory Limit", "512", 4, TN_MAX_MEMORY,
            "Maximum memory of a session in MB; further allocations fail. It "
            "protects other users from a single runaway query."),
    integer(9, "Idle Memory Return Delay", "10", 0, 1440,
            "Minutes after which unused memory is returned to the operating system. Use a high "
            "value if load comes in short bursts; 0 returns memory immediately."),
    integer(10, "Memory Warning Mark", "85", 50, 99,
            "Share of Total Memory Limit, in percent, above which the engine writes a warning to "
            "the message log, once an hour at most."),
    oneOf(11, "Memory Shortage Action", "1", kShortageActions,
          "What happens to a statement when no memory is available: it waits, continues in "
          "temporary files, or fails with an error."),
};

}  // namespace tn::registry::catalogue

#endif
