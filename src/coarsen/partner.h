/* SPDX-License-Identifier: MIT */
/* coarsen/partner.h: the partner search that all vertex matchings share (coarsen/ only).
 *
 * The candidates of a vertex are its neighbours that may join it. Their connectivity, the sum of
 * the edge weights of shared hyperedges, grows in a table while the hyperedges of the vertex are
 * scanned, and the best one is chosen in the order in which they were first encountered.
 */
#ifndef ZORPEL_COARSEN_PARTNER_H
#define ZORPEL_COARSEN_PARTNER_H

#include <algorithm>
#include <cassert>
#include <cmath>
#include <cstddef>
#include <limits>

#include "coarsen/connectivity.h"
#include "core/hgraph.h"
#include "core/memory.h"
#include "core/prefetch.h"
#include "core/vectors.h"
#include "core/work_counts.h"
#include "core/ctrl.h"

constexpr int SINGLE = -1;         // cellmap of a vertex that is not grouped yet
constexpr double STRONG_NET = 0.1; // least edgewgt that a survey looks at

/* What the searches of one matching read and write.
 *   C1  between searches table holds UNSEEN, or BARRED for vertices that can't be candidates (where
 *       only free ones may be: the grouped ones)
 *   C2  no vertex outweighs heaviest, nor does a group
 *   C3  cutnets says which hyperedges where cuts, if where is given
 *   C4  wgts[-1], the weight of the group of a single vertex, is 0, if wgts is given
 */
struct PartnerSearch {
    const HGraph *graph;
    int maxcellwgt;      // most weight of a vertex and its partner
    int maxnetsize;      // restricted: larger hyperedges are skipped
    const int *cellmap;  // [ncells] group of each vertex, SINGLE while free
    const int *wgts;     // [-1..groups - 1] star: weight of each group
    const int *where;    // [ncells] restricted: part of each vertex
    const bool *cutnets; // [nnets] restricted: elsewhere a pin's part need not be looked at
    bool *marks;         // behind cutnets, if the level has none
    Connectivity *table; // [ncells] coarsening's htable
    int heaviest;        // see C2
    int *cand;           // [ncells + 1] candidates in the order in which they were encountered
    int ncand;           // in use
    float skipped;       // survey: weight, without sign, of the hyperedges that were not looked at
};

/* Who may be a candidate. */
struct PartnerRules {
    bool star;       // grouped vertices too, if their group has room; else free vertices only
    bool restricted; // same part only, large and empty hyperedges skipped (V-cycles)
    bool survey;     // every vertex that is light enough, over strong hyperedges only
};

/* where is null for searches that are not restricted, else what cutnets is of, if the level has it;
 * htable is all -1 before and after. cellmap and wgts are for the caller to set. */
inline PartnerSearch open_search(const PartCtrl *ctrl, const HGraph *graph, const int *where,
                                 int *htable)
{
    const int n = graph->ncells;
    assert(n == 0 || (htable[0] == -1 && htable[n - 1] == -1));
    PartnerSearch search = {};
    search.graph = graph;
    search.maxcellwgt = ctrl->MaxCellWgt;
    search.maxnetsize = ctrl->maxnetsize;
    search.where = where;
    search.table = htable;
    search.cand = imalloc__(static_cast<size_t>(n) + 1, "Candidates: cand");
    search.heaviest = largest_of(n, graph->cellwgt);
    search.cutnets = graph->cutnets;
    if (where != nullptr && graph->cutnets == nullptr) {
        search.marks = alloc_array<bool>(static_cast<size_t>(graph->nnets), "Coarsen: cutnets");
        mark_cut_nets(graph, where, search.marks);
        search.cutnets = search.marks;
    }
    iset__(n, UNSEEN, htable);
    return search;
}

inline void close_search(PartnerSearch *search)
{
    assert(search->cand != nullptr);
    iset__(search->graph->ncells, -1, search->table);
    QXfree__(&search->cand, &search->marks, LTERM);
}

enum class GroupedVertices { allowed, barred };

/* Tests C1 to C4 between searches. */
bool search_ok(const PartnerSearch *search, GroupedVertices grouped);

/* The candidates of a vertex while its hyperedges are scanned. Kept apart from the search, they
 * stay in registers. */
struct CandidateList {
    int *cand;
    int ncand;
    float skipped;
};

/* Adds the weight of a shared hyperedge to v's connectivity. Whether v is new can't be predicted,
 * so it is listed in any case and stays in the list if it was. */
inline void add_candidate(CandidateList *list, int v, float weight, Connectivity *table)
{
    const Connectivity bits = table[v];
    list->cand[list->ncand] = v;
    list->ncand += bits == UNSEEN;
    table[v] = strengthened(bits, weight);
}

/* Lists the candidates of u. With Light every vertex and group is known to fit. */
template <PartnerRules R, bool Light> inline void list_candidates(PartnerSearch *search, int u)
{
    const HGraph *const graph = search->graph;
    const int *const netptr = graph->netptr, *const netind = graph->netind;
    const int *const incind = graph->incind, *const cellwgt = graph->cellwgt;
    const float *const edgewgt = graph->edgewgt;
    const int *const cellmap = search->cellmap, *const wgts = search->wgts;
    const int *const where = search->where;
    const bool *const cutnets = search->cutnets;
    Connectivity *const table = search->table;
    const int limit = search->maxcellwgt - cellwgt[u], maxnetsize = search->maxnetsize;
    const int home = R.restricted ? where[u] : 0;
    CandidateList list = {search->cand, 0, 0};
    for (int j = graph->incptr[u], last = graph->incptr[u + 1]; j < last; j++) {
        const int e = incind[j], begin = netptr[e], end = netptr[e + 1];
        if (R.restricted && (end == begin || end - begin > maxnetsize)) continue;
        const bool checked = R.restricted && cutnets[e];
        const float weight = edgewgt[e];
        if (R.survey && static_cast<double>(weight) < STRONG_NET) {
            list.skipped += std::fabs(weight);
            continue;
        }
        count_work(WORK_CANDIDATE_PINS, end - begin);
        for (int i = begin; i < end; i++) {
            int v = netind[i];
            if (!Light && cellwgt[v] > limit) continue;
            if (checked) v = where[v] == home ? v : u; // who is barred: no branch on the part
            if (!Light && R.star && wgts[cellmap[v]] > limit) continue;
            add_candidate(&list, v, weight, table);
        }
    }
    assert(list.ncand < graph->ncells);
    search->ncand = list.ncand;
    search->skipped = list.skipped;
}

