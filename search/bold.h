/* SPDX-License-Identifier: MIT */
/* search/bold.h: refinement that leaves the bounds for a while. */
#ifndef ZORPEL_SEARCH_BOLD_H
#define ZORPEL_SEARCH_BOLD_H

#include "search/kway_fm.h"
#include "search/parts.h"

/* Refines within wider bounds, comes back into those of parts, refines again by at most nrounds
 * rounds, and keeps what came out if that is better. Returns the fall of the objective, which is
 * never negative where parts is within its bounds.
 *   work  in/out  open for the hypergraph of parts; its rows of gains are those of parts
 * Cost    as two calls of refine_kway_fm(), and a copy of the partition
 * Source  Maas, Gottesbueren, Seemaier, Parallel unconstrained local search for partitioning
 *         irregular graphs, ALENEX 2024. There nothing bounds the moves and a penalty slows them
 *         down; here wider bounds do. */
int64_t refine_boldly(Parts *parts, KwayFmWork *work, int nrounds, Random *random);

#endif
