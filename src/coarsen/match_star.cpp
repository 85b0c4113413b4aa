/* coarsen/match_star.cpp: first-choice matching, whose groups grow into stars.
 *
 * A vertex may join a group formed earlier in the same pass if the group has room. Stopping at
 * 40 % of the vertices keeps a level from shrinking too fast. Groups are listed afterwards, each
 * in increasing vertex number.
 */
#include "coarsen/match_star.h"

#include "coarsen/contract.h"
#include "coarsen/grouping.h"
#include "coarsen/partner.h"
#include "core/numbers.h"
#include "core/timers.h"
#include "core/vectors.h"

constexpr PartnerRules STAR = {true, false, false}, STAR_SAME_PART = {true, true, false};
constexpr PartnerRules SURVEY = {false, false, true};
constexpr double JOIN_QUOTA = 0.4; // of a level's vertices may join a partner

int FindCellStar__(const PartCtrl *ctrl, int u, const int *incptr, const int *incind,
                   const int *netptr, const int *netind, const int *cellwgt, const float *edgewgt,
                   const int *cellmap, int *htable, const int *wgts, Candidates *list)
{
    return find_partner<STAR>(ctrl, u, incptr, incind, netptr, netind, cellwgt, edgewgt, cellmap,
                              htable, wgts, nullptr, list);
}

int CFindCellStar__(const PartCtrl *ctrl, int u, const int *incptr, const int *incind,
                    const int *netptr, const int *netind, const int *cellwgt, const float *edgewgt,
                    const int *cellmap, int *htable, const int *wgts, const int *where,
                    Candidates *list)
{
    return find_partner<STAR_SAME_PART>(ctrl, u, incptr, incind, netptr, netind, cellwgt, edgewgt,
                                        cellmap, htable, wgts, where, list);
}

/* Asks for the hyperedges of coming vertices, in two steps. */
[[gnu::always_inline]] static inline void prefetch_survey(const HGraph *graph, int v)
{
    constexpr int starts = 32, pins = 16; // incidences ahead
    const int *const incind = graph->incind;
    if (!worth_prefetching(graph)) return;
    const int last = graph->incptr[graph->ncells] - starts;
    for (int j = graph->incptr[v]; j < graph->incptr[v + 1] && j < last; j++) {
        const int e = incind[j + starts];
        __builtin_prefetch(&graph->netptr[e]);
        __builtin_prefetch(&graph->edgewgt[e]);
        __builtin_prefetch(&graph->netind[graph->netptr[incind[j + pins]]]);
    }
}

int ComputeAllWeights__(const PartCtrl *ctrl, const HGraph *graph, int *keys, int *partners,
                        int *htable)
{
    Candidates list;
    open_candidates(&list, graph, nullptr, htable);
    int largest = 0;
    for (int v = 0; v < graph->ncells; v++) {
        prefetch_survey(graph, v);
        list_partners<SURVEY>(ctrl, v, graph->incptr, graph->incind, graph->netptr, graph->netind,
                              graph->cellwgt, graph->edgewgt, nullptr, htable, nullptr, nullptr,
                              &list);
        keys[v] = partners[v] = -1;
        if (list.ncand > 0) {
            const int degree = graph->incptr[v + 1] - graph->incptr[v];
            const Strongest found = strongest_candidate(&list, degree, htable);
            keys[v] = trunc_int(100.0 / static_cast<double>(found.most));
            partners[v] = found.sure;
        }
        largest = std::max(largest, keys[v]);
    }
    close_candidates(&list, graph, htable);
    for (int v = 0; v < graph->ncells; v++)
        if (keys[v] == -1) keys[v] = largest + 1;
    return largest + 1;
}

/* Lists the vertices in perm by decreasing strength of their best connection, equals by degree;
 * partners as above. */
static void order_by_strength(PartCtrl *ctrl, const HGraph *graph, int *perm, int *partners,
                              int *htable, int *vpairs)
{
    int *const keys = vpairs, *const bydegree = vpairs + graph->ncells;
    order_by_degree(ctrl, graph, perm, keys, bydegree);
    const int largest = ComputeAllWeights__(ctrl, graph, keys, partners, htable);
    BucketSortKeysInc(graph->ncells, largest + 1, keys, bydegree, perm);
}

/* Groups under construction. */
struct Stars {
    int *cellmap; // [ncells] coarse vertex, SINGLE while free
    int *wgts;    // [ncells] weight of each group; wgts[-1] is 0
    int ngroups;
};

/* Starts a group of v and perhaps of u (else -1). */
static void start_group(Stars *stars, const int *cellwgt, int v, int u)
{
    const int c = stars->ngroups++;
    stars->cellmap[v] = c;
    stars->wgts[c] = cellwgt[v];
    if (u < 0) return;
    stars->cellmap[u] = c;
    stars->wgts[c] += cellwgt[u];
}

/* The vertex that u joins, -1 for none. Surveys spare most searches: partners is null without one.
 */
