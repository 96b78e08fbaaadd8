// Settings of the data files and temporary files: where they lie, how they grow, how they are read.
#ifndef KNOB_CATALOGUE_FILES_H
#define KNOB_CATALOGUE_FILES_H

#include <string_view>

#include "tuning/registry/catalogue/Entry.h"

namespace tn::registry::catalogue {

inline constexpr std::string_view kPageSizes[] = {"4 KB", "8 KB", "16 KB", "32 KB", "64 KB"};
inline constexpr std::string_view kReadChecks[] = {"never", "sampled", "always"};

inline constexpr CatalogueSetting kFiles[] = {
    oneOf(62, "Default Page Size", "1", kPageSizes,
          "Page size of new databases; existing databases are not changed. Use large pages for "
          "wide rows and reports, small pages for random lookups. Takes effect after a restart."),
    integer(64, "Open File Limit", "1000", 64, 1000000,
            "Data files that the engine holds open at once; above this limit, the least recently "
            "used file is closed. Keep it below the per-process limit of the operating system. "
            "Takes effect after a restart."),
    boolean(65, "Direct File Access", false, kOnOff,
            "Bypasses the file cache of the operating system for data files, so that pages are not "
            "cached twice. Useful with a large page cache. Takes effect after a restart."),
    integer(66, "Data File Part Size", "1024", 64, 65536,
            "Size in MB at which a data file is split. Smaller parts are easier to copy and to "
            "distribute over volumes. Takes effect after a restart."),
    integer(179, "Parallel File Writers", "4", 1, 64,
            "Number of concurrent write requests. Use a higher number for disk arrays. Takes "
            "effect after a restart."),
    integer(29, "File Growth Step", "16", 1, 4096,
            "MB by which a full data file is extended. Large steps reduce fragmentation and pauses "
            "but reserve space early."),
    integer(30, "Free Disk Reserve", "1024", 0, TN_MAX_DISK,
            "MB that must stay free on the volume of the data folder. When less is left, "
            "statements that would extend a file fail while all others continue."),
    text(178, "Overflow Folder", "/srv/engine/overflow", 255,
         "Second location for data files, used when the first has reached Free Disk Reserve. Use "
         "another volume. Takes effect after a restart."),
    text(61, "Temporary File Folder", "/var/tmp/engine", 255,
         "Location of temporary files for sorts, joins and temporary tables that exceed memory. "
         "Use a fast local disk; the files need no backup. Takes effect after a restart."),
    integer(31, "Temporary Space Limit", "10240", 16, TN_MAX_MEMORY_AND_DISK,
            "MB of temporary storage, in memory and on disk together, that all sessions may use. "
            "It prevents a single query from filling the volume."),
    integer(32, "Scratch Table Limit", "512", 1, TN_MAX_MEMORY_AND_DISK,
            "Maximum size in MB of one temporary table, in memory and on disk."),
    oneOf(33, "Page Verification", "1", kReadChecks,
          "How often the checksum of a page is compared when it is read from disk: for no page, "
          "for one in sixteen, or for all. Use always if you suspect a faulty disk or controller."),
    boolean(34, "Delayed File Removal", true, kYesNo,
            "Keeps the files of a dropped table until the next checkpoint, so that dropping a "
            "large table does not block other sessions."),
    text(35, "File Permission Mask", "0027", 4,
         "Permission bits, in octal, that are removed from files that the engine creates. The "
         "default denies all access to users outside its group."),
};

}  // namespace tn::registry::catalogue

#endif
