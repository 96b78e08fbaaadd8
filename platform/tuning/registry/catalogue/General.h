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
         "Name by which clients and log lines tell this engine from others on the same machine. "
         "Choose a distinct one before you start a second engine on the host. Takes effect after a "
         "restart."),
    text(301, "Data Folder", "/srv/engine/data", 255,
         "Folder that holds the databases and their definitions. Move the files while the engine "
         "is stopped: it refuses to start on a folder without them. Takes effect after a restart."),
    oneOf(203, "Start Mode", "0", kStartModes,
          "What users may do once the engine is up: everything, only read, or nothing until an "
          "administrator releases it. Choose maintenance to repair or move data undisturbed. Takes "
          "effect after a restart."),
    integer(
        201, "Worker Threads", "0", 0, 1024,
        "Threads that execute statements; 0 gives one to each processor core. More than that pays "
        "off only when statements wait a lot for slow disks. Takes effect after a restart."),
    integer(204, "Open Database Limit", "64", 1, 4096,
            "How many databases can be open at the same time. About 2 MB of memory are set aside "
            "for each, used or not. Takes effect after a restart."),
    boolean(3, "Open Databases on Demand", true, kYesNo,
            "Opens a database when the first user asks for it. With no, an administrator has to "
            "open each one, which keeps retired databases shut."),
    integer(2, "Shutdown Grace Period", "60", 0, 3600,
            "Seconds that running transactions are given to finish when the engine is told to "
            "stop; those still open afterwards are rolled back. With 0 nobody is waited for."),
    integer(5, "Process Priority Offset", "0", -20, 19,
            "Moves the engine ahead of other programs on the machine (negative) or behind them "
            "(positive). Touch it only where batch jobs share the processors with the engine."),
    oneOf(4, "Default Table Layout", "0", kTableLayouts,
          "Layout of new tables whose definition does not choose one. Rows suit many small "
          "changes, columns suit reports that add up a few fields of many rows."),
    text(1, "Administrator Contact", "database administration", 120,
         "Printed below errors that users cannot solve themselves. A mailbox or a telephone number "
         "is more useful here than a name."),
};

}  // namespace tn::registry::catalogue

#endif
