/* SPDX-License-Identifier: MIT */
/* search/bisect.h: a partition from scratch by recursive bisection within bounds on the end. */
#ifndef ZORPEL_SEARCH_BISECT_H
#define ZORPEL_SEARCH_BISECT_H

#include "search/task.h"

/* How bisections are made. */
struct BisectOptions {
    int nruns;      // of the engine, each bisection
    int vcycle;     // VCycleMode
    int ctype;      // MatchScheme
    int maxnetsize; // pins: larger hyperedges stay out of coarsening
    int seed;
};

/* Partitions graph (lists and weights; where incidence is missing it is made) into part [ncells]:
 * every bisection may use a share of the room that the bounds of its parts leave, the deeper the
 * recursion still has to go the smaller. The bounds need not hold at the end. */
void bisect_recursively(const SearchTask *task, const HGraph *graph, const BisectOptions *options,
                        int *part);

#endif
