// SPDX-License-Identifier: MIT
/* coarsen/match_hedges.cpp: matching by whole hyperedges.
 *
 * Hyperedges are taken by decreasing weight, smaller ones first among equals. One routine serves
 * the three schemes: the phases after the first are optional.
 */
#include "coarsen/match_hedges.h"

#include <cassert>

#include "coarsen/contract.h"
#include "coarsen/grouping.h"
#include "coarsen/match_edges.h"
#include "core/heavy_assert.h"

/* Lists the hyperedges in perm by decreasing ncells x weight - size, which wraps. */
static void order_hyperedges(PartCtrl *ctrl, const HGraph *graph, int *perm, int *vpairs)
{
    KeyValue *const pairs = reinterpret_cast<KeyValue *>(vpairs);
    static_assert(sizeof(KeyValue) == 2 * sizeof(int)); // vpairs has two ints for each
    RandomPermute__(&ctrl->random, perm, graph->nnets, 1);
    for (int i = 0; i < graph->nnets; i++) {
        const int e = perm[i];
        const unsigned key =
            static_cast<unsigned>(graph->ncells) * static_cast<unsigned>(graph->netwgt[e]) -
            static_cast<unsigned>(net_size(graph, e));
        pairs[i] = {static_cast<int>(key), e};
    }
    dkeysort__(graph->nnets, pairs);
    for (int i = 0; i < graph->nnets; i++) perm[i] = pairs[i].val;
}

/* How many pins of a hyperedge must be free for them to be merged. */
enum class FreePins { all, most };

/* Merges the free vertices of hyperedges in the order of perm that have enough of them, if their
 * weight fits. */
static void match_hyperedges(const PartCtrl *ctrl, const HGraph *graph, const int *perm,
                             Grouping *groups, FreePins enough)
{
    for (int i = 0; i < graph->nnets; i++) {
        const int e = perm[i], begin = graph->netptr[e], end = graph->netptr[e + 1];
        int nfree = 0, weight = 0;
        for (int j = begin; j < end; j++) {
            const int v = graph->netind[j];
            if (groups->cellmap[v] != SINGLE) {
                if (enough == FreePins::all) break;
                continue;
            }
            nfree++;
            weight += graph->cellwgt[v];
        }
        const int size = end - begin;
        assert(nfree <= size && weight >= 0);
        const bool merged =
            enough == FreePins::most ? nfree > 0.5 * size : nfree == size && size > 0;
        if (!merged || weight > ctrl->MaxCellWgt) continue;
        for (int j = begin; j < end; j++)
            if (groups->cellmap[graph->netind[j]] == SINGLE) list_vertex(groups, graph->netind[j]);
        close_group(groups);
    }
}

struct HedgePhases {
    bool partial; // merge in hyperedges more than half free
    bool pairs;   // pair the vertices left over
};

static void match_by_hyperedges(PartCtrl *ctrl, HGraph *graph, const MatchWork *work,
                                HedgePhases phases)
{
    const size_t n = static_cast<size_t>(graph->ncells);
    graph->cellmap = ismalloc__(n, SINGLE, "HGraphMatch: graph->cellmap");
    graph->mptr = imalloc__(n + 1, "HGraphMatch: graph->mptr");
    graph->mind = imalloc__(n, "HGraphMatch: graph->mind");
    order_hyperedges(ctrl, graph, work->perm, work->vpairs);
    Grouping groups = open_grouping(graph);
    match_hyperedges(ctrl, graph, work->perm, &groups, FreePins::all);
    if (phases.partial) match_hyperedges(ctrl, graph, work->perm, &groups, FreePins::most);
    if (phases.pairs)
        match_free_vertices(ctrl, graph, work, &groups);
    else
        for (int v = 0; v < graph->ncells; v++)
            if (groups.cellmap[v] == SINGLE) group_alone(&groups, v);
    HEAVY_ASSERT(grouping_ok(graph, &groups));
    CreateCoarseHGraph__(ctrl, graph, groups.ngroups);
}

void Match_Hedges__(PartCtrl *ctrl, HGraph *graph, const MatchWork *work)
{
    match_by_hyperedges(ctrl, graph, work, {.partial = false, .pairs = false});
}

void Match_Hedges_Edges__(PartCtrl *ctrl, HGraph *graph, const MatchWork *work)
{
    match_by_hyperedges(ctrl, graph, work, {.partial = false, .pairs = true});
}

void Match_Hedges_PHedges_Edges__(PartCtrl *ctrl, HGraph *graph, const MatchWork *work)
{
    match_by_hyperedges(ctrl, graph, work, {.partial = true, .pairs = true});
}
