/* SPDX-License-Identifier: MIT */
/* zorpelx/cli/solving.h: from the files of the partition command to a partition. */
#ifndef ZORPELX_CLI_SOLVING_H
#define ZORPELX_CLI_SOLVING_H

#include <chrono>
#include <string>
#include <vector>

#include "failure.h"
#include "figures.h"
#include "hypergraph.h"
#include "options.h"
#include "zorpelx.h"

/* What is to be partitioned. The narrow arrays are those that the library takes beside the graph's
 * pins; an empty one stands for none. */
struct Problem {
    std::chrono::steady_clock::time_point began; // of reading
    Hypergraph graph;
    std::vector<int64_t> fix; // the part of each vertex, or -1
    std::vector<int> eptr, vwgts, hewgts, fixed, start, groups;
    std::vector<double> capacities;
};

/* A better partition, as a watch that looks a few times a second has seen it. */
struct SeenStep {
    double seconds; // since solving began
    int64_t objective;
    std::string step; // what found it
};

/* What came out.
 *   part     [nvertices], set if result.finished is not 0
 *   figures  of part, counted afresh
 *   history  of a search; its last entry is what is delivered */
struct Solution {
    std::vector<int> part;
    zorpelx_result result;
    Figures figures;
    std::vector<SeenStep> history;
};

/* How the jobs of a search are shared with others; see zorpelx_options. */
struct Sharing {
    zorpelx_channel_fn channel;
    void *user;
    bool endless; // until it is stopped, without a time of its own
};

/* Reads all files of the settings and reports warnings.
 * Throws  STATUS_BAD_INPUT, STATUS_USAGE, STATUS_IO, ... */
Problem read_problem(const Settings &settings);

/* Throws STATUS_INFEASIBLE if the engine alone is wanted and cannot keep its limits. */
void check_feasible(const Settings &settings, const Problem &problem);

/* Makes SIGINT and SIGTERM ask every solve() of the process to end with the best that it has; a
 * second one ends the process as usual. */
void catch_signals();

/* What those signals do. */
void stop_solving(int signal);

/* The signal that asked for the end; 0 if none did. */
int caught_signal();

/* Partitions. May be called by several threads at once.
 *   shown  whether the progress line and traces go to standard error
 * Returns the status of the process: that of the signal if one asked to stop, STATUS_INFEASIBLE for
 * a partition that is not within its limits.
 * Throws  STATUS_FAILED if what was delivered is not what the library says it is */
Status solve(const Settings &settings, const Problem &problem, bool shown, Solution *solution,
             const Sharing *sharing = nullptr);

/* What the objective of the settings counts. */
int64_t objective_of(const Settings &settings, const Figures &figures);

/* The 10,000th number of the generator that a search, or the engine, has for a seed, as 16
 * hexadecimal digits. */
std::string generator_check(bool searching, int64_t seed);

#endif
