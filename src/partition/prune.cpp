// SPDX-License-Identifier: MIT
/* partition/prune.cpp: leaving out large hyperedges.
 *
 * A large hyperedge is cut almost always, and would make matching and gains costly. No map back is
 * kept: the cut on the whole hypergraph is measured from the sides of the vertices. Circuits rarely
 * have any; the copy then borrows all arrays, which saves a fifth of the memory.
 */
#include "partition/prune.h"

#include <cassert>
#include <cstdlib>

#include "core/memory.h"
#include "core/vectors.h"

bool has_large_nets(const PartCtrl *ctrl, const HGraph *graph)
{
    int e = 0;
    while (e < graph->nnets && net_size(graph, e) <= ctrl->maxnetsize) e++;
    return e < graph->nnets;
}

/* What is kept of the hyperedges. */
struct Kept {
    int nnets, npins;
};

static Kept count_kept(const PartCtrl *ctrl, const HGraph *graph)
{
    Kept kept = {0, 0};
    for (int e = 0; e < graph->nnets; e++) {
        if (net_size(graph, e) > ctrl->maxnetsize) continue;
        kept.nnets++;
        kept.npins += net_size(graph, e);
    }
    return kept;
}

static void copy_kept(const PartCtrl *ctrl, const HGraph *graph, Kept kept, HGraph *sgraph)
{
    const size_t nnets = static_cast<size_t>(kept.nnets);
    sgraph->netptr = imalloc__(nnets + 1, "PruneHGraph: snetptr");
    sgraph->netind = imalloc__(static_cast<size_t>(kept.npins), "PruneHGraph: snetind");
    sgraph->netwgt = imalloc__(nnets, "PruneHGraph: sgraph->netwgt");
    sgraph->netptr[0] = 0;
    int used = 0, npins = 0;
    for (int e = 0; e < graph->nnets; e++) {
        if (net_size(graph, e) > ctrl->maxnetsize) continue;
        for (int j = graph->netptr[e]; j < graph->netptr[e + 1]; j++)
            sgraph->netind[npins++] = graph->netind[j];
        sgraph->netwgt[used] = graph->netwgt[e];
        sgraph->netptr[++used] = npins;
    }
    CreateIncidentHGraph__(sgraph);
    assert(used == kept.nnets && npins == kept.npins);
    sgraph->cellwgt = imalloc__(static_cast<size_t>(graph->ncells), "PruneHGraph: sgraph->cellwgt");
    icopy__(graph->ncells, graph->cellwgt, sgraph->cellwgt);
}

static void borrow_all(const HGraph *graph, HGraph *sgraph)
{
    assert(graph->incptr != nullptr && !graph->borrows); // an owner, which outlives sgraph
    sgraph->borrows = true;
    sgraph->netptr = graph->netptr;
    sgraph->netind = graph->netind;
    sgraph->netwgt = graph->netwgt;
    sgraph->incptr = graph->incptr;
    sgraph->incind = graph->incind;
    sgraph->adjwgt = graph->adjwgt;
    sgraph->edgewgt = graph->edgewgt;
    sgraph->cellwgt = graph->cellwgt;
}

HGraph *PruneHGraph__(const PartCtrl *ctrl, const HGraph *graph)
{
    HGraph *const sgraph = CreateHGraph__();
    const Kept kept = count_kept(ctrl, graph);
    assert(kept.nnets <= graph->nnets && kept.npins <= graph->netptr[graph->nnets]);
    sgraph->ncells = graph->ncells;
    sgraph->nfixed = graph->nfixed;
    sgraph->nnets = kept.nnets;
    if (kept.nnets == graph->nnets)
        borrow_all(graph, sgraph);
    else
        copy_kept(ctrl, graph, kept, sgraph);
    return sgraph;
}
