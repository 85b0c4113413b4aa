// SPDX-License-Identifier: MIT
/* kway/uncoarsen_kway.cpp: uncoarsening of a k-way partition.
 *
 * From the coarsest level to the one asked for: project, refine for the objective, give every
 * island to the part that is lightest then. A hyperedge that is uncut at the coarser level is uncut
 * after projection, so its pins are not counted. The coarser level is freed on the way.
 */
#include "kway/uncoarsen_kway.h"

#include <cassert>

#include "core/errors.h"
#include "core/numbers.h"
#include "core/timers.h"
#include "core/vectors.h"
#include "kway/kway_gains.h"
#include "kway/refine_random.h"
#include "core/islands.h"

/* Only cut hyperedges of the coarser level, which has been refined, can be cut now. */
static void note_uncut_nets(const HGraph *cgraph, HGraph *graph)
{
    for (int e = 0; e < graph->nnets; e++) {
        const int d = graph->netmap[e];
        assert(-1 <= d && d < cgraph->nnets);
        const int uncut = (d < 0) | (cgraph->nrinfo[at_least_0(d)].ndegrees == 1);
        graph->nrinfo[e].ndegrees = UNCUT * uncut;
    }
}

void ProjectKwayPartition__(PartCtrl *ctrl, HGraph *cgraph)
{
    HGraph *const graph = cgraph->finer;
    assert(graph != nullptr);
    start_timer(ctrl, TIME_PROJECTION);
    AllocateKwayRefinementMemory__(ctrl, graph);
    for (int v = 0; v < graph->ncells; v++) graph->where[v] = cgraph->where[graph->cellmap[v]];
    if (cgraph->nrinfo != nullptr && cgraph->nnets > 0) note_uncut_nets(cgraph, graph);
    FreeHGraph__(cgraph);
    graph->coarser = nullptr;
    stop_timer(ctrl, TIME_PROJECTION);
}

void PartitionIslandsKway__(const PartCtrl *ctrl, HGraph *graph)
{
    for (int v = graph->ncells; v < graph->ncells + graph->nislands; v++) {
        const int part = iamin__(ctrl->nparts, graph->kpwgts);
        assert(graph->cellwgt[v] >= 0);
        graph->where[v] = part;
        graph->kpwgts[part] += graph->cellwgt[v];
    }
}

bool refine_objective(PartCtrl *ctrl, HGraph *graph, KwayRecords records)
{
    const KwayObjective objective = kway_objective(ctrl);
    if (objective != OBJECTIVE_CUT && objective != OBJECTIVE_SOED) return false;
    refine_kway_random(ctrl, graph, KWAY_PASSES, objective, records);
    return true;
}

static void refine_kway_level(PartCtrl *ctrl, HGraph *graph)
{
    if (graph->ncells > 0 && refine_objective(ctrl, graph, KwayRecords::dropped)) return;
    if (graph->ncells > 0 && kway_objective(ctrl) != OBJECTIVE_NONE)
        errexit__("Unknown refinement type: %d\n", ctrl->RType);
    ComputeInitKwayGains__(ctrl, graph); // for the part weights, which the islands need
}

void RefineKway__(PartCtrl *ctrl, HGraph *graph, HGraph *cgraph)
{
    start_timer(ctrl, TIME_UNCOARSENING);
    while (cgraph->finer != nullptr && cgraph != graph) {
        HGraph *const finer = cgraph->finer;
        ProjectKwayPartition__(ctrl, cgraph);
        cgraph = finer;
        assert(cgraph->coarser == nullptr);
        start_timer(ctrl, TIME_REFINEMENT);
        refine_kway_level(ctrl, cgraph);
        PartitionIslandsKway__(ctrl, cgraph);
        stop_timer(ctrl, TIME_REFINEMENT);
        if (cgraph == graph) CombineIslands__(graph);
    }
    stop_timer(ctrl, TIME_UNCOARSENING);
}
