// SPDX-License-Identifier: MIT
/* search/kway_fm.cpp: localized k-way Fiduccia-Mattheyses refinement.
 *
 * Gains of vertices that searches have come near are kept in rows (search/gain_cache.h). A vertex
 * in the heap has its place brought up to date when a hyperedge of its own changes in a way that
 * matters; that a part has filled up in the meantime is found when it comes to the top.
 */
#include "search/kway_fm.h"

#include <algorithm>
#include <bit>
#include <cmath>

#include "core/heavy_assert.h"
#include "core/memory.h"

constexpr int SEEDS = 25;              // vertices that one search starts from
constexpr int WIDE_NET = 500;          // pins: neighbours through larger hyperedges are not updated
constexpr double PATIENCE = 1.0;       // alpha of the stopping rule
constexpr double LEAST_SHARE = 0.0025; // of the objective: a round that gains less is the last

void open_kway_fm(KwayFmWork *work, const HGraph *graph, int nparts, Objective objective)
{
    const size_t n = static_cast<size_t>(graph->ncells);
    open_gain_heap(&work->heap, graph->ncells);
    open_gain_cache(&work->cache, graph, nparts, objective);
    work->target = imalloc__(n, "search: target");
    work->moved = ismalloc__(n, 0, "search: moved");
    work->updated = ismalloc__(n, 0, "search: updated");
    work->seeds = imalloc__(n, "search: seeds");
    work->moves = imalloc__(n, "search: moves");
    work->origins = imalloc__(n, "search: origins");
    work->round = work->nmoves = 0;
    work->cancel = nullptr;
}

void close_kway_fm(KwayFmWork *work)
{
    close_gain_heap(&work->heap);
    close_gain_cache(&work->cache);
    QXfree__(&work->target, &work->moved, &work->updated, &work->seeds, &work->moves,
             &work->origins, LTERM);
}

/* Whether v may go from its part to to without making a bound worse. */
static bool has_room(const Parts *parts, int v, int from, int to)
{
    const int64_t w = parts->graph->cellwgt[v];
    assert(w >= 0 && from == parts->part[v] && to != from);
    return parts->weight[to] + w <= parts->bounds->most[to] &&
           parts->weight[from] - w >= parts->bounds->least[from];
}

/* The part with room for v where its move gains most, the lighter one of equals, and that gain;
 * -1 if no part has room. */
static int best_move(const Parts *parts, KwayFmWork *work, int v, int64_t *gain)
{
    const GainCache *const cache = &work->cache;
    const int from = parts->part[v], number = row_of(&work->cache, parts, v);
    int *const row = row_at(cache, number), *const gains = gains_in(cache, row);
    int best = -1, most = 1; // no gain to its own part, nor to one that its hyperedges don't touch
    const auto consider = [&](int p) {
        if (gains[p] < most || !has_room(parts, v, from, p)) return;
        if (best >= 0 && gains[p] == most && parts->weight[p] >= parts->weight[best]) return;
        best = p;
        most = gains[p];
    };
    if (cache->nmarks == 0)
        for (int p = 0; p < parts->nparts; p++) consider(p);
    for (int word = 0; word < cache->nmarks; word++)
        for (unsigned left = static_cast<unsigned>(row[1 + word]); left != 0; left &= left - 1) {
            const int p = 32 * word + std::countr_zero(left);
            if (gains[p] == 0) marks_of(row, p) &= ~mark_of(p);
            consider(p);
        }
    *gain = static_cast<int64_t>(row[0]) + most;
    assert(best != from && cache->owner[number] == v);
    return best;
}

/* Brings v's place in the heap up to date. */
static void update_vertex(const Parts *parts, KwayFmWork *work, int v)
{
    int64_t gain = 0;
    const int to = best_move(parts, work, v, &gain);
    assert(!is_fixed(parts, v) && work->moved[v] != work->round);
    if (to >= 0) {
        work->target[v] = to;
        put_in_heap(&work->heap, v, gain);
    } else if (in_heap(&work->heap, v)) {
        remove_from_heap(&work->heap, v);
    }
}

static bool may_move(const Parts *parts, const KwayFmWork *work, int v)
{
    assert(work->moved[v] <= work->round);
    return work->moved[v] != work->round && !is_fixed(parts, v);
}

/* After v moved: the pins of its hyperedges whose gains may have changed. */
static void update_neighbours(const Parts *parts, KwayFmWork *work, int v, int from, int to)
{
    const HGraph *const graph = parts->graph;
    const int number = ++work->nmoves;
    assert(number > 0 && parts->part[v] == to);
    for (int i = graph->incptr[v]; i < graph->incptr[v + 1]; i++) {
        const int e = graph->incind[i];
        if (pins_in(parts, e, from) > 1 && pins_in(parts, e, to) > 2) continue;
        const bool wide = net_size(graph, e) > WIDE_NET;
        for (int j = graph->netptr[e]; j < graph->netptr[e + 1]; j++) {
            const int u = graph->netind[j];
            if (work->updated[u] == number || !may_move(parts, work, u)) continue;
            if (wide && !in_heap(&work->heap, u)) continue;
            work->updated[u] = number;
            update_vertex(parts, work, u);
        }
    }
}

