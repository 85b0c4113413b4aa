// SPDX-License-Identifier: MIT
/* coarsen/match_star.cpp: first-choice matching, whose groups grow into stars.
 *
 * A vertex may join a group formed earlier in the same pass if the group has room. Stopping at
 * 40 % of the vertices keeps a level from shrinking too fast. Groups are listed afterwards, each
 * in increasing vertex number.
 */
#include "coarsen/match_star.h"

#include <cassert>

#include "coarsen/contract.h"
#include "coarsen/grouping.h"
#include "coarsen/partner.h"
#include "core/heavy_assert.h"
#include "core/numbers.h"
#include "core/timers.h"
#include "core/vectors.h"

constexpr PartnerRules STAR = {.star = true, .restricted = false, .survey = false};
constexpr PartnerRules STAR_SAME_PART = {.star = true, .restricted = true, .survey = false};
constexpr PartnerRules SURVEY = {.star = false, .restricted = false, .survey = true};
constexpr double JOIN_QUOTA = 0.4; // of a level's vertices may join a partner

int FindCellStar__(PartnerSearch *search, int u)
{
    return find_partner<STAR>(search, u);
}

int CFindCellStar__(PartnerSearch *search, int u)
{
    return find_partner<STAR_SAME_PART>(search, u);
}

/* Prefetches the hyperedges of coming vertices, in two steps: where they start, then their pins. */
[[gnu::always_inline]] static inline void prefetch_survey(const HGraph *graph, int v)
{
    constexpr int starts = 32, pins = 16; // incidences ahead
    const int *const incind = graph->incind;
    if (!worth_prefetching(graph)) return;
    const int last = graph->incptr[graph->ncells] - starts;
    assert(pins < starts);
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
    PartnerSearch search = open_search(ctrl, graph, nullptr, htable);
    int largest = 0;
    for (int v = 0; v < graph->ncells; v++) {
        prefetch_survey(graph, v);
        list_partners<SURVEY>(&search, v);
        keys[v] = partners[v] = -1;
        if (search.ncand > 0) {
            const int degree = graph->incptr[v + 1] - graph->incptr[v];
            const Strongest found = strongest_candidate(&search, degree);
            assert(found.sure == -1 || (found.sure != v && found.sure < graph->ncells));
            keys[v] = trunc_int(100.0 / static_cast<double>(found.most));
            partners[v] = found.sure;
        }
        largest = std::max(largest, keys[v]);
    }
    HEAVY_ASSERT(search_ok(&search, GroupedVertices::allowed));
    close_search(&search);
    for (int v = 0; v < graph->ncells; v++)
        if (keys[v] == -1) keys[v] = largest + 1;
    return largest + 1;
}

/* Lists the vertices in perm by decreasing strength of their best connection, equals by degree;
 * partners as above. */
static void order_by_strength(PartCtrl *ctrl, const HGraph *graph, const MatchWork *work,
                              int *partners)
{
    int *const keys = work->vpairs, *const bydegree = work->vpairs + graph->ncells;
    order_by_degree(ctrl, graph, work->perm, keys, bydegree);
    const int largest = ComputeAllWeights__(ctrl, graph, keys, partners, work->htable);
    BucketSortKeysInc(graph->ncells, largest + 1, keys, bydegree, work->perm);
}

/* Starts a group of v and perhaps of u (else -1). */
static void start_group(Stars *stars, const int *cellwgt, int v, int u)
{
    const int c = stars->ngroups++;
    assert(stars->cellmap[v] == SINGLE && u != v);
    stars->cellmap[v] = c;
    stars->wgts[c] = cellwgt[v];
    if (u < 0) return;
    assert(stars->cellmap[u] == SINGLE);
    stars->cellmap[u] = c;
    stars->wgts[c] += cellwgt[u];
}

/* The vertex that u joins, -1 for none. Surveys spare most searches: partners is null without one.
 */
template <bool Restricted>
static int choose_partner(PartnerSearch *search, const int *partners, int u)
{
    const int sure = partners != nullptr ? partners[u] : -1;
    const int room = search->maxcellwgt - search->graph->cellwgt[u];
    assert(sure != u && search->cellmap[u] == SINGLE);
    if (sure >= 0 && search->wgts[search->cellmap[sure]] <= room) return sure;
    return Restricted ? CFindCellStar__(search, u) : FindCellStar__(search, u);
}

