/* SPDX-License-Identifier: MIT */
/* zorpelx/cli/sweep_plan.h: the runs of a sweep, and what came of them. */
#ifndef ZORPELX_CLI_SWEEP_PLAN_H
#define ZORPELX_CLI_SWEEP_PLAN_H

#include <cstdint>
#include <string>
#include <vector>

#include "json.h"
#include "options.h"

/* One run: a value of every setting that is swept over. */
struct SweepCell {
    int64_t nparts;
    double epsilon;
    int64_t preset;
    int64_t seed;
};

/* What is known of a run that has ended. */
struct SweepResult {
    bool done; // false: the others are unset
    bool valid;
    int64_t cut, cut_hyperedges, connectivity, soed;
    double imbalance_percent, seconds;
    std::string sha256; // of its partition
};

/* All combinations of the lists of the settings, seed by seed and the fastest preset first, so that
 * early results are spread over all cells.
 * Throws  STATUS_USAGE for a list that cannot be */
std::vector<SweepCell> sweep_plan(const Settings &settings);

/* The settings of the partition command for one run: one start, one thread. */
Settings settings_of_cell(const Settings &settings, const SweepCell &cell);

/* A line of the journal, as JSON, and back.
 * Throws  what the JSON library throws for fields that are missing or of another kind */
Json sweep_line(const SweepCell &cell, const SweepResult &result);
SweepCell cell_of_line(const Json &line);
SweepResult result_of_line(const Json &line);

bool is_same_cell(const SweepCell &a, const SweepCell &b);

int64_t objective_of(const Settings &settings, const SweepResult &result);

/* Whether a is to be preferred: valid, then the lesser objective and imbalance. */
bool is_better_result(const Settings &settings, const SweepResult &a, const SweepResult &b);

#endif
