/* coarsen/partner.h: the partner search that all vertex matchings share (coarsen/ only). */
#ifndef ZORPEL_COARSEN_PARTNER_H
#define ZORPEL_COARSEN_PARTNER_H

#include <cstddef>
#include <cstdlib>

#include "core/hgraph.h"
#include "core/memory.h"
#include "partition/ctrl.h"

/* Neighbours of the vertex in search, in the order in which they were met. */
struct Candidates {
    int *cand;   // [vertices of the level] vertices
    float *cwgt; // [vertices of the level] their connectivity: sum of edgewgt over shared nets
    int ncand;   // in use
};

inline void open_candidates(Candidates *list, int n)
{
    list->cand = imalloc__(static_cast<size_t>(n), "Candidates: cand");
    list->cwgt = fmalloc__(static_cast<size_t>(n), "Candidates: cwgt");
    list->ncand = 0;
}

inline void close_candidates(Candidates *list)
{
    QXfree__(&list->cand, &list->cwgt, LTERM);
}

/* The vertex at a place of the list, -1 for no place. */
inline int vertex_at(const Candidates *list, int place)
{
    return place < 0 ? -1 : list->cand[place];
}

/* Who may be a candidate. */
struct PartnerRules {
    bool star;       // grouped vertices too, if their group has room; else free vertices only
    bool restricted; // same part only, large and empty hyperedges skipped (V-cycles)
    bool survey;     // every vertex that is light enough, over strong hyperedges only
};

constexpr int SINGLE = -1;         // cellmap of a vertex that is not grouped yet
constexpr double STRONG_NET = 0.1; // least edgewgt that a survey looks at

/* htable maps a vertex to its place in the list, -1 outside. */
inline void add_candidate(Candidates *list, int v, float weight, int *htable)
{
    const int place = htable[v];
    if (place != -1) {
        list->cwgt[place] += weight;
        return;
    }
    htable[v] = list->ncand;
    list->cand[list->ncand] = v;
    list->cwgt[list->ncand++] = weight;
}

/* Place of the best candidate, -1 for an empty list; resets htable. The highest connectivity wins;
 * among equals the lighter one, then the first met, or in star form a later one if the best so far
 * is grouped. */
template <bool Star>
inline int best_candidate(const Candidates *list, const int *cellwgt, const int *cellmap,
                          int *htable)
{
    if (list->ncand == 0) return -1;
    const int *const cand = list->cand;
    const float *const cwgt = list->cwgt;
    int best = 0;
    htable[cand[0]] = -1;
    for (int i = 1; i < list->ncand; i++) {
        htable[cand[i]] = -1;
        if (cwgt[i] < cwgt[best]) continue;
        if (cwgt[i] > cwgt[best])
            best = i;
        else if (cwgt[i] == cwgt[best] &&
                 (Star ? cellmap[cand[best]] != SINGLE : cellwgt[cand[best]] > cellwgt[cand[i]]))
            best = i;
    }
    return best;
}

/* Lists the candidates of u and returns the place of the best, -1 if there is none.
 *   wgts   star: weight of each group made so far, wgts[-1] == 0 for free vertices
 *   where  restricted: part of each vertex */
template <PartnerRules R>
inline int find_partner(const PartCtrl *ctrl, int u, const int *incptr, const int *incind,
                        const int *netptr, const int *netind, const int *cellwgt,
                        const float *edgewgt, const int *cellmap, int *htable, const int *wgts,
                        const int *where, Candidates *list)
{
    const int limit = ctrl->MaxCellWgt - cellwgt[u];
    const int maxnetsize = ctrl->maxnetsize;
    list->ncand = 0;
    for (int j = incptr[u]; j < incptr[u + 1]; j++) {
        const int e = incind[j], size = netptr[e + 1] - netptr[e];
        if (R.restricted && (size == 0 || size > maxnetsize)) continue;
        const float weight = edgewgt[e];
        if (R.survey && static_cast<double>(weight) < STRONG_NET) continue;
        for (int i = netptr[e]; i < netptr[e + 1]; i++) {
            const int v = netind[i];
            if (v == u || cellwgt[v] > limit) continue;
            if (R.restricted && where[v] != where[u]) continue;
            if (!R.survey && (R.star ? wgts[cellmap[v]] > limit : cellmap[v] != SINGLE)) continue;
            add_candidate(list, v, weight, htable);
        }
    }
    return best_candidate<R.star>(list, cellwgt, cellmap, htable);
}

#endif
