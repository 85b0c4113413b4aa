// SPDX-License-Identifier: MIT
/* coarsen/match_edges.cpp: matching of vertex pairs by heaviest connectivity.
 *
 * Vertices are visited by increasing degree, at random among equals; each free one takes the free
 * neighbour with the largest sum of weight / (size - 1) over shared hyperedges.
 */
#include "coarsen/match_edges.h"

#include "coarsen/contract.h"
#include "coarsen/grouping.h"
#include "coarsen/partner.h"
#include "core/heavy_assert.h"

constexpr PartnerRules FREE = {.star = false, .restricted = false, .survey = false};
constexpr PartnerRules FREE_SAME_PART = {.star = false, .restricted = true, .survey = false};

int FindCell__(PartnerSearch *search, int u)
{
    return find_partner<FREE>(search, u);
}

int CFindCell__(PartnerSearch *search, int u)
{
    return find_partner<FREE_SAME_PART>(search, u);
}

/* Groups v, which is no candidate from now on. */
static void take_vertex(Grouping *groups, PartnerSearch *search, int v)
{
    list_vertex(groups, v);
    search->table[v] = BARRED;
}

template <bool Restricted>
static void match_pairs(PartCtrl *ctrl, HGraph *graph, const int *where, const MatchWork *work,
                        Grouping *groups)
{
    const int *const perm = work->perm;
    order_by_degree(ctrl, graph, work->vpairs + graph->ncells, work->vpairs, work->perm);
    PartnerSearch search = open_search(ctrl, graph, where, work->htable);
    search.cellmap = groups->cellmap;
    for (int v = 0; v < graph->ncells; v++)
        if (groups->cellmap[v] != SINGLE) search.table[v] = BARRED;
    for (int i = 0; i < graph->ncells; i++) {
        const int u = perm[i];
        prefetch_partners(graph, perm, i);
        if (groups->cellmap[u] != SINGLE) continue;
        const int v = Restricted ? CFindCell__(&search, u) : FindCell__(&search, u);
        take_vertex(groups, &search, u);
        if (v >= 0) take_vertex(groups, &search, v);
        close_group(groups);
    }
    HEAVY_ASSERT(search_ok(&search, GroupedVertices::barred));
    close_search(&search);
    HEAVY_ASSERT(grouping_ok(graph, groups));
}

void match_free_vertices(PartCtrl *ctrl, HGraph *graph, const MatchWork *work, Grouping *groups)
{
    match_pairs<false>(ctrl, graph, nullptr, work, groups);
}

static Grouping open_pairs(HGraph *graph)
{
    const size_t n = static_cast<size_t>(graph->ncells);
    graph->cellmap = ismalloc__(n, SINGLE, "Match_Edges: graph->cellmap");
    graph->mptr = imalloc__(n + 1, "Match_Edges: graph->mptr");
    graph->mind = imalloc__(n, "Match_Edges: graph->mind");
    return open_grouping(graph);
}

void Match_Edges__(PartCtrl *ctrl, HGraph *graph, const MatchWork *work)
{
    Grouping groups = open_pairs(graph);
    match_pairs<false>(ctrl, graph, nullptr, work, &groups);
    CreateCoarseHGraph__(ctrl, graph, groups.ngroups);
}

void CMatch_Edges__(PartCtrl *ctrl, HGraph *graph, const int *where, const MatchWork *work)
{
    Grouping groups = open_pairs(graph);
    match_pairs<true>(ctrl, graph, where, work, &groups);
    CreateCoarseHGraph__(ctrl, graph, groups.ngroups);
}
