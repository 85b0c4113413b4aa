/* zorpelx/cli/sweep_tables.h: what a sweep came to: table, CSV, JSON and pictures. */
#ifndef ZORPELX_CLI_SWEEP_TABLES_H
#define ZORPELX_CLI_SWEEP_TABLES_H

#include <string>
#include <vector>

#include "sweep_plan.h"

/* Runs of one number of parts and one epsilon: their results can be compared. */
struct SweepGroup {
    int64_t nparts;
    double epsilon;
    std::vector<size_t> runs; // that have ended, by plan
    size_t best;              // of them
};

/* Groups with at least one result, in the order of the plan. */
std::vector<SweepGroup> groups_of(const Settings &settings, const std::vector<SweepCell> &plan,
                                  const std::vector<SweepResult> &results);

/* "8 parts, epsilon 3 %" */
std::string group_name(const SweepGroup &group);

/* A row for each preset of each group, the best one marked. */
std::string sweep_table(const Settings &settings, const std::vector<SweepCell> &plan,
                        const std::vector<SweepResult> &results,
                        const std::vector<SweepGroup> &groups);

/* A row for each run. */
std::string sweep_csv(const std::vector<SweepCell> &plan, const std::vector<SweepResult> &results,
                      const std::vector<SweepGroup> &groups);

Json sweep_json(const Settings &settings, const std::vector<SweepCell> &plan,
                const std::vector<SweepResult> &results, const std::vector<SweepGroup> &groups);

/* Pictures: the objective against time, a panel for each group; against balance, for each k. */
std::string time_picture(const Settings &settings, const std::vector<SweepCell> &plan,
                         const std::vector<SweepResult> &results,
                         const std::vector<SweepGroup> &groups);
std::string balance_picture(const Settings &settings, const std::vector<SweepCell> &plan,
                            const std::vector<SweepResult> &results,
                            const std::vector<SweepGroup> &groups);

#endif