template <bool Restricted>
static int choose_partner(const PartCtrl *ctrl, const HGraph *graph, const int *where,
                          const int *partners, int *htable, const Stars *stars, int u,
                          Candidates *list)
{
    const int *const cellmap = stars->cellmap, *const wgts = stars->wgts;
    const int sure = partners != nullptr ? partners[u] : -1;
    if (sure >= 0 && wgts[cellmap[sure]] <= ctrl->MaxCellWgt - graph->cellwgt[u]) return sure;
    return Restricted
               ? CFindCellStar__(ctrl, u, graph->incptr, graph->incind, graph->netptr,
                                 graph->netind, graph->cellwgt, graph->edgewgt, cellmap, htable,
                                 wgts, where, list)
               : FindCellStar__(ctrl, u, graph->incptr, graph->incind, graph->netptr, graph->netind,
                                graph->cellwgt, graph->edgewgt, cellmap, htable, wgts, list);
}

template <bool Restricted>
static void join_stars(const PartCtrl *ctrl, const HGraph *graph, const int *where, const int *perm,
                       const int *partners, int *htable, Stars *stars)
{
    int *const cellmap = stars->cellmap, *const wgts = stars->wgts;
    const int *const cellwgt = graph->cellwgt;
    Candidates list;
    open_candidates(&list, graph, where, htable);
    for (int c = 0; c < stars->ngroups; c++) list.heaviest = std::max(list.heaviest, wgts[c]);
    for (int i = 0, joined = 0; i < graph->ncells; i++) {
        const int u = perm[i];
        prefetch_partners(graph, perm, i);
        if (cellmap[u] != SINGLE) continue;
        const int v =
            JOIN_QUOTA * graph->ncells > joined
                ? choose_partner<Restricted>(ctrl, graph, where, partners, htable, stars, u, &list)
                : -1;
        if (v >= 0) joined++;
        if (v >= 0 && cellmap[v] != SINGLE) {
            cellmap[u] = cellmap[v];
            wgts[cellmap[v]] += cellwgt[u];
        } else {
            start_group(stars, cellwgt, u, v);
        }
        list.heaviest = std::max(list.heaviest, wgts[cellmap[u]]);
    }
    close_candidates(&list, graph, htable);
}

/* Lists the members of each group by counting. */
static void list_groups(HGraph *graph, int ngroups)
{
    int *const mptr = graph->mptr;
    iset__(ngroups + 1, 0, mptr);
    for (int v = 0; v < graph->ncells; v++) mptr[graph->cellmap[v]]++;
    counts_to_starts(ngroups, mptr);
    for (int v = 0; v < graph->ncells; v++) graph->mind[mptr[graph->cellmap[v]]++] = v;
    ends_to_starts(ngroups, mptr);
}

template <bool Restricted>
static void match_stars(PartCtrl *ctrl, HGraph *graph, const int *where, int *perm, int *htable,
                        int *vpairs, bool bystrength)
{
    const size_t n = static_cast<size_t>(graph->ncells);
    graph->cellmap = ismalloc__(n, SINGLE, "Match_Edges: graph->cellmap");
    graph->mptr = imalloc__(n + 1, "Match_Edges: graph->mptr");
    graph->mind = imalloc__(n, "Match_Edges: graph->mind");
    int *wgts = ismalloc__(n + 1, 0, "Match_EdgesStars: wgts");

    int *const partners = bystrength ? graph->mind : nullptr; // mind is filled when all is joined
    start_timer(ctrl, TIME_AUX3);
    if (bystrength)
        order_by_strength(ctrl, graph, perm, partners, htable, vpairs);
    else
        order_by_degree(ctrl, graph, vpairs + graph->ncells, vpairs, perm);
    stop_timer(ctrl, TIME_AUX3);

    start_timer(ctrl, TIME_AUX4);
    Stars stars = {graph->cellmap, wgts + 1, 0};
    const int full = clamp_int(2LL * ctrl->MaxCellWgt); // nobody joins
    for (int v = 0; v < graph->nfixed; v++) {
        graph->cellmap[v] = stars.ngroups;
        stars.wgts[stars.ngroups++] = full;
    }
    join_stars<Restricted>(ctrl, graph, where, perm, partners, htable, &stars);
    list_groups(graph, stars.ngroups);
    stop_timer(ctrl, TIME_AUX4);
    QXfree__(&wgts, LTERM);
    CreateCoarseHGraph__(ctrl, graph, stars.ngroups);
}

void Match_EdgesStars__(PartCtrl *ctrl, HGraph *graph, int *perm, int *htable, int *vpairs,
                        int flag)
{
    match_stars<false>(ctrl, graph, nullptr, perm, htable, vpairs, flag == 1);
}

void CMatch_EdgesStars__(PartCtrl *ctrl, HGraph *graph, const int *where, int *htable, int *perm,
                         int *vpairs)
{
    match_stars<true>(ctrl, graph, where, perm, htable, vpairs, false);
}
