// Settings of backups and of the archive of the change log.
#ifndef KNOB_CATALOGUE_BACKUP_H
#define KNOB_CATALOGUE_BACKUP_H

#include <string_view>

#include "tuning/registry/catalogue/Entry.h"

namespace tn::registry::catalogue {

inline constexpr std::string_view kBackupCompression[] = {"none", "fast", "small"};

inline constexpr CatalogueSetting kBackup[] = {
    text(148, "Backup Folder", "/srv/backup/engine", 255,
         "Default location of backups. Use a volume that does not share disks with the data. Takes "
         "effect after a restart."),
    boolean(168, "Log Archiving", false, kOnOff,
            "Copies each full change log file to the archive, which allows point-in-time recovery. "
            "Takes effect after a restart."),
    text(149, "Log Archive Folder", "/srv/backup/log", 255,
         "Destination of Log Archiving. If it is full or missing, log files accumulate in the "
         "change log folder. Takes effect after a restart."),
    integer(169, "Backup Buffers", "16", 2, 1024,
            "Number of 1 MB buffers that allow a backup to read and write at the same time. Use 64 "
            "or more for tape drives. Takes effect after a restart."),
    integer(129, "Backup Streams", "2", 1, 32,
            "Data files that one backup reads in parallel. Increase it together with the number of "
            "disks."),
    integer(
        131, "Backup Rate Limit", "0", 0, 100000,
        "MB per second that a backup may read, to limit the effect on users; 0 means no limit."),
    oneOf(135, "Backup Compression", "1", kBackupCompression,
          "Compression of backups. Small uses about four times the CPU time of fast and saves "
          "another quarter of the space."),
    boolean(141, "Backup Verification", true, kOnOff,
            "Reads every backup again after it was written and compares its checksums. This nearly "
            "doubles the duration of a backup and detects faulty media."),
    integer(139, "Backup Retention", "30", 0, 36500,
            "Days after which a backup may be deleted to make room. The latest complete backup is "
            "always kept; 0 keeps all backups."),
    integer(142, "Backup Space Limit", "102400", 100, TN_MAX_DISK,
            "MB that all backups in Backup Folder may take together. A backup that would exceed "
            "the limit is not started."),
};

}  // namespace tn::registry::catalogue

#endif
