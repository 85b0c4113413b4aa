/* SPDX-License-Identifier: MIT */
/* zorpelx/cli/sweep_tables.h: what a sweep came to: table, CSV, JSON and pictures. */
#ifndef ZORPELX_CLI_SWEEP_TABLES_H
#define ZORPELX_CLI_SWEEP_TABLES_H

#include <string>
#include <vector>

#include "picture.h"
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

/* The runs of one preset in a group, summed up. */
struct Summary {
    size_t runs, best; // how many; by plan
    int64_t median_objective;
    double median_seconds;
};
Summary summary_of(const Settings &settings, const std::vector<SweepCell> &plan,
                   const std::vector<SweepResult> &results, const SweepGroup &group,
                   int64_t preset);

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

/* "cut", "connectivity minus one", "sum of external degrees" */
std::string objective_title(const Settings &settings);

/* Pictures: the objective against time, a panel for each group; against balance, for each k. */
Picture time_picture(const Settings &settings, const std::vector<SweepCell> &plan,
                     const std::vector<SweepResult> &results,
                     const std::vector<SweepGroup> &groups);
Picture balance_picture(const Settings &settings, const std::vector<SweepCell> &plan,
                        const std::vector<SweepResult> &results,
                        const std::vector<SweepGroup> &groups);

#endif
