/* SPDX-License-Identifier: MIT */
/* search/rebalance.h: from any partition into its bounds. */
#ifndef ZORPEL_SEARCH_REBALANCE_H
#define ZORPEL_SEARCH_REBALANCE_H

#include "search/kway_fm.h"
#include "search/parts.h"

/* Moves vertices out of parts that are too heavy, and into parts that are too light, those first
 * that cost least for what they weigh, until all bounds hold or no move lowers the excess. Never
 * raises the excess. Returns true if the bounds hold.
 * Source  Maas, Gottesbueren, Seemaier, Parallel unconstrained local search for partitioning
 *         irregular graphs, ALENEX 2024 (order of moves). */
bool rebalance(Parts *parts, KwayFmWork *work);

/* By how much a part p of this weight would be outside its bounds. */
int64_t excess_at(const Bounds *bounds, int p, int64_t weight);

/* By how much the parts of n vertices, where[v] of v, are outside their bounds, in all. */
int64_t excess_of_partition(const Bounds *bounds, int n, const int *cellwgt, const int *where);

/* Gives every free vertex a part anew, the heaviest first, each its part in where if that has room,
 * else the part with the most room by its bound; where [ncells] is changed. Returns the excess.
 * Source  Graham, Bounds on multiprocessing timing anomalies, SIAM J. Applied Mathematics 17(2),
 *         1969 (longest first). */
int64_t pack(const HGraph *graph, const Bounds *bounds, const int *fixed, bool keep, int *where);

#endif
