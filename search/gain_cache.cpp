// SPDX-License-Identifier: MIT
/* search/gain_cache.cpp: rows of gains. See the header for what they hold. */
#include "search/gain_cache.h"

#include <algorithm>

#include "core/memory.h"

constexpr size_t BYTES_A_PIN = 64; // most that rows take
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
    cache->nrows = 0;
    cache->mostrows = static_cast<int>(rows);
    cache->row = ismalloc__(n, -1, "search: row");
    cache->owner = alloc_pool<int>(rows, "search: owner");
    cache->base = alloc_pool<int>(rows, "search: base");
    cache->gains = alloc_pool<int>(rows * k, "search: gains");
}

void close_gain_cache(GainCache *cache)
{
    QXfree__(&cache->row, &cache->owner, &cache->base, &cache->gains, LTERM);
}

void clear_gain_cache(GainCache *cache)
{
    for (int i = 0; i < cache->nrows; i++)
        if (cache->owner[i] >= 0) cache->row[cache->owner[i]] = -1;
    cache->nrows = 0;
}

static int *gains_of(const GainCache *cache, int row)
{
    assert(0 <= row && row < cache->mostrows);
    return cache->gains + static_cast<size_t>(row) * static_cast<size_t>(cache->nparts);
}

/* Adds sign times e's share to a row of a vertex in part from. */
static void add_share(const Parts *parts, const GainCache *cache, int e, int from, int sign,
                      int *base, int *gains)
{
    const int n = parts->touched[e], w = sign * parts->graph->netwgt[e];
    const PinCount *const list = parts->counts + parts->graph->netptr[e];
    assert(n > 0 && (sign == 1 || sign == -1));
    if (n == 1) {
        assert(list[0].part == from);
        if (list[0].npins > 1) *base -= w * (cache->cut + cache->km1);
        return;
    }
    bool alone = false;
    for (int i = 0; i < n; i++)
        if (list[i].part == from) alone = list[i].npins == 1;
    if (!alone) *base -= w * cache->km1;
    const int each = w * (n == 2 && alone ? cache->cut + cache->km1 : cache->km1);
    for (int i = 0; i < n; i++)
        if (list[i].part != from) gains[list[i].part] += each;
}

int row_of(GainCache *cache, const Parts *parts, int v)
{
    const HGraph *const graph = parts->graph;
    if (has_row(cache, v)) return cache->row[v];
    if (cache->nrows == cache->mostrows) clear_gain_cache(cache);
    assert(cache->nrows < cache->mostrows && cache->nparts == parts->nparts);
    const int row = cache->nrows++;
    int *const gains = gains_of(cache, row);
    cache->row[v] = row;
    cache->owner[row] = v;
    cache->base[row] = 0;
    std::fill(gains, gains + cache->nparts, 0);
    for (int i = graph->incptr[v]; i < graph->incptr[v + 1]; i++)
        add_share(parts, cache, graph->incind[i], parts->part[v], 1, &cache->base[row], gains);
    return row;
}

/* Adds sign times e's share to the row of its pin u, if there is one. */
static void add_to_row(const Parts *parts, GainCache *cache, int e, int u, int sign)
{
    const int row = cache->row[u];
    if (row < 0) return;
    assert(row < cache->nrows && cache->owner[row] == u); // C1
    add_share(parts, cache, e, parts->part[u], sign, &cache->base[row], gains_of(cache, row));
}

static void add_to_rows(const Parts *parts, GainCache *cache, int e, int sign)
{
    const HGraph *const graph = parts->graph;
    for (int j = graph->netptr[e]; j < graph->netptr[e + 1]; j++)
        add_to_row(parts, cache, e, graph->netind[j], sign);
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

/* Moves v's pin of e. While no part is left or entered by e as a whole, shares change only where a
 * pin becomes the one of its part, or is that no more. */
static void move_pin_and_shares(Parts *parts, GainCache *cache, int e, int v, int from, int to)
{
    const int nfrom = pins_in(parts, e, from), nto = pins_in(parts, e, to);
    assert(nfrom > 0 && cache->row[v] == -1 && parts->part[v] == to);
    const bool all = nfrom == 1 || nto == 0;
    const int left = !all && nfrom == 2 ? other_pin(parts, e, from, v) : -1;
    const int met = !all && nto == 1 ? other_pin(parts, e, to, v) : -1;
    for (int sign = -1; sign <= 1; sign += 2) {
        if (all) add_to_rows(parts, cache, e, sign);
        if (left >= 0) add_to_row(parts, cache, e, left, sign);
        if (met >= 0) add_to_row(parts, cache, e, met, sign);
        if (sign < 0) move_pin(parts, e, from, to);
    }
}

static void give_up_row(GainCache *cache, int v)
{
    if (!has_row(cache, v)) return;
    assert(cache->owner[cache->row[v]] == v); // C1
    cache->owner[cache->row[v]] = -1;
    cache->row[v] = -1;
}

void move_and_update(Parts *parts, GainCache *cache, int v, int to)
{
    const HGraph *const graph = parts->graph;
    const int from = parts->part[v];
    assert(from != to && to >= 0 && to < parts->nparts);
    assert(!is_fixed(parts, v));
    give_up_row(cache, v);
    parts->part[v] = to;
    parts->weight[from] -= graph->cellwgt[v];
    parts->weight[to] += graph->cellwgt[v];
    assert(parts->weight[from] >= 0);
    for (int i = graph->incptr[v]; i < graph->incptr[v + 1]; i++)
        move_pin_and_shares(parts, cache, graph->incind[i], v, from, to);
}
