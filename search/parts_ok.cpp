// SPDX-License-Identifier: MIT
/* search/parts_ok.cpp: the invariants of partitions, gains, pools and reductions, tested from
 * scratch. */
#include <algorithm>

#include "core/holds.h"
#include "search/gain_cache.h"
#include "search/gain_heap.h"
#include "search/pool.h"
#include "search/reduce.h"

/* P3 of one hyperedge, against counts made afresh. */
static bool counts_ok(const Parts *parts, const Parts *fresh, int e)
{
    HOLDS(P3, parts->touched[e] == fresh->touched[e]);
    const PinCount *const list = fresh->counts + fresh->graph->netptr[e];
    for (int i = 0; i < fresh->touched[e]; i++)
        HOLDS(P3, pins_in(parts, e, list[i].part) == list[i].npins);
    return true;
}

static bool agrees(const Parts *parts, const Parts *fresh)
{
    for (int p = 0; p < parts->nparts; p++) HOLDS(P2, parts->weight[p] == fresh->weight[p]);
    for (int e = 0; e < parts->graph->nnets; e++)
        if (!counts_ok(parts, fresh, e)) return false;
    HOLDS(P4, parts->value == fresh->value);
    return true;
}

bool parts_ok(const Parts *parts)
{
    for (int v = 0; v < parts->graph->ncells; v++) {
        HOLDS(P1, parts->part[v] >= 0 && parts->part[v] < parts->nparts);
        HOLDS(P5, !is_fixed(parts, v) || parts->part[v] == parts->fixed[v]);
    }
    Parts fresh;
    open_parts(&fresh, parts->graph, parts->bounds, parts->objective, parts->fixed);
    load_parts(&fresh, parts->part);
    const bool ok = agrees(parts, &fresh);
    close_parts(&fresh);
    return ok;
}

bool gain_heap_ok(const GainHeap *heap, int nvertices)
{
    int present = 0;
    for (int v = 0; v < nvertices; v++) {
        const int i = heap->place[v];
        HOLDS(G1, i >= -1 && i < heap->n && (i < 0 || heap->nodes[i].v == v));
        present += i >= 0;
    }
    HOLDS(G1, present == heap->n);
    for (int i = 1; i < heap->n; i++)
        HOLDS(G2, heap->nodes[i].gain <= heap->nodes[(i - 1) / 4].gain);
    return true;
}

/* The gain by the table in gain_cache.h, from the pin lists. */
static int64_t fresh_gain(const GainCache *cache, const Parts *parts, int v, int p)
{
    Parts other = *parts;
    other.objective = Objective::cut;
    int64_t gain = cache->cut * gain_of_move(&other, v, p);
    other.objective = Objective::km1;
    return gain + cache->km1 * gain_of_move(&other, v, p);
}

bool gain_cache_ok(const GainCache *cache, const Parts *parts)
{
    for (int v = 0; v < parts->graph->ncells; v++) {
        const int row = cache->row[v];
        HOLDS(C1, row >= -1 && row < cache->nrows && (row < 0 || cache->owner[row] == v));
        for (int p = 0; row >= 0 && p < parts->nparts; p++)
            HOLDS(C2, p == parts->part[v]
                          ? gain_in(cache, row_at(cache, row), p) == 0
                          : cached_gain(cache, v, p) == fresh_gain(cache, parts, v, p));
    }
    return true;
}

bool reduction_ok(const Reduction *reduction, const FlatHypergraph *flat, int nparts)
{
    const HGraph *const graph = reduction->graph;
    const int kept = graph->ncells, n = reduction->nclusters;
    int64_t clusters = 0, vertices = 0;
    for (int v = 0; v < flat->nvtxs; v++) {
        HOLDS(R1, reduction->cluster[v] >= 0 && reduction->cluster[v] < n);
        vertices += flat->vwgts != nullptr ? flat->vwgts[v] : 1;
    }
    for (int c = 0; c < n; c++) clusters += reduction->weight[c];
    for (int c = 0; reduction->fixed != nullptr && c < n; c++)
        HOLDS(R2, reduction->fixed[c] == (c < nparts ? c : -1));
    const int nfixed = reduction->fixed != nullptr ? nparts : 0;
    HOLDS(R3, nfixed <= kept && kept <= n);
    for (int c = nfixed; c < kept; c++) HOLDS(R3, graph->incptr[c] < graph->incptr[c + 1]);
    for (int c = 0; c < kept; c++) HOLDS(R4, graph->cellwgt[c] == reduction->weight[c]);
    HOLDS(R4, clusters == vertices);
    return true;
}

bool pool_ok(const Pool *pool, const HGraph *graph, int nclusters, int nparts, Objective objective)
{
    HOLDS(L1, 0 <= pool->n && pool->n <= pool->most && pool->most <= MOST_POOL);
    for (int i = 0; i < pool->n; i++) {
        const Member *const member = &pool->members[i];
        HOLDS(L2, i == 0 || !better(member, member - 1));
        HOLDS(L3, i == 0 || member[-1].objective != member->objective ||
                      !std::equal(member->part, member->part + nclusters, member[-1].part));
        HOLDS(L4, member->objective == objective_of(graph, nparts, objective, member->part));
    }
    return true;
}
