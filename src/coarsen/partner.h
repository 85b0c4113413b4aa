/* coarsen/partner.h: the partner search that all vertex matchings share (coarsen/ only). */
#ifndef ZORPEL_COARSEN_PARTNER_H
#define ZORPEL_COARSEN_PARTNER_H

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstddef>
#include <cstdlib>
#include <limits>

#include "core/hgraph.h"
#include "core/memory.h"
#include "core/prefetch.h"
#include "core/vectors.h"
#include "core/work_counts.h"
#include "partition/ctrl.h"

/* Neighbours of the vertex in search, in the order in which they were met. */
struct Candidates {
    int *cand;           // [vertices of the level + 1] vertices
    int ncand;           // in use
    int heaviest;        // no vertex and no group outweighs this
    float skipped;       // survey: weight, without sign, of the hyperedges that were not looked at
    const bool *cutnets; // [nnets] restricted: elsewhere a pin's part need not be looked at
    bool *marks;         // behind cutnets, if the level has none
};

/* Who may be a candidate. */
struct PartnerRules {
    bool star;       // grouped vertices too, if their group has room; else free vertices only
    bool restricted; // same part only, large and empty hyperedges skipped (V-cycles)
    bool survey;     // every vertex that is light enough, over strong hyperedges only
};

constexpr int SINGLE = -1;         // cellmap of a vertex that is not grouped yet
constexpr double STRONG_NET = 0.1; // least edgewgt that a survey looks at

/* During the searches htable holds each vertex's connectivity as the bits of a float. UNSEEN is
 * minus zero, to which any weight can be added without a look: no sum of weights gives it. Minus
 * infinity keeps a vertex out of the list: it is not unseen, and adding leaves it so. Where only
 * free vertices may be candidates the callers bar the grouped ones. */
inline float connectivity(int bits)
{
    return std::bit_cast<float>(bits);
}
constexpr int UNSEEN = std::bit_cast<int>(-0.0f);
constexpr int BARRED = std::bit_cast<int>(-std::numeric_limits<float>::infinity());

/* where is null for searches that are not restricted, else what cutnets is of, if the level has it;
 * htable is all -1 before and after. */
inline void open_candidates(Candidates *list, const HGraph *graph, const int *where, int *htable)
{
    const int n = graph->ncells;
    list->cand = imalloc__(static_cast<size_t>(n) + 1, "Candidates: cand");
    list->ncand = 0;
    list->skipped = 0;
    list->heaviest = largest_of(n, graph->cellwgt);
    list->cutnets = graph->cutnets;
    list->marks = nullptr;
    if (where != nullptr && graph->cutnets == nullptr) {
        list->marks = alloc_array<bool>(static_cast<size_t>(graph->nnets), "Coarsen: cutnets");
        mark_cut_nets(graph, where, list->marks);
        list->cutnets = list->marks;
    }
    iset__(n, UNSEEN, htable);
}

inline void close_candidates(Candidates *list, const HGraph *graph, int *htable)
{
    iset__(graph->ncells, -1, htable);
    QXfree__(&list->cand, &list->marks, LTERM);
}

/* Adds the weight of a shared hyperedge to v's connectivity. Whether v is new can't be predicted,
 * so it is listed in any case and stays in the list if it was. */
inline void add_candidate(Candidates *list, int v, float weight, int *htable)
{
    const int bits = htable[v];
    list->cand[list->ncand] = v;
    list->ncand += bits == UNSEEN;
    htable[v] = std::bit_cast<int>(connectivity(bits) + weight);
}

/* The best candidate, -1 for an empty list; resets htable. The highest connectivity wins; among
 * equals the lighter one, then the first met, or in star form a later one if the best so far is
 * grouped. */
template <bool Star>
inline int best_candidate(const Candidates *list, const int *cellwgt, const int *cellmap,
                          int *htable)
{
    if (list->ncand == 0) return -1;
    const int *const cand = list->cand;
    int best = cand[0];
    float bestwgt = connectivity(htable[best]);
    htable[best] = UNSEEN;
    for (int i = 1; i < list->ncand; i++) {
        const int v = cand[i];
        const float weight = connectivity(htable[v]);
        htable[v] = UNSEEN;
        if (weight < bestwgt) continue;
        if (weight == bestwgt && !(Star ? cellmap[best] != SINGLE : cellwgt[best] > cellwgt[v]))
            continue;
        best = v;
        bestwgt = weight;
    }
    return best;
}

/* What a survey tells of a vertex that has candidates. */
struct Strongest {
    float most; // highest connectivity
    int sure;   // who has it, if a search over all hyperedges can't find another one; else -1
};

