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

void CollapseSameHEdges__(int nnets, const int *netptr, int *netind, const int *netwgt,
                          int *out_nnets, int **out_netptr, int **out_netind, int **out_netwgt)
{
    const size_t n = static_cast<size_t>(nnets);
    // one text for this array and contraction's
    KeyValue *pairs = alloc_array<KeyValue>(n, "CreateCoarseHGraph: cand");
    for (int e = 0; e < nnets; e++) {
        const int size = netptr[e + 1] - netptr[e];
        int *const pins = netind + netptr[e];
        iintsort__(size, pins);
        pairs[e] = {size > 0 ? summed_key(size, pins) : 0, e};
    }
    const NetLists nets = {nnets, const_cast<int *>(netptr), netind, const_cast<int *>(netwgt)};
    NetLists merged;
    merged.netptr = imalloc__(n + 1, "CollapseSameHEdges: dnetptr");
    merged.netind = imalloc__(static_cast<size_t>(netptr[nnets]), "CollapseSameHEdges: dnetind");
    merged.netwgt = imalloc__(n, "CollapseSameHEdges: dnetwgt");
    int *seen = ismalloc__(n, -1, "CollapseSameHEdges: dseen");
    merge_identical(&nets, pairs, &merged, nullptr, seen);
    QXfree__(&pairs, &seen, LTERM);
    *out_nnets = merged.nnets;
    *out_netptr = merged.netptr;
    *out_netind = merged.netind;
    *out_netwgt = merged.netwgt;
}
