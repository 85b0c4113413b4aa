/* SPDX-License-Identifier: MIT */
/* search/reduce.h: from what a caller hands over to what the search works on, and back. */
#ifndef ZORPEL_SEARCH_REDUCE_H
#define ZORPEL_SEARCH_REDUCE_H

#include "search/task.h"

/* A hypergraph as flat arrays, as the library's callers have it. */
struct FlatHypergraph {
    int nvtxs, nhedges;
    const int *eptr, *eind; // [nhedges + 1], [eptr[nhedges]]
    const int *vwgts;       // [nvtxs]; null: 1 each
    const int *hewgts;      // [nhedges]; null: 1 each
};

/* What is known of vertices beforehand; either may be null. */
struct Constraints {
    const int *fixed; // [nvtxs] part of each vertex that is fixed, -1 for a free one
    const int *group; // [nvtxs] vertices of equal numbers >= 0 stay together; -1: in no group
};

/* The vertices that remain, as clusters of the caller's.
 *   R1  cluster[v] is the cluster of v, 0..nclusters-1
 *   R2  with fixed vertices the leading nparts clusters are those fixed in each part
 *   R3  the clusters below graph->ncells have hyperedges (but those of R2 perhaps); the others,
 *       islands, have none
 *   R4  weight[c] is the weight of c
 */
struct Reduction {
    HGraph *graph; // of the clusters that have hyperedges; identical hyperedges are merged
    int nclusters; // islands included
    int *cluster;  // [nvtxs]
    int *weight;   // [nclusters]
    int *fixed;    // [nclusters] part or -1; null: all free
};

/* Makes the reduction. Groups must not hold vertices that are fixed in different parts. */
void open_reduction(Reduction *reduction, const FlatHypergraph *flat,
                    const Constraints *constraints, int nparts);
void close_reduction(Reduction *reduction);

/* Tests R1 to R4. */
bool reduction_ok(const Reduction *reduction, const FlatHypergraph *flat, int nparts);

#endif
