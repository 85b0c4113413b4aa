// SPDX-License-Identifier: MIT
/* search/gain_cache.cpp: rows of gains. See the header for what they hold. */
#include "search/gain_cache.h"

#include <algorithm>

#include "core/memory.h"

constexpr size_t BYTES_A_PIN = 64; // most that rows take
constexpr int FEW_PARTS = 32;      // no marks: they would cost more than they save
constexpr int CUT_SHARE = 4;       // of the objective cut, beside one share of km1

void open_gain_cache(GainCache *cache, const HGraph *graph, int nparts, Objective objective)
{
    int64_t total = 0;
    for (int e = 0; e < graph->nnets; e++) total += graph->netwgt[e];
    cache->km1 = 1;
    cache->cut = objective == Objective::km1 ? 0 : 1;
    if (objective == Objective::cut && total > INT32_MAX / (CUT_SHARE + 1))
        cache->km1 = 0;
    else if (objective == Objective::cut)
        cache->cut = CUT_SHARE;
    if (objective == Objective::soed && total > INT32_MAX / 2) cache->cut = 0;
    const size_t n = static_cast<size_t>(graph->ncells), k = static_cast<size_t>(nparts);
    const size_t bytes = BYTES_A_PIN * static_cast<size_t>(graph->netptr[graph->nnets]);
    const size_t rows = std::min(n, std::max<size_t>(bytes / (sizeof(int) * k), 1024));
    assert(cache->cut + cache->km1 > 0 && nparts >= 1);
    cache->nparts = nparts;
    cache->nmarks = nparts > FEW_PARTS ? (nparts + 31) / 32 : 0;
    cache->length = 1 + cache->nmarks + nparts;
    cache->nrows = 0;
    cache->mostrows = static_cast<int>(rows);
    cache->row = ismalloc__(n, -1, "search: row");
    cache->owner = alloc_pool<int>(rows, "search: owner");
    cache->rows = alloc_pool<int>(rows * static_cast<size_t>(cache->length), "search: gains");
}

void close_gain_cache(GainCache *cache)
{
    QXfree__(&cache->row, &cache->owner, &cache->rows, LTERM);
}

void clear_gain_cache(GainCache *cache)
{
    for (int i = 0; i < cache->nrows; i++) cache->row[cache->owner[i]] = -1;
    cache->nrows = 0;
}

static void add_gain(const GainCache *cache, int *row, int p, int gain)
{
    if (cache->nmarks == 0) {
        row[1 + p] += gain;
        return;
    }
    gains_in(cache, row)[p] = gain_in(cache, row, p) + gain;
    marks_of(row, p) |= mark_of(p);
}

/* Adds e's share to a row of a vertex in part from. */
static void add_share(const Parts *parts, const GainCache *cache, int e, int from, int *row)
{
    const int n = parts->touched[e], w = parts->graph->netwgt[e];
    const PinCount *const list = parts->counts + parts->graph->netptr[e];
    assert(n > 0);
    if (n == 1) {
        assert(list[0].part == from);
        if (list[0].npins > 1) row[0] -= w * (cache->cut + cache->km1);
        return;
    }
    bool alone = false;
    for (int i = 0; i < n; i++)
        if (list[i].part == from) alone = list[i].npins == 1;
    if (!alone) row[0] -= w * cache->km1;
    const int each = w * (n == 2 && alone ? cache->cut + cache->km1 : cache->km1);
    for (int i = 0; i < n; i++)
        if (list[i].part != from) add_gain(cache, row, list[i].part, each);
}

int row_of(GainCache *cache, const Parts *parts, int v)
{
    const HGraph *const graph = parts->graph;
    if (has_row(cache, v)) return cache->row[v];
    if (cache->nrows == cache->mostrows) clear_gain_cache(cache);
    assert(cache->nrows < cache->mostrows && cache->nparts == parts->nparts);
    const int number = cache->nrows++;
    int *const row = row_at(cache, number);
    cache->row[v] = number;
    cache->owner[number] = v;
    std::fill(row, gains_in(cache, row) + (cache->nmarks == 0 ? cache->nparts : 0), 0);
    for (int i = graph->incptr[v]; i < graph->incptr[v + 1]; i++)
        add_share(parts, cache, graph->incind[i], parts->part[v], row);
    return number;
}

/* The pin of e in part p beside v; there is one. */
static int other_pin(const Parts *parts, int e, int p, int v)
{
    const HGraph *const graph = parts->graph;
    int j = graph->netptr[e];
    while (graph->netind[j] == v || parts->part[graph->netind[j]] != p) {
        j++;
        assert(j < graph->netptr[e + 1]);
    }
    return graph->netind[j];
}

/* A hyperedge of weight w, one of whose pins, v, has just moved. */
struct MovedNet {
    int e, v, w, from, to;
};

