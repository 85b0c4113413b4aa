// SPDX-License-Identifier: MIT
/* search/rebalance.cpp: moves that mend the weights of parts.
 *
 * Two loops of one kind: vertices leave parts that are too heavy, then vertices enter parts that
 * are too light. Every candidate stands in the heap under the gain of its best move, scaled by its
 * weight, and is looked at afresh when it comes to the top.
 */
#include "search/rebalance.h"

#include <algorithm>
#include <cassert>
#include <numeric>

#include "core/heavy_assert.h"
#include "core/memory.h"

/* How much over its upper, or under its lower bound a part is. */
static int64_t over(const Parts *parts, int p)
{
    return parts->weight[p] - parts->bounds->most[p];
}

static int64_t under(const Parts *parts, int p)
{
    return parts->bounds->least[p] - parts->weight[p];
}

int64_t excess_at(const Bounds *bounds, int p, int64_t weight)
{
    assert(0 <= p && p < bounds->nparts);
    return std::max<int64_t>(weight - bounds->most[p], 0) +
           std::max<int64_t>(bounds->least[p] - weight, 0);
}

int64_t excess_of_partition(const Bounds *bounds, int n, const int *cellwgt, const int *where)
{
    const size_t k = static_cast<size_t>(bounds->nparts);
    int64_t *weight = alloc_array<int64_t>(k, "search: weights");
    std::fill(weight, weight + k, 0);
    for (int v = 0; v < n; v++) {
        assert(0 <= where[v] && where[v] < bounds->nparts && cellwgt[v] >= 0);
        weight[where[v]] += cellwgt[v];
    }
    int64_t excess = 0;
    for (int p = 0; p < bounds->nparts; p++) excess += excess_at(bounds, p, weight[p]);
    QXfree__(&weight, LTERM);
    return excess;
}

/* By how much the excess falls if v moves. */
static int64_t relief(const Parts *parts, int v, int to)
{
    const int from = parts->part[v];
    const int64_t w = parts->graph->cellwgt[v];
    assert(from != to && !is_fixed(parts, v));
    return excess_at(parts->bounds, from, parts->weight[from]) -
           excess_at(parts->bounds, from, parts->weight[from] - w) +
           excess_at(parts->bounds, to, parts->weight[to]) -
           excess_at(parts->bounds, to, parts->weight[to] + w);
}

/* The best part for v to go to of those that lower the excess, and the gain; -1: none. */
static int best_relief(const Parts *parts, int v, int64_t *key)
{
    int best = -1;
    const int64_t w = std::max(parts->graph->cellwgt[v], 1);
    for (int p = 0; p < parts->nparts; p++) {
        if (p == parts->part[v]) continue;
        const int64_t less = relief(parts, v, p);
        if (less <= 0) continue;
        const int64_t gain = gain_of_move(parts, v, p);
        // a loss is shared by the weight that it moves, a gain is multiplied by it
        const int64_t scaled = gain >= 0 ? gain * std::min<int64_t>(less, 1 << 20)
                                         : -((-gain * (int64_t{1} << 20)) / std::min(w, less));
        if (best >= 0 && scaled <= *key) continue;
        best = p;
        *key = scaled;
    }
    return best;
}

static void offer(const Parts *parts, KwayFmWork *work, int v)
{
    int64_t key = 0;
    const int to = best_relief(parts, v, &key);
    if (to < 0) return;
    assert(to != parts->part[v]);
    work->target[v] = to;
    put_in_heap(&work->heap, v, key);
}

/* Makes moves from what is in the heap while need() holds for some part. */
static void make_moves(Parts *parts, KwayFmWork *work)
{
    GainHeap *const heap = &work->heap;
    while (heap->n > 0) {
        const int v = top_of(heap);
        const int64_t expected = top_gain(heap);
        int64_t key = 0;
        const int to = best_relief(parts, v, &key);
        remove_from_heap(heap, v);
        if (to < 0) continue;
        if (key < expected && heap->n > 0 && key < top_gain(heap)) {
            put_in_heap(heap, v, key);
            continue;
        }
        [[maybe_unused]] const int64_t before = excess_of(parts);
        move_and_update(parts, &work->cache, v, to);
        assert(excess_of(parts) < before); // so it ends
    }
}

bool rebalance(Parts *parts, KwayFmWork *work)
{
    const int n = parts->graph->ncells;
    assert(work->heap.n == 0);
    for (int round = 0; round < 2; round++) { // parts too heavy, parts too light
        bool wanted = false;
        for (int p = 0; p < parts->nparts; p++)
            wanted |= (round == 0 ? over(parts, p) : under(parts, p)) > 0;
        if (!wanted) continue;
        for (int v = 0; v < n; v++)
            if (!is_fixed(parts, v) && (round == 1 || over(parts, parts->part[v]) > 0))
                offer(parts, work, v);
        make_moves(parts, work);
    }
    assert(work->heap.n == 0);
    HEAVY_ASSERT(parts_ok(parts));
    return within_bounds(parts);
}

int64_t pack(const HGraph *graph, const Bounds *bounds, const int *fixed, bool keep, int *where)
{
    const int n = graph->ncells, k = bounds->nparts;
    int *order = imalloc__(static_cast<size_t>(n), "search: order");
    int64_t *weight = alloc_array<int64_t>(static_cast<size_t>(k), "search: packed");
    std::fill(weight, weight + k, 0);
    std::iota(order, order + n, 0);
    std::stable_sort(order, order + n,
                     [&](int u, int v) { return graph->cellwgt[u] > graph->cellwgt[v]; });
    for (int v = 0; fixed != nullptr && v < n; v++)
        if (fixed[v] >= 0) weight[where[v] = fixed[v]] += graph->cellwgt[v];
    for (int i = 0; i < n; i++) {
        const int v = order[i];
        if (fixed != nullptr && fixed[v] >= 0) continue;
        const int64_t w = graph->cellwgt[v];
        assert(w >= 0 && (i == 0 || graph->cellwgt[order[i - 1]] >= w));
        if (!keep || weight[where[v]] + w > bounds->most[where[v]]) {
            int roomy = 0;
            for (int p = 1; p < k; p++)
                if (bounds->most[p] - weight[p] > bounds->most[roomy] - weight[roomy]) roomy = p;
            where[v] = roomy;
        }
        assert(0 <= where[v] && where[v] < k);
        weight[where[v]] += w;
    }
    int64_t excess = 0;
    for (int p = 0; p < k; p++) excess += excess_at(bounds, p, weight[p]);
    QXfree__(&order, &weight, LTERM);
    return excess;
}
