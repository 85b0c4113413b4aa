/* partition/prune.cpp: leaving out large hyperedges.
 *
 * A large hyperedge is cut almost always, and would make matching and gains costly. No map back is
 * kept: the cut on the whole hypergraph is measured from the sides of the vertices.
 */
#include "partition/prune.h"

#include <cstdlib>

#include "core/memory.h"
#include "core/vectors.h"

HGraph *PruneHGraph__(const PartCtrl *ctrl, const HGraph *graph)
{
    HGraph *const sgraph = CreateHGraph__();
    sgraph->ncells = graph->ncells;
    sgraph->nfixed = graph->nfixed;

    int kept = 0, npins = 0;
    for (int e = 0; e < graph->nnets; e++) {
        if (net_size(graph, e) > ctrl->maxnetsize) continue;
        kept++;
        npins += net_size(graph, e);
    }
    sgraph->nnets = kept;
    sgraph->netptr = imalloc__(static_cast<size_t>(kept) + 1, "PruneHGraph: snetptr");
    sgraph->netind = imalloc__(static_cast<size_t>(npins), "PruneHGraph: snetind");
    sgraph->netwgt = imalloc__(static_cast<size_t>(kept), "PruneHGraph: sgraph->netwgt");
    sgraph->netptr[0] = 0;
    kept = npins = 0;
    for (int e = 0; e < graph->nnets; e++) {
        if (net_size(graph, e) > ctrl->maxnetsize) continue;
        for (int j = graph->netptr[e]; j < graph->netptr[e + 1]; j++)
            sgraph->netind[npins++] = graph->netind[j];
        sgraph->netwgt[kept] = graph->netwgt[e];
        sgraph->netptr[++kept] = npins;
    }
    CreateIncidentHGraph__(sgraph);
    sgraph->cellwgt = imalloc__(static_cast<size_t>(graph->ncells), "PruneHGraph: sgraph->cellwgt");
    icopy__(graph->ncells, graph->cellwgt, sgraph->cellwgt);
    return sgraph;
}
