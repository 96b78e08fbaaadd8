// Settings of backups and of the archive of the change log.
#ifndef KNOB_CATALOGUE_BACKUP_H
#define KNOB_CATALOGUE_BACKUP_H

#include <string_view>

#include "tuning/registry/catalogue/Entry.h"

namespace tn::registry::catalogue {

inline constexpr std::string_view kBackupCompression[] = {"none", "fast", "small"};

inline constexpr CatalogueSetting kBackup[] = {
    text(148, "Backup Folder", "/srv/backup/engine", 255,
         "Where backups are written unless the command names another place. Choose a volume that "
         "does not share disks with the data. Takes effect after a restart."),
    boolean(168, "Log Archiving", false, kOnOff,
            "Copies each full change log file to the archive, which makes it possible to restore a "
            "database to any moment after its last backup. Takes effect after a restart."),
    text(149, "Log Archive Folder", "/srv/backup/log", 255,
         "Destination of Log Archiving. When it is full or missing, log files pile up in the "
         "change log folder until it is back. Takes effect after a restart."),
    integer(169, "Backup Buffers", "16", 2, 1024,
            "Blocks of 1 MB that are set aside to keep reading and writing of a backup going at "
            "the same time. Tape drives want 64 or more. Takes effect after a restart."),
    integer(129, "Backup Streams", "2", 1, 32,
            "Data files that one backup reads in parallel. Increase it together with the number of "
            "disks."),
    integer(131, "Backup Rate Limit", "0", 0, 100000,
            "MB per second that a backup may read, so that users do not suffer from it; 0 lets it "
            "run at full speed."),
    oneOf(135, "Backup Compression", "1", kBackupCompression,
          "How hard a backup is compressed. Small takes about four times the processor time of "
          "fast and saves another quarter of the space."),
    boolean(141, "Backup Verification", true, kOnOff,
            "Reads every backup again after it was written and compares its checksums. It nearly "
            "doubles the duration and is the only proof that the medium is good."),
    integer(139, "Backup Retention", "30", 0, 36500,
            "Days after which a backup may be deleted to make room. The latest complete backup is "
            "kept however old it is; 0 deletes none."),
    integer(142, "Backup Space Limit", "102400", 100, TN_MAX_DISK,
            "MB that all backups in Backup Folder may take together. A backup that would exceed it "
            "is not begun."),
};

}  // namespace tn::registry::catalogue

#endif
