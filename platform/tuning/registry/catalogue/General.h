// Settings of the engine as a whole: who it is, where its data lie, how it starts and stops.
#ifndef KNOB_CATALOGUE_GENERAL_H
#define KNOB_CATALOGUE_GENERAL_H

#include <string_view>

#include "tuning/registry/catalogue/Entry.h"

namespace tn::registry::catalogue {

inline constexpr std::string_view kStartModes[] = {"normal", "read only", "maintenance"};
inline constexpr std::string_view kTableLayouts[] = {"row", "column", "hybrid"};

inline constexpr CatalogueSetting kGeneral[] = {
    text(300, "Instance Name", "main", 63,
         "Name that identifies this engine to clients and in logs. It must be unique on the host. "
         "Takes effect after a restart."),
    text(301, "Data Folder", "/srv/engine/data", 255,
         "Folder that holds the databases and their definitions. Move the files while the engine "
         "is stopped: it refuses to start on a folder without them. Takes effect after a restart."),
    oneOf(
        203, "Start Mode", "0", kStartModes,
        "What users may do after startup: everything, only read, or nothing until an administrator "
        "permits it. Use maintenance to repair or move data. Takes effect after a restart."),
    integer(201, "Worker Threads", "0", 0, 1024,
            "Threads that execute statements; 0 gives one to each processor core. Use more only if "
            "statements often wait for slow disks. Takes effect after a restart."),
    integer(204, "Open Database Limit", "64", 1, 4096,
            "How many databases can be open at the same time. About 2 MB of memory are reserved "
            "for each. Takes effect after a restart."),
    boolean(3, "Open Databases on Demand", true, kYesNo,
            "Opens a database when the first user asks for it. With no, an administrator has to "
            "open each database."),
    integer(
        2, "Shutdown Grace Period", "60", 0, 3600,
        "Seconds that running transactions are given to finish when the engine is told to stop; "
        "those still open afterwards are rolled back. With 0 the engine stops immediately."),
    integer(
        5, "Process Priority Offset", "0", -20, 19,
        "Changes the scheduling priority of the engine: negative values raise it, positive values "
        "lower it. Change it only if other programs share the processors with the engine."),
    oneOf(4, "Default Table Layout", "0", kTableLayouts,
          "Layout of new tables whose definition does not choose one. Use rows for transaction "
          "processing, columns for reports that aggregate a few columns of many rows."),
    text(1, "Administrator Contact", "database administration", 120,
         "Contact shown with errors that require an administrator, such as a mail address or a "
         "telephone number."),
};

}  // namespace tn::registry::catalogue

#endif