/* To all other pins: a part was entered, or left, as a whole. */
static void update_all_rows(const Parts *parts, const GainCache *cache, const MovedNet *net,
                            MovedPin pins)
{
    const HGraph *const graph = parts->graph;
    const bool leaves = pins.left == 0, enters = pins.met == 0;
    const int km1 = net->w * cache->km1, cut = net->w * cache->cut;
    assert((leaves || enters) && net->w >= 0);
    int base = 0;
    if (enters && !leaves && pins.ntouched == 1) base = cut;
    if (leaves && !enters && pins.ntouched == 2) base = -cut;
    for (int j = graph->netptr[net->e]; j < graph->netptr[net->e + 1]; j++) {
        const int number = cache->row[graph->netind[j]];
        if (number < 0) continue;
        int *const row = row_at(cache, number);
        row[0] += base;
        if (leaves) add_gain(cache, row, net->from, -km1);
        if (enters) add_gain(cache, row, net->to, km1);
    }
}

/* To the row of the pin of e in part p beside v, if it has one: base to its base, gain to q. */
static void update_one_row(const Parts *parts, const GainCache *cache, const MovedNet *net, int p,
                           int base, int q, int gain)
{
    const int u = other_pin(parts, net->e, p, net->v);
    assert(p != q && 0 <= q && q < cache->nparts);
    if (!has_row(cache, u)) return;
    int *const row = row_at(cache, cache->row[u]);
    row[0] += base;
    if (gain != 0) add_gain(cache, row, q, gain);
}

/* To the pin that is alone in a third part, if there is one and two parts were or are touched. */
static void update_third(const Parts *parts, const GainCache *cache, const MovedNet *net,
                         MovedPin pins)
{
    const bool was = pins.met == 0 && pins.ntouched == 2;
    const bool is = pins.left == 0 && parts->touched[net->e] == 2;
    if (!was && !is) return;
    const PinCount *third = parts->counts + parts->graph->netptr[net->e];
    while (third->part == net->from || third->part == net->to) third++;
    assert(third < parts->counts + parts->graph->netptr[net->e] + parts->touched[net->e]);
    if (third->npins > 1) return;
    const int cut = net->w * cache->cut;
    if (was) update_one_row(parts, cache, net, third->part, 0, net->from, -cut);
    if (is) update_one_row(parts, cache, net, third->part, 0, net->to, cut);
}

/* To the row of the pin that moved. */
static void update_own_row(const Parts *parts, const GainCache *cache, const MovedNet *net,
                           MovedPin pins, int *row)
{
    const int km1 = net->w * cache->km1, cut = net->w * cache->cut;
    const int now = parts->touched[net->e];
    if (pins.left > 0) row[0] += km1, add_gain(cache, row, net->from, km1);
    if (pins.met > 0) row[0] -= km1, add_gain(cache, row, net->to, -km1);
    if (pins.ntouched == 1 && pins.left > 0) row[0] += cut;
    if (now == 1 && pins.met > 0) row[0] -= cut;
    if (pins.ntouched == 2 && pins.left == 0 && pins.met > 0) add_gain(cache, row, net->to, -cut);
    if (now == 2 && pins.met == 0 && pins.left > 0) add_gain(cache, row, net->from, cut);
}

/* Moves v's pin of e, and what that changes in the rows of other pins. */
static MovedPin move_pin_and_shares(Parts *parts, const GainCache *cache, const MovedNet *net)
{
    const MovedPin pins = move_pin(parts, net->e, net->from, net->to);
    const int km1 = net->w * cache->km1, cut = net->w * cache->cut;
    const bool all = pins.left == 0 || pins.met == 0, pair = parts->touched[net->e] == 2;
    if (all) update_all_rows(parts, cache, net, pins);
    if (pins.left == 1) update_one_row(parts, cache, net, net->from, km1, net->to, pair ? cut : 0);
    if (pins.met == 1)
        update_one_row(parts, cache, net, net->to, -km1, net->from, pins.ntouched == 2 ? -cut : 0);
    if (all && cut > 0) update_third(parts, cache, net, pins);
    return pins;
}

void move_and_update(Parts *parts, GainCache *cache, int v, int to)
{
    const HGraph *const graph = parts->graph;
    const int from = parts->part[v], own = cache->row[v];
    assert(from != to && to >= 0 && to < parts->nparts);
    assert(!is_fixed(parts, v) && (own < 0 || cache->owner[own] == v)); // C1
    parts->part[v] = to;
    parts->weight[from] -= graph->cellwgt[v];
    parts->weight[to] += graph->cellwgt[v];
    assert(parts->weight[from] >= 0);
    cache->row[v] = -1; // not one of the others
    for (int i = graph->incptr[v]; i < graph->incptr[v + 1]; i++) {
        const int e = graph->incind[i];
        const MovedNet net = {e, v, graph->netwgt[e], from, to};
        const MovedPin pins = move_pin_and_shares(parts, cache, &net);
        if (own >= 0) update_own_row(parts, cache, &net, pins, row_at(cache, own));
    }
    cache->row[v] = own;
}
