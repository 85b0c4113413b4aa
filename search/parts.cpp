// SPDX-License-Identifier: MIT
/* search/parts.cpp: pin counts of a k-way partition, moves and gains.
 *
 * A list of the parts that a hyperedge touches is short (most touch one or two), so it is searched
 * from its front; a table of all parts would cost nparts words a hyperedge.
 */
#include "search/parts.h"

#include <algorithm>
#include <cstring>

#include "core/heavy_assert.h"
#include "core/memory.h"

void open_parts(Parts *parts, const HGraph *graph, const Bounds *bounds, Objective objective,
                const int *fixed)
{
    assert(graph->ncells >= 0 && graph->nnets >= 0 && graph->incptr != nullptr);
    assert(bounds->nparts >= 1);
    const size_t n = static_cast<size_t>(graph->ncells), m = static_cast<size_t>(graph->nnets);
    parts->graph = graph;
    parts->bounds = bounds;
    parts->objective = objective;
    parts->nparts = bounds->nparts;
    parts->fixed = fixed;
    parts->part = imalloc__(n, "search: part");
    parts->weight = alloc_array<int64_t>(static_cast<size_t>(bounds->nparts), "search: weight");
    parts->touched = imalloc__(m, "search: touched");
    parts->counts =
        alloc_pool<PinCount>(static_cast<size_t>(graph->netptr[graph->nnets]), "search: counts");
    parts->value = 0;
}

void close_parts(Parts *parts)
{
    QXfree__(&parts->part, &parts->weight, &parts->touched, &parts->counts, LTERM);
}

/* One more pin of e in p. Returns the number of pins that p had before. */
static int add_pin(Parts *parts, int e, int p)
{
    PinCount *const list = parts->counts + parts->graph->netptr[e];
    const int n = parts->touched[e];
    for (int i = 0; i < n; i++)
        if (list[i].part == p) return list[i].npins++;
    assert(0 <= p && p < parts->nparts);
    assert(n < net_size(parts->graph, e) || net_size(parts->graph, e) == 0);
    list[n] = {p, 1};
    parts->touched[e]++;
    return 0;
}

/* One pin of e less in p. Returns the number of pins that are left there. */
static int remove_pin(Parts *parts, int e, int p)
{
    PinCount *const list = parts->counts + parts->graph->netptr[e];
    int i = 0;
    while (list[i].part != p) {
        i++;
        assert(i < parts->touched[e]);
    }
    const int left = --list[i].npins;
    assert(left >= 0); // P3
    if (left == 0) list[i] = list[--parts->touched[e]];
    return left;
}

void load_parts(Parts *parts, const int *where)
{
    const HGraph *const graph = parts->graph;
    if (where != parts->part)
        memcpy(parts->part, where, static_cast<size_t>(graph->ncells) * sizeof *where);
    std::fill(parts->weight, parts->weight + parts->nparts, 0);
    for (int v = 0; v < graph->ncells; v++) {
        assert(parts->part[v] >= 0 && parts->part[v] < parts->nparts);
        parts->weight[parts->part[v]] += graph->cellwgt[v];
    }
    parts->value = 0;
    for (int e = 0; e < graph->nnets; e++) {
        parts->touched[e] = 0;
        for (int j = graph->netptr[e]; j < graph->netptr[e + 1]; j++)
            add_pin(parts, e, parts->part[graph->netind[j]]);
        parts->value += net_cost(parts->objective, graph->netwgt[e], parts->touched[e]);
    }
}

bool within_bounds(const Parts *parts)
{
    return excess_of(parts) == 0;
}

int64_t excess_of(const Parts *parts)
{
    int64_t excess = 0;
    for (int p = 0; p < parts->nparts; p++) {
        excess += std::max<int64_t>(parts->weight[p] - parts->bounds->most[p], 0);
        excess += std::max<int64_t>(parts->bounds->least[p] - parts->weight[p], 0);
    }
    return excess;
}

MovedPin move_pin(Parts *parts, int e, int from, int to)
{
    const int before = parts->touched[e];
    assert(from != to && before > 0);
    const int left = remove_pin(parts, e, from), met = add_pin(parts, e, to);
    const int after = parts->touched[e];
    assert(after > 0 && after - before <= 1 && before - after <= 1);
    if (after != before)
        parts->value += net_cost(parts->objective, parts->graph->netwgt[e], after) -
                        net_cost(parts->objective, parts->graph->netwgt[e], before);
    assert(parts->value >= 0); // P4
    return {left, met, before};
}

void move_vertex(Parts *parts, int v, int to)
{
    const HGraph *const graph = parts->graph;
    const int from = parts->part[v];
    assert(from != to && to >= 0 && to < parts->nparts);
    assert(!is_fixed(parts, v));
    parts->part[v] = to;
    parts->weight[from] -= graph->cellwgt[v];
    parts->weight[to] += graph->cellwgt[v];
    assert(parts->weight[from] >= 0); // P2
    for (int i = graph->incptr[v]; i < graph->incptr[v + 1]; i++)
        move_pin(parts, graph->incind[i], from, to);
}

int64_t gain_of_move(const Parts *parts, int v, int to)
{
    const HGraph *const graph = parts->graph;
    const int from = parts->part[v];
    int64_t gain = 0;
    assert(from != to && 0 <= to && to < parts->nparts);
    for (int i = graph->incptr[v]; i < graph->incptr[v + 1]; i++) {
        const int e = graph->incind[i], before = parts->touched[e];
        const int after =
            before - (pins_in(parts, e, from) == 1 ? 1 : 0) + (pins_in(parts, e, to) == 0 ? 1 : 0);
        if (after != before)
            gain += net_cost(parts->objective, graph->netwgt[e], before) -
                    net_cost(parts->objective, graph->netwgt[e], after);
    }
    return gain;
}

int64_t objective_of(const HGraph *graph, int nparts, Objective objective, const int *where)
{
    int *const last = ismalloc__(static_cast<size_t>(nparts), -1, "search: last");
    int64_t value = 0;
    for (int e = 0; e < graph->nnets; e++) {
        int touched = 0;
        for (int j = graph->netptr[e]; j < graph->netptr[e + 1]; j++) {
            int *const seen = &last[where[graph->netind[j]]];
            if (*seen == e) continue;
            *seen = e;
            touched++;
        }
        value += net_cost(objective, graph->netwgt[e], touched);
    }
    int *freed = last;
    QXfree__(&freed, LTERM);
    return value;
}
