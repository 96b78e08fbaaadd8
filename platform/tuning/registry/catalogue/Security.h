// Settings of who may sign in, how data are protected and what is recorded about it.
#ifndef KNOB_CATALOGUE_SECURITY_H
#define KNOB_CATALOGUE_SECURITY_H

#include <string_view>

#include "tuning/registry/catalogue/Entry.h"

namespace tn::registry::catalogue {

inline constexpr std::string_view kTlsVersions[] = {"1.2", "1.3"};
inline constexpr std::string_view kSignInMethods[] = {"password", "certificate",
                                                      "directory service", "operating system"};
inline constexpr std::string_view kAuditedActions[] = {
    "sign-in", "failed sign-in", "definition change", "rights change", "data change", "export"};

inline constexpr CatalogueSetting kSecurity[] = {
    anyOf(122, "Sign-In Methods", "0 1", kSignInMethods,
          "Permitted authentication methods. Permit the operating system only if you control all "
          "accounts of the client machines. Takes effect after a restart."),
    text(123, "Directory Service Address", "ldap://directory.example:389", 255,
         "Server used for authentication if the directory service is among Sign-In Methods. Takes "
         "effect after a restart."),
    integer(79, "Shortest Password", "12", 0, 128,
            "Minimum length of new passwords. Existing passwords are not checked."),
    integer(80, "Password Lifetime", "0", 0, 3650,
            "Days after which a user must choose a new password; 0 means that passwords do not "
            "expire. Set a separate lifetime for accounts of applications."),
    integer(81, "Failed Sign-In Limit", "6", 0, 100,
            "Number of consecutive failed attempts after which an account is locked for Sign-In "
            "Lockout Time; 0 never locks accounts."),
    integer(82, "Sign-In Lockout Time", "15", 1, 10080,
            "Minutes for which an account stays locked. An administrator can unlock it earlier."),
    text(118, "Certificate File", "/etc/engine/server.crt", 255,
         "Certificate that the engine presents to clients on encrypted connections, with the chain "
         "of its issuers. Takes effect after a restart."),
    text(120, "Certificate Key File", "/etc/engine/server.key", 255,
         "Private key that belongs to Certificate File. The engine refuses a key that other users "
         "of the machine can read. Takes effect after a restart."),
    oneOf(121, "Oldest TLS Version", "0", kTlsVersions,
          "Minimum protocol version; clients with older versions are refused. Update old client "
          "programs before you raise it. Takes effect after a restart."),
    boolean(115, "Data File Encryption", false, kOnOff,
            "Encrypts new data files and log files. Existing files are not encrypted until they "
            "are rebuilt. Without the key file the data is lost. Takes effect after a restart."),
    text(117, "Encryption Key File", "/etc/engine/data.key", 255,
         "File with the key for Data File Encryption. Keep a copy of it separate from the backups. "
         "Takes effect after a restart."),
    unavailable(
        boolean(88, "Hardware Key Store", false, kYesNo,
                "Keeps the encryption key in a security module of the machine instead of a file.")),
    anyOf(83, "Audited Actions", "1 2 3", kAuditedActions,
          "Actions that are recorded in the audit log. Recording data changes slows down writes "
          "considerably."),
    boolean(84, "Error Details", true, kHideShow,
            "Hides values and file names in errors sent to ordinary users, who see only the "
            "message; the message log always contains the details. Show them on test systems."),
};

}  // namespace tn::registry::catalogue

#endif
