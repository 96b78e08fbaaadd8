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
            "Upper bound in MB for everything the engine allocates, caches included. On a machine "
            "of its own, leave about a fifth of the memory to the operating system. Takes effect "
            "after a restart."),
    integer(27, "Start-Up Memory Reserve", "256", 16, TN_MAX_MEMORY,
            "MB that are claimed at once when the engine starts, so that a shortage shows then and "
            "not under load. Keep it well below Total Memory Limit. Takes effect after a restart."),
    oneOf(44, "Memory Page Kind", "0", kMemoryPages,
          "Size of the memory pages requested from the operating system. Large and huge pages "
          "speed up caches of many GB, but the system must have set them aside beforehand. Takes "
          "effect after a restart."),
    unavailable(boolean(45, "Resident Memory", false, kOnOff,
                        "Forbids the operating system to move the engine's memory to the swap "
                        "area. Needs the right to lock memory, and a limit that the machine can "
                        "really afford. Takes effect after a restart.")),
    integer(6, "Sort Area Size", "16384", 64, TN_MAX_MEMORY,
            "KB that one sort may use before it continues in temporary files. Raise it when index "
            "builds and large ORDER BY statements write many temporary files."),
    integer(7, "Hash Area Size", "32768", 64, TN_MAX_MEMORY,
            "KB for the hash table of one join or one grouping; a larger table is split and goes "
            "to disk in parts. A statement with several joins takes this amount more than once."),
    integer(8, "Session Memory Limit", "512", 4, TN_MAX_MEMORY,
            "A session that holds more than this many MB has its next allocation refused. It "
            "protects the other users from a single runaway report."),
    integer(9, "Idle Memory Return Delay", "10", 0, 1440,
            "Minutes after which memory that nobody has used goes back to the operating system. "
            "Use a long delay where load comes in short bursts; 0 returns it immediately."),
    integer(10, "Memory Warning Mark", "85", 50, 99,
            "Share of Total Memory Limit, in percent, above which the engine writes a warning to "
            "the message log, once an hour at most."),
    oneOf(11, "Memory Shortage Action", "1", kShortageActions,
          "What happens to a statement that finds no memory left: it waits for others to finish, "
          "goes on in temporary files, or ends with an error."),
};

}  // namespace tn::registry::catalogue

#endif
