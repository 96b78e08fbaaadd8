// Settings of how statements are planned and what they may cost.
#ifndef KNOB_CATALOGUE_QUERY_PLANNING_H
#define KNOB_CATALOGUE_QUERY_PLANNING_H

#include <string_view>

#include "tuning/registry/catalogue/Entry.h"

namespace tn::registry::catalogue {

inline constexpr std::string_view kStatisticsActions[] = {"guess", "sample on demand", "warn"};
inline constexpr std::string_view kJoinMethods[] = {"nested loop", "hash", "merge"};
inline constexpr std::string_view kCompileChoices[] = {"never", "costly statements", "always"};

inline constexpr CatalogueSetting kQueryPlanning[] = {
    integer(50, "Plan Search Effort", "6", 1, 10,
            "How thoroughly the planner searches for a cheaper plan. High levels help complex "
            "queries and slow down simple ones."),
    integer(100, "Plan Workspace Size", "8192", 512, 1048576,
            "KB that the planner reserves for each worker thread. A statement that joins more than "
            "about twenty tables may need a larger workspace. Takes effect after a restart."),
    anyOf(55, "Join Methods", "0 1 2", kJoinMethods,
          "Methods that the planner may use to join tables. Remove one only to find the cause of a "
          "bad plan."),
    boolean(52, "Join Reordering", true, kOnOff,
            "Lets the planner join tables in another order than the statement names them. Turn it "
            "off for applications with manually optimized join orders."),
    integer(60, "Random Read Cost", "400", 100, 10000,
            "Cost of fetching a page at random, in hundredths of the cost of reading the next one "
            "in order. About 110 fits solid-state disks, 400 spinning ones."),
    integer(53, "Statistics Sample Size", "30000", 100, 10000000,
            "Rows examined to estimate how the values of a column are distributed. Increase it "
            "when estimates for large, uneven tables are far off."),
    oneOf(54, "Missing Statistics Action", "1", kStatisticsActions,
          "How the planner treats a table without statistics: assume default values, take a small "
          "sample first, or assume default values and log a warning."),
    boolean(63, "Plan Reuse", true, kYesNo,
            "Uses the plan of a prepared statement again when it is executed with other "
            "parameters. Choose no if some parameters make a reused plan very slow."),
    integer(103, "Parallel Worker Pool", "8", 0, 512,
            "Threads kept ready to work on parts of a statement, for all sessions together. With 0 "
            "every statement runs on a single thread. Takes effect after a restart."),
    integer(51, "Parallel Query Degree", "2", 1, 64,
            "Largest number of threads from Parallel Worker Pool that one statement may occupy. "
            "Use a low value for many concurrent users."),
    integer(56, "Statement Time Limit", "0", 0, 2147483647,
            "Milliseconds after which a running statement is canceled; 0 sets no limit. Backups "
            "and maintenance tasks are exempt."),
    integer(59, "Result Row Limit", "0", 0, 2147483647,
            "Most rows that a statement may send to a client before it is stopped with an error. "
            "This limits ad-hoc queries without a condition; 0 means no limit."),
    unavailable(oneOf(
        70, "Compiled Expressions", "1", kCompileChoices,
        "Whether conditions and computed columns are translated to machine code before a statement "
        "runs. Compilation takes some milliseconds and does not pay off for short statements.")),
};

}  // namespace tn::registry::catalogue

#endif