/* Lists the candidates of u with their connectivities in the table. */
template <PartnerRules R> inline void list_partners(PartnerSearch *search, int u)
{
    assert(0 <= u && u < search->graph->ncells && search->table[u] == UNSEEN);
    assert(!R.restricted ||
           (search->where != nullptr && (search->cutnets != nullptr || search->graph->nnets == 0)));
    assert(!R.star || (search->cellmap != nullptr && search->wgts[-1] == 0));
    search->table[u] = BARRED;
    if (search->heaviest <= search->maxcellwgt - search->graph->cellwgt[u])
        list_candidates<R, true>(search, u);
    else
        list_candidates<R, false>(search, u);
    search->table[u] = UNSEEN;
}

/* The best candidate, -1 for an empty list; resets the table. The highest connectivity wins; among
 * equals the lighter one, then the first encountered, or in star form a later one if the best so
 * far is grouped. */
template <bool Star> inline int best_candidate(const PartnerSearch *search)
{
    if (search->ncand == 0) return -1;
    const int *const cand = search->cand, *const cellmap = search->cellmap;
    const int *const cellwgt = search->graph->cellwgt;
    Connectivity *const table = search->table;
    int best = cand[0];
    float most = strength_of(table[best]);
    table[best] = UNSEEN;
    for (int i = 1; i < search->ncand; i++) {
        const int v = cand[i];
        const float strength = strength_of(table[v]);
        assert(table[v] != UNSEEN);
        table[v] = UNSEEN;
        if (strength < most) continue;
        if (strength == most && !(Star ? cellmap[best] != SINGLE : cellwgt[best] > cellwgt[v]))
            continue;
        best = v;
        most = strength;
    }
    assert(Star || cellmap[best] == SINGLE);
    return best;
}

/* The best candidate of u, -1 if there is none. */
template <PartnerRules R> inline int find_partner(PartnerSearch *search, int u)
{
    list_partners<R>(search, u);
    return best_candidate<R.star>(search);
}

/* What a survey says of a vertex that has candidates. */
struct Strongest {
    float most; // highest connectivity
    int sure;   // who has it, if a search over all hyperedges can't find another one; else -1
};

/* Whether the strongest candidate of a survey is the strongest of all, and alone so. What the
 * survey skipped adds to nobody's connectivity more than it weighs in all; unlisted candidates
 * start at 0. A lead of more than that is made up for by rounding only, and that is bounded: each
 * sum has at most degree additions, each off by 2^-24 of the total. 2^-20 leaves room for the
 * rounding of the lead itself. */
inline bool lead_is_safe(float most, float second, float skipped, int degree)
{
    assert(degree > 0 && !(skipped < 0));
    const float lead = most - std::max(second, 0.0f) - skipped;
    const float rounding = static_cast<float>(degree) * 0x1p-20f * (most + skipped);
    return lead > rounding;
}

/* The strongest candidate of a vertex of this degree; resets the table. */
inline Strongest strongest_candidate(const PartnerSearch *search, int degree)
{
    constexpr float none = -std::numeric_limits<float>::infinity();
    Connectivity *const table = search->table;
    float most = none, second = none;
    int strongest = -1;
    for (int i = 0; i < search->ncand; i++) {
        const int v = search->cand[i];
        const float strength = strength_of(table[v]);
        assert(table[v] != UNSEEN);
        table[v] = UNSEEN;
        second = std::max(second, std::min(most, strength));
        strongest = strength > most ? v : strongest;
        most = std::max(most, strength);
    }
    return {most, lead_is_safe(most, second, search->skipped, degree) ? strongest : -1};
}

/* Prefetches what the search around coming vertices will read, in four steps, each of which needs
 * what the one before has fetched:
 *     order[i + 8]   where its list starts
 *     order[i + 6]   its list
 *     order[i + 4]   where its hyperedges start, and their weights
 *     order[i + 2]   their pins
 */
[[gnu::always_inline]] inline void prefetch_partners(const HGraph *graph, const int *order, int i)
{
    constexpr int most = 8; // hyperedges a vertex
    const int n = graph->ncells;
    const int *const incptr = graph->incptr, *const incind = graph->incind;
    if (i + 8 >= n || !worth_prefetching(graph)) return;
    __builtin_prefetch(&incptr[order[i + 8]]);
    __builtin_prefetch(&incind[incptr[order[i + 6]]]);
    const int u = order[i + 4], v = order[i + 2];
    for (int j = incptr[u], end = std::min(incptr[u + 1], j + most); j < end; j++) {
        __builtin_prefetch(&graph->netptr[incind[j]]);
        __builtin_prefetch(&graph->edgewgt[incind[j]]);
    }
    for (int j = incptr[v], end = std::min(incptr[v + 1], j + most); j < end; j++)
        __builtin_prefetch(&graph->netind[graph->netptr[incind[j]]]);
}

#endif
