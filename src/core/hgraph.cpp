// SPDX-License-Identifier: MIT
/* core/hgraph.cpp: the hypergraph record: creation, release, incidence, derived weights.
 *
 * Incidence comes from the pin lists by counting transposition (count, prefix sum, place), so each
 * vertex lists its hyperedges in increasing order without a sort, in O(pins).
 * Source: Gustavson, Two fast algorithms for sparse matrices, ACM TOMS 4(3), 1978.
 */
#include "core/hgraph.h"

#include <cassert>
#include <cstdlib>
#include <cstring>

#include "core/heavy_assert.h"
#include "core/memory.h"
#include "core/vectors.h"
#include "core/ctrl.h"

void InitHGraph__(HGraph *graph)
{
    memset(graph, 0, sizeof *graph);
    graph->ncells = graph->nnets = graph->nfixed = graph->level = -1;
    graph->pwgts[0] = graph->pwgts[1] = -1;
}

HGraph *CreateHGraph__()
{
    HGraph *const graph = alloc_array<HGraph>(1, "CreateCoarseHGraph: graph");
    InitHGraph__(graph);
    return graph;
}

void FreeHGraph__(HGraph *graph)
{
    FreeRootHGraph__(graph);
    if (!graph->borrows)
        QXfree__(&graph->incptr, &graph->incind, &graph->netptr, &graph->netind, &graph->cellwgt,
                 &graph->netwgt, &graph->adjwgt, &graph->edgewgt, LTERM);
    QXfree__(&graph->nearby, LTERM);
    free(graph);
}

void free_cycle_arrays(HGraph *graph)
{
    QXfree__(&graph->cellmap, &graph->netmap, &graph->mptr, &graph->mind, &graph->gain,
             &graph->ndeg[0], &graph->ndeg[1], &graph->islandmap, LTERM);
}

void free_kway_arrays(HGraph *graph)
{
    QXfree__(&graph->nrinfo, &graph->crinfo, &graph->nrdata, &graph->crdata, &graph->kpwgts,
             &graph->kplace, &graph->islandmap, LTERM);
}

void FreeRootHGraph__(HGraph *graph)
{
    free_cycle_arrays(graph);
    free_kway_arrays(graph);
    QXfree__(&graph->where, LTERM);
}

static void transpose_pins(HGraph *graph)
{
    const int ncells = graph->ncells, nnets = graph->nnets;
    const int *const netptr = graph->netptr, *const netind = graph->netind;
    const size_t n = static_cast<size_t>(ncells);
    const int npins = netptr[nnets];
    assert(ncells >= 0 && nnets >= 0 && netptr[0] == 0 && npins >= 0);
    int *const incptr = ismalloc__(n + 1, 0, "CreateIncidentHGraph: incptr");
    int *const incind =
        imalloc__(static_cast<size_t>(npins), "CreateIncidentHGraph: graph->incind");
    for (int j = 0; j < npins; j++) {
        assert(0 <= netind[j] && netind[j] < ncells);
        incptr[netind[j]]++;
    }
    counts_to_starts(ncells, incptr);
    for (int e = 0; e < nnets; e++)
        for (int j = netptr[e]; j < netptr[e + 1]; j++) incind[incptr[netind[j]]++] = e;
    ends_to_starts(ncells, incptr);
    graph->incptr = incptr;
    graph->incind = incind;
}

float edge_weight(int netwgt, int size)
{
    return static_cast<float>(static_cast<double>(netwgt) / (size - 1));
}

void CreateIncidentHGraph__(HGraph *graph)
{
    const int ncells = graph->ncells, nnets = graph->nnets;
    transpose_pins(graph);
    graph->adjwgt = imalloc__(static_cast<size_t>(ncells), "CreateIncidentHGraph: adjwgt");
    for (int v = 0; v < ncells; v++) {
        int sum = 0;
        for (int j = graph->incptr[v]; j < graph->incptr[v + 1]; j++)
            sum += graph->netwgt[graph->incind[j]];
        graph->adjwgt[v] = sum;
    }
    graph->edgewgt = fmalloc__(static_cast<size_t>(nnets), "CreateIncidentHGraph: graph->edgewgt");
    for (int e = 0; e < nnets; e++)
        graph->edgewgt[e] = edge_weight(graph->netwgt[e], net_size(graph, e));
    HEAVY_ASSERT(hgraph_ok(graph, HG_LISTS));
}

void mark_cut_nets(const HGraph *graph, const int *where, bool *cutnets)
{
    for (int e = 0; e < graph->nnets; e++)
        cutnets[e] = end_of_part(graph, where, e) < graph->netptr[e + 1];
}

int ComputeMaxCellWgt__(PartCtrl *ctrl, int n, const int *cellwgt)
{
    assert(ctrl->CoarsenTo > 0);
    long long total = sum_wide(n, cellwgt);
    const long long limit = 2 * total / ctrl->CoarsenTo;
    int nheavy = 0;
    for (int v = 0; v < n; v++) {
        if (cellwgt[v] <= limit) continue;
        total -= cellwgt[v];
        nheavy++;
    }
    assert(nheavy < ctrl->CoarsenTo); // each of them has more than a share
    ctrl->heavycells = nheavy > 0;
    return static_cast<int>(2 * total / (ctrl->CoarsenTo - nheavy));
}
