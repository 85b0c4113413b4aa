/* SPDX-License-Identifier: MIT */
/* search/multilevel.h: one multilevel pass: down to a small hypergraph, partition it, up again. */
#ifndef ZORPEL_SEARCH_MULTILEVEL_H
#define ZORPEL_SEARCH_MULTILEVEL_H

#include "search/task.h"

/* How a pass goes. */
struct Pass {
    const int *label; // [ncells] vertices of different labels are never merged; null: all may be
    const int *start; // [ncells] a partition that the pass must not make worse; its parts are
                      // unions of labels; null: none
    int scheme;       // of coarsening: a MatchScheme, or with labels a RestrictedScheme
    int coarsest;     // vertices where coarsening ends
    int ntrials;      // partitions of the coarsest level that are tried, beside start
    int rounds;       // most of local refinement on a level
    bool flows;       // flows between parts on every level
    bool bold;        // refinement beyond the bounds and back on small levels
    uint64_t seed;
};

/* Makes a pass; part [ncells] gets the partition. Returns its objective. */
int64_t make_pass(const SearchTask *task, const Pass *pass, int *part);

#endif
