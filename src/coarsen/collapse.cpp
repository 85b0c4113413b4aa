// SPDX-License-Identifier: MIT
/* coarsen/collapse.cpp: merging of identical hyperedges in bare lists.
 *
 * Splitting a bisected hypergraph often leaves several hyperedges with the same pins; one of their
 * summed weight takes their place. The key adds the position term that contraction's key
 * multiplies by: each keeps its own.
 */
#include "coarsen/collapse.h"

#include <cstdlib>

#include "coarsen/merge_nets.h"
#include "core/memory.h"

static int summed_key(int size, const int *pins)
{
    unsigned sum = 0;
    for (int j = 0; j < size; j++)
        sum += static_cast<unsigned>(pins[j]) + 100 * (static_cast<unsigned>(j) + 1);
    return static_cast<int>(static_cast<unsigned>(size) + 100 * sum);
}

void CollapseSameHEdges__(const NetLists *nets, NetLists *merged)
{
    const int nnets = nets->nnets;
    const size_t n = static_cast<size_t>(nnets);
    // one text for this array and contraction's
    KeyValue *pairs = alloc_array<KeyValue>(n, "CreateCoarseHGraph: cand");
    for (int e = 0; e < nnets; e++) {
        const int size = nets->netptr[e + 1] - nets->netptr[e];
        int *const pins = nets->netind + nets->netptr[e];
        iintsort__(size, pins);
        pairs[e] = {size > 0 ? summed_key(size, pins) : 0, e};
    }
    merged->netptr = imalloc__(n + 1, "CollapseSameHEdges: dnetptr");
    merged->netind =
        imalloc__(static_cast<size_t>(nets->netptr[nnets]), "CollapseSameHEdges: dnetind");
    merged->netwgt = imalloc__(n, "CollapseSameHEdges: dnetwgt");
    int *seen = ismalloc__(n, -1, "CollapseSameHEdges: dseen");
    merge_identical(nets, pairs, merged, nullptr, seen);
    QXfree__(&pairs, &seen, LTERM);
}
