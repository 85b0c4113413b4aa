/* coarsen/match_edges.cpp: matching of vertex pairs by heaviest connectivity.
 *
 * Vertices are visited by increasing degree, at random among equals; each free one takes the free
 * neighbour with the largest sum of weight / (size - 1) over shared hyperedges.
 */
#include "coarsen/match_edges.h"

#include "coarsen/contract.h"
#include "coarsen/grouping.h"
#include "coarsen/partner.h"
#include "core/vectors.h"

constexpr PartnerRules FREE = {false, false, false}, FREE_SAME_PART = {false, true, false};

int FindCell__(const PartCtrl *ctrl, int u, const int *incptr, const int *incind, const int *netptr,
               const int *netind, const int *cellwgt, const float *edgewgt, const int *cellmap,
               int *htable, Candidates *list)
{
    return find_partner<FREE>(ctrl, u, incptr, incind, netptr, netind, cellwgt, edgewgt, cellmap,
                              htable, nullptr, nullptr, list);
}

int CFindCell__(const PartCtrl *ctrl, int u, const int *incptr, const int *incind,
                const int *netptr, const int *netind, const int *cellwgt, const float *edgewgt,
                const int *cellmap, int *htable, const int *where, Candidates *list)
{
    return find_partner<FREE_SAME_PART>(ctrl, u, incptr, incind, netptr, netind, cellwgt, edgewgt,
                                        cellmap, htable, nullptr, where, list);
}

template <bool Restricted>
static void match_pairs(PartCtrl *ctrl, HGraph *graph, const int *where, int *perm, int *htable,
                        int *vpairs, Grouping *groups)
{
    order_by_degree(ctrl, graph, vpairs + graph->ncells, vpairs, perm);
    Candidates list;
    open_candidates(&list, graph, where, htable);
    for (int v = 0; v < graph->ncells; v++)
        if (groups->cellmap[v] != SINGLE) htable[v] = BARRED;
    for (int i = 0; i < graph->ncells; i++) {
        const int u = perm[i];
        prefetch_partners(graph, perm, i);
        if (groups->cellmap[u] != SINGLE) continue;
        const int v =
            Restricted
                ? CFindCell__(ctrl, u, graph->incptr, graph->incind, graph->netptr, graph->netind,
                              graph->cellwgt, graph->edgewgt, groups->cellmap, htable, where, &list)
                : FindCell__(ctrl, u, graph->incptr, graph->incind, graph->netptr, graph->netind,
                             graph->cellwgt, graph->edgewgt, groups->cellmap, htable, &list);
        list_vertex(groups, u);
        htable[u] = BARRED;
        if (v >= 0) {
            list_vertex(groups, v);
            htable[v] = BARRED;
        }
        close_group(groups);
    }
    close_candidates(&list, graph, htable);
}

void match_free_vertices(PartCtrl *ctrl, HGraph *graph, int *perm, int *htable, int *vpairs,
                         Grouping *groups)
{
    match_pairs<false>(ctrl, graph, nullptr, perm, htable, vpairs, groups);
}

static Grouping open_pairs(HGraph *graph)
{
    const size_t n = static_cast<size_t>(graph->ncells);
    graph->cellmap = ismalloc__(n, SINGLE, "Match_Edges: graph->cellmap");
    graph->mptr = imalloc__(n + 1, "Match_Edges: graph->mptr");
    graph->mind = imalloc__(n, "Match_Edges: graph->mind");
    return open_grouping(graph);
}

void Match_Edges__(PartCtrl *ctrl, HGraph *graph, int *perm, int *htable, int *vpairs)
{
    Grouping groups = open_pairs(graph);
    match_pairs<false>(ctrl, graph, nullptr, perm, htable, vpairs, &groups);
    CreateCoarseHGraph__(ctrl, graph, groups.ngroups);
}

void CMatch_Edges__(PartCtrl *ctrl, HGraph *graph, const int *where, int *htable, int *perm,
                    int *vpairs)
{
    Grouping groups = open_pairs(graph);
    match_pairs<true>(ctrl, graph, where, perm, htable, vpairs, &groups);
    CreateCoarseHGraph__(ctrl, graph, groups.ngroups);
}
