/* SPDX-License-Identifier: MIT */
/* search/search.h: the best partition that a schedule of work finds within bounds. */
#ifndef ZORPEL_SEARCH_SEARCH_H
#define ZORPEL_SEARCH_SEARCH_H

#include "partition/halves.h"
#include "search/fleet.h"
#include "search/reduce.h"

/* How much is done. Work is counted, never timed, so that equal schedules and seeds give equal
 * results on any machine with any number of threads. */
struct Schedule {
    const char *name;
    int nmembers;          // partitions from scratch, each by a coarsening of its own
    int nengine;           // of which the first so many are runs of the engine on the whole
    int ntrials;           // partitions of the coarsest level that each of the others chooses from
    int ncombined;         // combinations of two of the best partitions
    int batch;             // of which so many are made at a time, without knowing of each other
    int coarsest;          // vertices that a member coarsens to, at least
    int combined_coarsest; // and a combination
    int rounds;            // of local refinement on each level
    int flows;             // 0: none; 1: in combinations; 2: everywhere
    bool bold;             // with more than two parts: refinement beyond the bounds and back
    bool roomy;            // every other member is made within wider bounds first
    int64_t exact;         // steps of branch and bound on very small hypergraphs
};

enum Preset { PRESET_FAST, PRESET_DEFAULT, PRESET_BEST, NPRESETS };
extern const Schedule SCHEDULES[NPRESETS];

/* What a preset does with a hypergraph of so many pins in so many parts. */
Schedule schedule_for(Preset preset, int64_t npins, int nparts, Objective objective);

/* The schedule that begins with nmembers partitions instead: as many combinations for each of them,
 * in batches that grow with it. */
Schedule widened(const Schedule *schedule, int nmembers);

/* What has been found. */
struct Found {
    int64_t objective;
    int64_t excess;   // by how much parts are outside their bounds, in all
    int jobs;         // finished
    int alljobs;      // in all; -1: goes on until it is ended
    const char *step; // what found it, such as "member"
};

enum SearchStep { STEP_PACKING, STEP_START, STEP_MEMBER, STEP_COMBINATION, STEP_EXACT, NSTEPS };
extern const char *const STEP_NAMES[NSTEPS];

/* What the steps of one kind did. */
struct StepReport {
    int made;       // by them
    int better;     // of which were the best at that time
    int64_t gained; // by which these lowered the objective, where the bounds were kept before
    double seconds; // spent on them, of all threads; what others made takes none
};

/* How a result came about. Whoever reads it while the search is at work finds it up to date after
 * every batch. */
struct SearchReport {
    int pool;        // partitions kept
    int generations; // batches of combinations
    StepReport steps[NSTEPS];
};

struct SearchOptions {
    Schedule schedule;
    uint64_t seed;
    bool endless; // combinations go on until cancel is set, or the process ends
    int threads;
    Crew *crew;                 // where threads come from; null: all is done in this one
    const Fleet *fleet;         // who jobs are shared with; null: nobody
    const volatile int *cancel; // not 0: end soon with the best so far; or null
    const int *start;           // [nvtxs] a partition to begin with; or null
    int *done;                  // counts the jobs as they end, for others to see; or null
    /* Receives every partition that is better than all before, whole, in [nvtxs], as soon as it is
     * there, and at the end the one that is delivered; or null. Called by one thread at a time. */
    void (*publish)(void *user, const int *part, const Found *found);
    void *user;
    SearchReport *report; // kept up to date; or null
};

/* Partitions a hypergraph into part [nvtxs].
 *   flat, constraints  in   checked by the caller: numbers in range, totals of weights at most
 *                           2147483646, groups that can be kept
 *   bounds             in   of the parts' weights
 * Returns what was found: excess is 0 where the bounds are kept, and they are if a packing that
 * takes the heaviest vertices first keeps them.
 * Source  Andre, Schlag, Schulz, Memetic multilevel hypergraph partitioning, GECCO 2018; Bustany,
 *         Kahng, Koutis, Pramanik, Wang, SpecPart, ICCAD 2022 (overlays of solutions). */
Found search_partition(const FlatHypergraph *flat, const Constraints *constraints,
                       const Bounds *bounds, Objective objective, const SearchOptions *options,
                       int *part);

#endif
