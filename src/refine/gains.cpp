// SPDX-License-Identifier: MIT
/* refine/gains.cpp: two-way refinement arrays, and gains, pin counts and cut from scratch.
 *
 * The plain rule that everything incremental must agree with: a hyperedge counts for a vertex that
 * is alone on its side of it, and against one whose side holds all of it. Two sweeps: pins of each
 * side of each hyperedge, then the hyperedges of each vertex. Source: Fiduccia & Mattheyses, A
 * linear-time heuristic for improving network partitions, DAC 1982.
 */
#include "refine/gains.h"

#include <cassert>
#include <cstdlib>

#include "core/heavy_assert.h"
#include "core/memory.h"
#include "core/vectors.h"
#include "core/work_counts.h"

void AllocateRefinementMemory__(HGraph *graph)
{
    const size_t ncells = static_cast<size_t>(graph->ncells);
    const size_t nnets = static_cast<size_t>(graph->nnets);
    const size_t nislands = static_cast<size_t>(graph->nislands);
    assert(graph->where == nullptr && graph->gain == nullptr && graph->ndeg[0] == nullptr);
    graph->where = imalloc__(ncells + nislands, "AllocateRefinementMemory: where");
    graph->gain = imalloc__(ncells, "AllocateRefinementMemory: gain");
    graph->ndeg[0] = imalloc__(nnets, "AllocateRefinementMemory: ndeg[0]");
    graph->ndeg[1] = imalloc__(nnets, "AllocateRefinementMemory: ndeg[1]");
}

/* Counts the pins of each side of each hyperedge; returns the cut. */
static int count_pins(const HGraph *graph, int *ndeg0, int *ndeg1)
{
    const int *const netptr = graph->netptr, *const netind = graph->netind;
    const int *const where = graph->where;
    int cut = 0;
    count_work(WORK_GAIN_PINS, netptr[graph->nnets]);
    for (int e = 0; e < graph->nnets; e++) {
        int ones = 0;
        for (int j = netptr[e]; j < netptr[e + 1]; j++) ones += where[netind[j]];
        assert(0 <= ones && ones <= netptr[e + 1] - netptr[e]);
        ndeg1[e] = ones;
        ndeg0[e] = netptr[e + 1] - netptr[e] - ones;
        if (ndeg0[e] != 0 && ndeg1[e] != 0) cut += graph->netwgt[e];
    }
    return cut;
}

/* Gain of a vertex from the pin counts of its own side and of the other. */
static int gain_of(const HGraph *graph, int v, const int *own, const int *other)
{
    int gain = 0;
    for (int j = graph->incptr[v]; j < graph->incptr[v + 1]; j++) {
        const int e = graph->incind[j];
        if (other[e] == 0)
            gain -= graph->netwgt[e];
        else if (own[e] == 1)
            gain += graph->netwgt[e];
    }
    return gain;
}

static void compute_gains(const HGraph *graph, int *const ndeg[2], int *gain)
{
    count_work(WORK_GAIN_PINS, graph->incptr[graph->ncells]);
    for (int v = 0; v < graph->ncells; v++) {
        const int side = graph->where[v];
        assert(side == 0 || side == 1);
        gain[v] = gain_of(graph, v, ndeg[side], ndeg[1 - side]);
    }
}

void ComputeInitGains__(HGraph *graph)
{
    graph->mincut = count_pins(graph, graph->ndeg[0], graph->ndeg[1]);
    compute_gains(graph, graph->ndeg, graph->gain);
    graph->pwgts[0] = graph->pwgts[1] = 0;
    for (int v = 0; v < graph->ncells; v++) graph->pwgts[graph->where[v]] += graph->cellwgt[v];
    HEAVY_ASSERT(hgraph_ok(graph, HG_LISTS | HG_INCIDENCE | HG_WHERE | HG_GAINS));
}