/* How a search goes on: gains since its best point. */
struct Hope {
    double sum, squares;
    int steps;
};

static bool is_hopeless(const Hope *hope, double beta)
{
    if (hope->steps < 2) return false;
    const double n = hope->steps, mean = hope->sum / n;
    const double variance = std::max(0.0, (hope->squares - hope->sum * mean) / (n - 1));
    if (mean > 0) return false;
    if (variance == 0 && mean == 0) return n > 4 * beta; // a plateau
    return n * mean * mean > PATIENCE * variance + beta;
}

/* Moves that are worth more than others of the same value: those that even out the weights. */
static int64_t heaviest_excess(const Parts *parts)
{
    int64_t most = 0;
    for (int p = 0; p < parts->nparts; p++)
        most = std::max(most, parts->weight[p] - parts->bounds->most[p]);
    return most;
}

/* One search from what is in the heap. Leaves parts at its best point. */
static void search_locally(Parts *parts, KwayFmWork *work, double beta)
{
    GainHeap *const heap = &work->heap;
    int64_t best = parts->value, excess = heaviest_excess(parts);
    int nmoves = 0, nbest = 0;
    [[maybe_unused]] const int64_t start = best;
    Hope hope = {};
    while (heap->n > 0 && !is_hopeless(&hope, beta)) {
        const int v = top_of(heap), from = parts->part[v];
        const int64_t expected = top_gain(heap);
        int64_t gain = 0;
        const int to = best_move(parts, work, v, &gain);
        if (to < 0) {
            remove_from_heap(heap, v);
            continue;
        }
        if (gain < expected) { // the part that was best has no room any more
            work->target[v] = to;
            put_in_heap(heap, v, gain);
            continue;
        }
        assert(may_move(parts, work, v) && has_room(parts, v, from, to));
        remove_from_heap(heap, v);
        work->moved[v] = work->round;
        work->moves[nmoves] = v;
        work->origins[nmoves++] = from;
        move_and_update(parts, &work->cache, v, to);
        const double g = static_cast<double>(gain);
        hope.sum += g;
        hope.squares += g * g;
        hope.steps++;
        if (parts->value < best ||
            (parts->value == best && excess > 0 && heaviest_excess(parts) < excess)) {
            best = parts->value;
            nbest = nmoves;
            hope = {};
        }
        update_neighbours(parts, work, v, from, to);
    }
    while (nmoves > nbest) {
        nmoves--;
        move_and_update(parts, &work->cache, work->moves[nmoves], work->origins[nmoves]);
    }
    assert(parts->value == best && best <= start);
    empty_heap(heap);
}

static int list_boundary(const Parts *parts, int *list)
{
    const HGraph *const graph = parts->graph;
    int n = 0;
    for (int v = 0; v < graph->ncells; v++) {
        if (is_fixed(parts, v)) continue;
        for (int i = graph->incptr[v]; i < graph->incptr[v + 1]; i++)
            if (parts->touched[graph->incind[i]] > 1) {
                assert(n < graph->ncells);
                list[n++] = v;
                break;
            }
    }
    return n;
}

static void make_round(Parts *parts, KwayFmWork *work, Random *random)
{
    const double beta = std::log(static_cast<double>(parts->graph->ncells) + 1);
    work->round++;
    assert(work->heap.n == 0 && work->round > 0);
    const int nseeds = list_boundary(parts, work->seeds);
    shuffle(random, work->seeds, nseeds);
    for (int i = 0; i < nseeds;) {
        if (was_set(work->cancel)) return;
        for (int started = 0; i < nseeds && started < SEEDS; i++) {
            const int v = work->seeds[i];
            if (!may_move(parts, work, v)) continue;
            update_vertex(parts, work, v);
            started += in_heap(&work->heap, v);
        }
        search_locally(parts, work, beta);
    }
}

int64_t refine_kway_fm(Parts *parts, KwayFmWork *work, int nrounds, Random *random)
{
    HEAVY_ASSERT(parts_ok(parts));
    HEAVY_ASSERT(gain_cache_ok(&work->cache, parts));
    const int64_t start = parts->value;
    for (int round = 0; round < nrounds; round++) {
        const int64_t before = parts->value;
        make_round(parts, work, random);
        HEAVY_ASSERT(parts_ok(parts));
        if (static_cast<double>(before - parts->value) <= LEAST_SHARE * static_cast<double>(before))
            break;
    }
    assert(parts->value <= start);
    HEAVY_ASSERT(gain_cache_ok(&work->cache, parts));
    HEAVY_ASSERT(gain_heap_ok(&work->heap, parts->graph->ncells));
    return start - parts->value;
}
