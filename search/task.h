/* SPDX-License-Identifier: MIT */
/* search/task.h: what the search works on, and for: one hypergraph, its bounds and the objective.
 *
 * The hypergraph is made ready first (search/reduce.h): vertices that are fixed in a part are one
 * vertex, its number the part's; groups are single vertices; there are no vertices without
 * hyperedges and no hyperedges of less than two vertices.
 */
#ifndef ZORPEL_SEARCH_TASK_H
#define ZORPEL_SEARCH_TASK_H

#include "search/parts.h"

struct SearchTask {
    HGraph *graph; // lists, incidence, weights; nfixed is 0 or nparts
    const Bounds *bounds;
    Objective objective;
    const int *fixed;           // [ncells] as in Parts; the leading nfixed vertices, or null
    int maxnetsize;             // larger hyperedges stay out of coarsening
    const volatile int *cancel; // not 0: end soon with what is there; or null
};

inline bool is_cancelled(const SearchTask *task)
{
    return was_set(task->cancel);
}

#endif
