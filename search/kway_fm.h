/* SPDX-License-Identifier: MIT */
/* search/kway_fm.h: localized k-way Fiduccia-Mattheyses refinement. */
#ifndef ZORPEL_SEARCH_KWAY_FM_H
#define ZORPEL_SEARCH_KWAY_FM_H

#include "search/gain_cache.h"
#include "search/gain_heap.h"
#include "search/parts.h"
#include "search/search_random.h"

/* Work arrays, as long as one hypergraph is refined. */
struct KwayFmWork {
    GainHeap heap;
    GainCache cache;
    int *target;  // [ncells] part of the best move of a vertex in the heap
    int *moved;   // [ncells] number of the round in which the vertex moved last
    int *updated; // [ncells] number of the move after which the vertex was brought up to date
    int *seeds;   // [ncells] vertices at the boundary
    int *moves;   // [ncells] vertices moved by the present search, in order
    int *origins; // [ncells] the part that each came from
    int round;
    int nmoves;                 // moves numbered so far
    const volatile int *cancel; // not 0: end soon; or null
};

void open_kway_fm(KwayFmWork *work, const HGraph *graph, int nparts, Objective objective);
void close_kway_fm(KwayFmWork *work);

/* Improves parts by at most nrounds rounds. A round starts searches from all vertices at the
 * boundary in random order, a few at a time; each search moves the vertex of the highest gain that
 * keeps the bounds, whatever its sign, each vertex at most once a round, gives up when further
 * moves are unlikely to pay, and goes back to its best point. Returns the fall of the objective.
 * Bounds that hold are kept; parts above their bounds may only get lighter, those below heavier.
 *   work  in/out  open for the hypergraph of parts; its rows of gains are those of parts
 * Cost    a round looks at the hyperedges of the vertices near the boundary some times
 * Source  Sanchis, Multiple-way network partitioning, IEEE Trans. Computers 38(1), 1989; Osipov,
 *         Sanders, n-level graph partitioning, ESA 2010 (when to stop); Akhremtsev, Heuer, Sanders,
 *         Schlag, Engineering a direct k-way hypergraph partitioning algorithm, ALENEX 2017. */
int64_t refine_kway_fm(Parts *parts, KwayFmWork *work, int nrounds, Random *random);

#endif
