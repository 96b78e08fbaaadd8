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
            "How thoroughly the planner looks for a cheaper plan. High levels pay for reports over "
            "many tables and only delay simple lookups."),
    integer(100, "Plan Workspace Size", "8192", 512, 1048576,
            "KB that the planner sets aside for each worker thread. A statement that joins more "
            "than about twenty tables may need a larger workspace. Takes effect after a restart."),
    anyOf(55, "Join Methods", "0 1 2", kJoinMethods,
          "Methods that the planner may use to join tables. Remove one only to find out whether it "
          "is the cause of a bad plan."),
    boolean(52, "Join Reordering", true, kOnOff,
            "Lets the planner join tables in another order than the statement names them. Turn it "
            "off for programs whose statements were ordered by hand."),
    integer(60, "Random Read Cost", "400", 100, 10000,
            "Cost of fetching a page at random, in hundredths of the cost of reading the next one "
            "in order. About 110 fits solid-state disks, 400 spinning ones."),
    integer(53, "Statistics Sample Size", "30000", 100, 10000000,
            "Rows examined to estimate how the values of a column are distributed. Increase it "
            "when estimates for large, uneven tables are far off."),
    oneOf(54, "Missing Statistics Action", "1", kStatisticsActions,
          "How the planner treats a table without statistics: assume common figures, take a small "
          "sample first, or assume and say so in the message log."),
    boolean(63, "Plan Reuse", true, kYesNo,
            "Uses the plan of a prepared statement again when it is executed with other "
            "parameters. If one parameter in a hundred is extremely slow, try no."),
    integer(103, "Parallel Worker Pool", "8", 0, 512,
            "Threads kept ready to work on parts of a statement, for all sessions together. With 0 "
            "every statement runs on a single thread. Takes effect after a restart."),
    integer(51, "Parallel Query Degree", "2", 1, 64,
            "Largest number of threads from Parallel Worker Pool that one statement may occupy. "
            "Many users at once are served better by a low degree."),
    integer(56, "Statement Time Limit", "0", 0, 2147483647,
            "Milliseconds after which a running statement is cancelled; 0 sets no limit. Backups "
            "and maintenance tasks are exempt."),
    integer(59, "Result Row Limit", "0", 0, 2147483647,
            "Most rows that a statement may send to a client before it is stopped with an error. A "
            "safeguard for ad-hoc users who forget a condition; 0 means no limit."),
    unavailable(oneOf(
        70, "Compiled Expressions", "1", kCompileChoices,
        "Whether conditions and computed columns are translated to machine code before a statement "
        "runs. Compiling takes some milliseconds and is wasted on short statements.")),
};

}  // namespace tn::registry::catalogue

#endif
