// SPDX-License-Identifier: MIT
/* refine/uncoarsen.cpp: uncoarsening of one multilevel bisection.
 *
 * True between levels: where is a bisection of the current level, islands included, and no coarser
 * level exists. The coarsest level itself is not refined here; the initial bisection, or the
 * V-cycle that brought it, has done so.
 */
#include "refine/uncoarsen.h"

#include <cassert>

#include "core/errors.h"
#include "core/heavy_assert.h"
#include "core/memory.h"
#include "core/timers.h"
#include "core/islands.h"
#include "refine/balance.h"
#include "refine/fm.h"
#include "refine/gains.h"
#include "refine/oneway.h"

constexpr int EEFM_PASSES = 3;
constexpr float EEFM_FRACTION = 0.1f; // of the vertices moved above the best cut
constexpr int EEFM_FULL_LEVELS = 2;   // levels next to the coarsest that get full FM instead

void refine_whole(PartCtrl *ctrl, HGraph *graph)
{
    if (ctrl->heavycells)
        Refine_FM2__(ctrl, graph, FM_PASSES);
    else
        Refine_FM__(ctrl, graph, FM_PASSES);
}

static void refine_early_exit(PartCtrl *ctrl, HGraph *graph)
{
    if (ctrl->heavycells)
        Refine_EEFM2__(ctrl, graph, EEFM_PASSES, EEFM_FRACTION);
    else
        Refine_EEFM__(ctrl, graph, EEFM_PASSES, EEFM_FRACTION);
}

static void refine_level(PartCtrl *ctrl, HGraph *graph, int coarsest)
{
    assert(graph->ncells > 0 && graph->level <= coarsest);
    HEAVY_ASSERT(hgraph_ok(graph, HG_LISTS | HG_INCIDENCE | HG_WHERE));
    Balance__(ctrl, graph);
    switch (refine_scheme(ctrl)) {
    case RTYPE_FM:
        refine_whole(ctrl, graph);
        break;
    case RTYPE_ONEWAY:
        Refine_OneWayFM__(ctrl, graph, FM_PASSES);
        refine_whole(ctrl, graph);
        break;
    case RTYPE_EEFM:
        if (graph->level >= coarsest - EEFM_FULL_LEVELS)
            refine_whole(ctrl, graph);
        else
            refine_early_exit(ctrl, graph);
        break;
    case RTYPE_FM2:
        Refine_FM2__(ctrl, graph, FM_PASSES);
        break;
    case RTYPE_NONE:
        break;
    default:
        errexit__("Unknown refinement type: %d\n", ctrl->RType);
    }
}

void Refine__(PartCtrl *ctrl, HGraph *orggraph, HGraph *graph)
{
    const int coarsest = graph->level;
    HEAVY_ASSERT(ctrl_ok(ctrl));
    start_timer(ctrl, TIME_UNCOARSENING);
    while (graph->finer != nullptr && graph != orggraph) {
        HGraph *const finer = graph->finer;
        ProjectPartition__(ctrl, graph);
        graph = finer;
        assert(graph->coarser == nullptr);
        start_timer(ctrl, TIME_REFINEMENT);
        if (graph->ncells > 0)
            refine_level(ctrl, graph, coarsest);
        else
            ComputeInitGains__(graph);
        PartitionIslands__(graph);
        stop_timer(ctrl, TIME_REFINEMENT);
        if (graph == orggraph) CombineIslands__(orggraph);
    }
    stop_timer(ctrl, TIME_UNCOARSENING);
}

/* Orders the vertices of graph by the order of their coarse vertices, so that each cluster of any
 * coarser level stands together. */
static void order_by_clusters(const HGraph *cgraph, HGraph *graph)
{
    const int n = graph->ncells, ncoarse = cgraph->ncells + cgraph->nislands;
    int *next = ismalloc__(static_cast<size_t>(ncoarse), 0, "ProjectPartition: next");
    int placed = 0;
    assert(graph->nearby == nullptr);
    for (int v = 0; v < n; v++) next[graph->cellmap[v]]++;
    for (int i = 0; i < ncoarse; i++) {
        const int c = cgraph->nearby != nullptr && i < cgraph->ncells ? cgraph->nearby[i] : i;
        const int size = next[c];
        next[c] = placed;
        assert(size >= 0 && placed + size <= n);
        placed += size;
    }
    graph->nearby = imalloc__(static_cast<size_t>(n), "ProjectPartition: graph->nearby");
    for (int v = 0; v < n; v++) graph->nearby[next[graph->cellmap[v]]++] = v;
    QXfree__(&next, LTERM);
}

void ProjectPartition__(PartCtrl *ctrl, HGraph *cgraph)
{
    HGraph *const graph = cgraph->finer;
    assert(graph != nullptr);
    HEAVY_ASSERT(hgraph_ok(cgraph, HG_WHERE));
    start_timer(ctrl, TIME_PROJECTION);
    AllocateRefinementMemory__(graph);
    for (int v = 0; v < graph->ncells; v++) graph->where[v] = cgraph->where[graph->cellmap[v]];
    if (graph->finer != nullptr) order_by_clusters(cgraph, graph);
    FreeHGraph__(cgraph);
    graph->coarser = nullptr;
    stop_timer(ctrl, TIME_PROJECTION);
}
