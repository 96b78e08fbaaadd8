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
          "Ways in which users may prove who they are. Offer the operating system only where every "
          "account of the client machines is under your control. Takes effect after a restart."),
    text(123, "Directory Service Address", "ldap://directory.example:389", 255,
         "Server asked about users when the directory service is among Sign-In Methods. Takes "
         "effect after a restart."),
    integer(79, "Shortest Password", "12", 0, 128,
            "Fewest characters that a new password may have. Passwords that are already stored are "
            "not checked again."),
    integer(80, "Password Lifetime", "0", 0, 3650,
            "Days after which a user must choose a new password; 0 lets passwords live for ever. "
            "Give accounts of programs a lifetime of their own instead of raising this one."),
    integer(81, "Failed Sign-In Limit", "6", 0, 100,
            "Wrong passwords in a row after which an account is locked for Sign-In Lockout Time; 0 "
            "never locks one."),
    integer(82, "Sign-In Lockout Time", "15", 1, 10080,
            "Minutes for which an account stays locked. An administrator can release it earlier."),
    text(118, "Certificate File", "/etc/engine/server.crt", 255,
         "Certificate that the engine presents to clients on encrypted connections, with the chain "
         "of its issuers. Takes effect after a restart."),
    text(120, "Certificate Key File", "/etc/engine/server.key", 255,
         "Private key that belongs to Certificate File. The engine refuses a key that other users "
         "of the machine can read. Takes effect after a restart."),
    oneOf(121, "Oldest TLS Version", "0", kTlsVersions,
          "Clients that cannot speak at least this version of the protocol are turned away. Update "
          "old client programs before you raise it. Takes effect after a restart."),
    boolean(115, "Data File Encryption", false, kOnOff,
            "Encrypts new data files and log files. Existing ones stay as they are until they are "
            "rebuilt, and without the key file all of it is lost. Takes effect after a restart."),
    text(117, "Encryption Key File", "/etc/engine/data.key", 255,
         "File with the key for Data File Encryption. Store a copy of it away from the backups "
         "that it protects. Takes effect after a restart."),
    unavailable(
        boolean(88, "Hardware Key Store", false, kYesNo,
                "Keeps the encryption key in a security module of the machine instead of a file.")),
    anyOf(83, "Audited Actions", "1 2 3", kAuditedActions,
          "Kinds of action that leave a line in the audit trail. Recording each data change slows "
          "down writing noticeably and is best limited to an investigation."),
    boolean(84, "Error Details", true, kHideShow,
            "Hides values and file names in errors sent to ordinary users, who see the bare "
            "message; the message log always has the rest. Show them on test systems."),
};

}  // namespace tn::registry::catalogue

#endif
