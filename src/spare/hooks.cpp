// SPDX-License-Identifier: MIT
/* spare/hooks.cpp: places for a breakpoint while debugging.
 *
 * CheckDegrees and CheckHGraph compute something afresh and report nothing: one stops in them and
 * looks. ComputeCut__ returns the cut that the pin counts show. The tests of the invariants are the
 * predicates, ..._ok.
 */
#include "spare/hooks.h"

#include <cassert>

#include "core/memory.h"
#include "refine/gains.h"

int ComputeCut__(const HGraph *graph)
{
    assert(graph->nnets <= 0 || (graph->ndeg[0] != nullptr && graph->ndeg[1] != nullptr));
    int cut = 0;
    for (int e = 0; e < graph->nnets; e++)
        if (graph->ndeg[0][e] != 0 && graph->ndeg[1][e] != 0) cut += graph->netwgt[e];
    return cut;
}

int CheckDegrees(const HGraph *graph)
{
    const size_t ncells = static_cast<size_t>(graph->ncells);
    const size_t nnets = static_cast<size_t>(graph->nnets);
    HGraph aside = *graph; // shares lists and weights
    aside.gain = ismalloc__(ncells, 0, "ComputePartitionParams: gain");
    aside.ndeg[0] = ismalloc__(nnets, 0, "ComputePartitionParams: ndeg[0]");
    aside.ndeg[1] = ismalloc__(nnets, 0, "ComputePartitionParams: ndeg[1]");
    ComputeInitGains__(&aside);
    QXfree__(&aside.gain, &aside.ndeg[0], &aside.ndeg[1], LTERM);
    return 1;
}

static bool listed(const int *list, int begin, int end, int wanted)
{
    for (int j = begin; j < end; j++)
        if (list[j] == wanted) return true;
    return false;
}

int CheckHGraph(const HGraph *graph)
{
    const int *const incptr = graph->incptr, *const incind = graph->incind;
    const int *const netptr = graph->netptr, *const netind = graph->netind;
    bool agree = true, repeated = false;
    for (int v = 0; v < graph->ncells; v++)
        for (int j = incptr[v]; j < incptr[v + 1]; j++)
            agree &= listed(netind, netptr[incind[j]], netptr[incind[j] + 1], v);
    for (int e = 0; e < graph->nnets; e++)
        for (int j = netptr[e]; j < netptr[e + 1]; j++)
            agree &= listed(incind, incptr[netind[j]], incptr[netind[j] + 1], e);
    for (int e = 0; e < graph->nnets; e++)
        for (int j = netptr[e]; j + 1 < netptr[e + 1]; j++) repeated |= netind[j] == netind[j + 1];
    static_cast<void>(agree && !repeated); // for a breakpoint: the hook itself reports nothing
    return 1;
}

int CheckHeap(const PQueue *)
{
    return 1;
}
