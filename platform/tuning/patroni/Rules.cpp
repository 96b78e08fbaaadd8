#include "tuning/patroni/Rules.h"

#include <algorithm>
#include <iterator>

#include "tuning/TuningError.h"
#include "tuning/postgresql/ValueText.h"

namespace tn::patroni {
namespace {

constexpr std::string_view kOwn[] = {
    "cluster_name",
    "config_file",
    "data_directory",
    "hba_file",
    "hot_standby",
    "ident_file",
    "listen_addresses",
    "port",
    "wal_log_hints",
    // How a member recovers is decided by its role; other wishes have a section of their own in the
    // configuration (recovery_conf).
    "archive_cleanup_command",
    "primary_conninfo",
    "primary_slot_name",
    "promote_trigger_file",
    "recovery_end_command",
    "recovery_min_apply_delay",
    "recovery_target",
    "recovery_target_action",
    "recovery_target_inclusive",
    "recovery_target_lsn",
    "recovery_target_name",
    "recovery_target_time",
    "recovery_target_timeline",
    "recovery_target_xid",
    "restore_command",
};

// A file cannot give them: they are of one transaction each.
constexpr std::string_view kOfTransactions[] = {"transaction_deferrable", "transaction_isolation",
                                                "transaction_read_only"};

constexpr std::string_view kSynchronous = "synchronous_standby_names";

constexpr std::string_view kOfClusterAlone[] = {"max_prepared_transactions",
                                                "track_commit_timestamp", "wal_level"};

// Of the settings of the cluster alone, in the settings' units.
struct Minimum {
  std::string_view name;
  int value;
};
constexpr Minimum kMinima[] = {
    {"max_connections", 25}, {"max_locks_per_transaction", 32}, {"max_replication_slots", 4},
    {"max_wal_senders", 3},  {"max_worker_processes", 2},       {"wal_keep_segments", 1},
    {"wal_keep_size", 16},
};

template <typename List>
bool holds(const List& list, std::string_view name) {
  return std::ranges::find(list, name) != std::end(list);
}

}  // namespace

bool Rules::isPatronisOwn(std::string_view settingName) { return holds(kOwn, settingName); }

bool Rules::isOfSynchronousMode(std::string_view settingName, const Configuration& configuration) {
  return settingName == kSynchronous && configuration.isSynchronous();
}

bool Rules::isOfClusterAlone(std::string_view settingName) {
  return holds(kOfClusterAlone, settingName) ||
         std::ranges::find(kMinima, settingName, &Minimum::name) != std::end(kMinima);
}

void Rules::check(const postgresql::Setting& setting, const postgresql::NewValue& value,
                  const Configuration& configuration) {
  if (isPatronisOwn(setting.name)) throw TuningError(TN_PATRONI_SETS_IT);
  if (holds(kOfTransactions, setting.name)) throw TuningError(TN_SETTING_READ_ONLY);
  if (isOfSynchronousMode(setting.name, configuration)) throw TuningError(TN_PATRONI_SYNCHRONOUS);
  if (setting.name == "wal_level" && value.shown() == "minimal") {
    throw TuningError(TN_PATRONI_WAL_LEVEL);
  }
  const auto* const minimum = std::ranges::find(kMinima, setting.name, &Minimum::name);
  if (minimum != std::end(kMinima) &&
      postgresql::ValueText::integer(value.shown(), {}).value_or(0) < minimum->value) {
    throw TuningError(TN_PATRONI_BELOW_MINIMUM);
  }
}

}  // namespace tn::patroni