template <bool Restricted>
static void join_stars(const PartCtrl *ctrl, const HGraph *graph, const int *where,
                       const MatchWork *work, const int *partners, Stars *stars)
{
    int *const cellmap = stars->cellmap, *const wgts = stars->wgts;
    const int *const cellwgt = graph->cellwgt, *const perm = work->perm;
    PartnerSearch search = open_search(ctrl, graph, where, work->htable);
    search.cellmap = cellmap;
    search.wgts = wgts;
    for (int c = 0; c < stars->ngroups; c++) search.heaviest = std::max(search.heaviest, wgts[c]);
    for (int i = 0, joined = 0; i < graph->ncells; i++) {
        const int u = perm[i];
        prefetch_partners(graph, perm, i);
        if (cellmap[u] != SINGLE) continue;
        const bool may_join = JOIN_QUOTA * graph->ncells > joined;
        const int v = may_join ? choose_partner<Restricted>(&search, partners, u) : -1;
        if (v >= 0) joined++;
        if (v >= 0 && cellmap[v] != SINGLE) {
            cellmap[u] = cellmap[v];
            wgts[cellmap[v]] += cellwgt[u];
        } else {
            start_group(stars, cellwgt, u, v);
        }
        search.heaviest = std::max(search.heaviest, wgts[cellmap[u]]);
    }
    HEAVY_ASSERT(search_ok(&search, GroupedVertices::allowed));
    close_search(&search);
}

/* Lists the members of each group by counting. */
static void list_groups(HGraph *graph, int ngroups)
{
    assert(ngroups <= graph->ncells);
    int *const mptr = graph->mptr;
    iset__(ngroups + 1, 0, mptr);
    for (int v = 0; v < graph->ncells; v++) mptr[graph->cellmap[v]]++;
    counts_to_starts(ngroups, mptr);
    for (int v = 0; v < graph->ncells; v++) graph->mind[mptr[graph->cellmap[v]]++] = v;
    ends_to_starts(ngroups, mptr);
}

template <bool Restricted>
static void match_stars(PartCtrl *ctrl, HGraph *graph, const int *where, const MatchWork *work,
                        VisitOrder order)
{
    const size_t n = static_cast<size_t>(graph->ncells);
    graph->cellmap = ismalloc__(n, SINGLE, "Match_Edges: graph->cellmap");
    graph->mptr = imalloc__(n + 1, "Match_Edges: graph->mptr");
    graph->mind = imalloc__(n, "Match_Edges: graph->mind");
    int *wgts = ismalloc__(n + 1, 0, "Match_EdgesStars: wgts");

    // mind is filled when all is joined
    int *const partners = order == VisitOrder::by_strength ? graph->mind : nullptr;
    start_timer(ctrl, TIME_AUX3);
    if (order == VisitOrder::by_strength)
        order_by_strength(ctrl, graph, work, partners);
    else
        order_by_degree(ctrl, graph, work->vpairs + graph->ncells, work->vpairs, work->perm);
    stop_timer(ctrl, TIME_AUX3);

    start_timer(ctrl, TIME_AUX4);
    Stars stars = {graph->cellmap, wgts + 1, 0};
    assert(graph->nfixed <= graph->ncells);
    const int full = clamp_int(2LL * ctrl->MaxCellWgt); // nobody joins
    for (int v = 0; v < graph->nfixed; v++) {
        graph->cellmap[v] = stars.ngroups;
        stars.wgts[stars.ngroups++] = full;
    }
    join_stars<Restricted>(ctrl, graph, where, work, partners, &stars);
    HEAVY_ASSERT(stars_ok(ctrl, graph, &stars));
    list_groups(graph, stars.ngroups);
    stop_timer(ctrl, TIME_AUX4);
    QXfree__(&wgts, LTERM);
    CreateCoarseHGraph__(ctrl, graph, stars.ngroups);
}

void Match_EdgesStars__(PartCtrl *ctrl, HGraph *graph, const MatchWork *work, VisitOrder order)
{
    match_stars<false>(ctrl, graph, nullptr, work, order);
}

void CMatch_EdgesStars__(PartCtrl *ctrl, HGraph *graph, const int *where, const MatchWork *work)
{
    match_stars<true>(ctrl, graph, where, work, VisitOrder::by_degree);
}
