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
          "Page size of databases created from now on; existing ones keep theirs. Wide rows and "
          "reports prefer large pages, short random lookups small ones. Takes effect after a "
          "restart."),
    integer(64, "Open File Limit", "1000", 64, 1000000,
            "Data files that the engine holds open at once; beyond it, the one idle for longest is "
            "closed. Stay below the limit that the operating system sets for one process. Takes "
            "effect after a restart."),
    boolean(65, "Direct File Access", false, kOnOff,
            "Reads and writes data files past the file cache of the operating system, so that no "
            "page is held in memory twice. Worth trying once the page cache is large. Takes effect "
            "after a restart."),
    integer(66, "Data File Part Size", "1024", 64, 65536,
            "MB after which a data file is continued in a further file. Smaller parts are easier "
            "to copy and to spread over volumes. Takes effect after a restart."),
    integer(179, "Parallel File Writers", "4", 1, 64,
            "How many write requests are handed to the operating system at a time. Arrays of many "
            "disks can use a higher number, a single disk cannot. Takes effect after a restart."),
    integer(29, "File Growth Step", "16", 1, 4096,
            "MB by which a full data file is extended. Large steps avoid scattered files and "
            "frequent pauses, at the price of space reserved early."),
    integer(30, "Free Disk Reserve", "1024", 0, TN_MAX_DISK,
            "MB that must stay free on the volume of the data folder. When less is left, "
            "statements that would extend a file fail while all others continue."),
    text(178, "Overflow Folder", "/srv/engine/overflow", 255,
         "Second place for data files, used when the first has reached its free disk reserve. Put "
         "it on another volume. Takes effect after a restart."),
    text(61, "Temporary File Folder", "/var/tmp/engine", 255,
         "Where sorts, joins and scratch tables go when they outgrow memory. A fast local disk is "
         "best; the contents are worthless after a crash and need no backup. Takes effect after a "
         "restart."),
    integer(31, "Temporary Space Limit", "10240", 16, TN_MAX_MEMORY_AND_DISK,
            "MB of temporary storage, in memory and on disk together, that all sessions may use. "
            "It keeps a faulty join from filling the volume."),
    integer(32, "Scratch Table Limit", "512", 1, TN_MAX_MEMORY_AND_DISK,
            "Largest size, in MB, of one temporary table of a session, wherever its rows are held "
            "at the moment."),
    oneOf(
        33, "Page Verification", "1", kReadChecks,
        "How often the checksum of a page is compared when it is read from disk: for no page, for "
        "one in sixteen, or for all. Set it to always while you suspect a disk or a controller."),
    boolean(34, "Delayed File Removal", true, kYesNo,
            "Keeps the files of a dropped table until the next checkpoint, so that dropping a "
            "large table does not stall others."),
    text(35, "File Permission Mask", "0027", 4,
         "Permission bits, as octal digits, that are taken away from every file the engine "
         "creates. The default denies all access to users outside its group."),
};

}  // namespace tn::registry::catalogue

#endif