/* The strongest candidate of a vertex of this degree; resets htable. What the survey skipped adds
 * to nobody's connectivity more than it weighs in all. A lead of more than that, and more than the
 * sums' rounding (each of at most degree additions is off by 2^-24 of the total), is not made up
 * for, and there is no tie. */
inline Strongest strongest_candidate(const Candidates *list, int degree, int *htable)
{
    constexpr float none = -std::numeric_limits<float>::infinity();
    float most = none, second = none;
    int strongest = -1;
    for (int i = 0; i < list->ncand; i++) {
        const int v = list->cand[i];
        const float weight = connectivity(htable[v]);
        htable[v] = UNSEEN;
        second = std::max(second, std::min(most, weight));
        strongest = weight > most ? v : strongest;
        most = std::max(most, weight);
    }
    const float lead = most - std::max(second, 0.0f) - list->skipped; // unlisted ones start at 0
    const float rounding = static_cast<float>(degree) * 0x1p-20f * (most + list->skipped);
    return {most, lead > rounding ? strongest : -1};
}

/* Lists the candidates of u. With Light every vertex and group is known to fit. */
template <PartnerRules R, bool Light>
inline void list_candidates(const PartCtrl *ctrl, int u, const int *incptr, const int *incind,
                            const int *netptr, const int *netind, const int *cellwgt,
                            const float *edgewgt, const int *cellmap, int *htable, const int *wgts,
                            const int *where, Candidates *list)
{
    const int limit = ctrl->MaxCellWgt - cellwgt[u];
    const int maxnetsize = ctrl->maxnetsize;
    Candidates found = {list->cand, 0, 0, 0, nullptr, nullptr};
    const bool *const cutnets = list->cutnets;
    const int home = R.restricted ? where[u] : 0;
    for (int j = incptr[u]; j < incptr[u + 1]; j++) {
        const int e = incind[j], begin = netptr[e], end = netptr[e + 1];
        if (R.restricted && (end == begin || end - begin > maxnetsize)) continue;
        const bool checked = R.restricted && cutnets[e];
        const float weight = edgewgt[e];
        if (R.survey && static_cast<double>(weight) < STRONG_NET) {
            found.skipped += std::fabs(weight);
            continue;
        }
        count_work(WORK_CANDIDATE_PINS, end - begin);
        for (int i = begin; i < end; i++) {
            int v = netind[i];
            if (!Light && cellwgt[v] > limit) continue;
            if (checked) v = where[v] == home ? v : u; // who is barred: no branch on the part
            if (!Light && R.star && wgts[cellmap[v]] > limit) continue;
            add_candidate(&found, v, weight, htable);
        }
    }
    list->ncand = found.ncand;
    list->skipped = found.skipped;
}

/* Lists the candidates of u with their connectivities in htable.
 *   wgts   star: weight of each group made so far, wgts[-1] == 0 for free vertices
 *   where  restricted: part of each vertex */
template <PartnerRules R>
inline void list_partners(const PartCtrl *ctrl, int u, const int *incptr, const int *incind,
                          const int *netptr, const int *netind, const int *cellwgt,
                          const float *edgewgt, const int *cellmap, int *htable, const int *wgts,
                          const int *where, Candidates *list)
{
    htable[u] = BARRED;
    if (list->heaviest <= ctrl->MaxCellWgt - cellwgt[u])
        list_candidates<R, true>(ctrl, u, incptr, incind, netptr, netind, cellwgt, edgewgt, cellmap,
                                 htable, wgts, where, list);
    else
        list_candidates<R, false>(ctrl, u, incptr, incind, netptr, netind, cellwgt, edgewgt,
                                  cellmap, htable, wgts, where, list);
    htable[u] = UNSEEN;
}

/* The best candidate of u, -1 if there is none; arguments as above. */
template <PartnerRules R>
inline int find_partner(const PartCtrl *ctrl, int u, const int *incptr, const int *incind,
                        const int *netptr, const int *netind, const int *cellwgt,
                        const float *edgewgt, const int *cellmap, int *htable, const int *wgts,
                        const int *where, Candidates *list)
{
    list_partners<R>(ctrl, u, incptr, incind, netptr, netind, cellwgt, edgewgt, cellmap, htable,
                     wgts, where, list);
    return best_candidate<R.star>(list, cellwgt, cellmap, htable);
}

/* Asks for what the search around coming vertices will read, each a step ahead of the next:
 * order[i + 8] its list's start, order[i + 6] its list, order[i + 4] its hyperedges' starts,
 * order[i + 2] their pins. */
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
