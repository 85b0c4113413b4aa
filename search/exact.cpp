// SPDX-License-Identifier: MIT
/* search/exact.cpp: branch and bound over the parts of one vertex after the other.
 *
 * The cost of the hyperedges that the vertices placed so far have cut never falls when another is
 * placed: so a branch that costs as much as the best partition known is given up. Of empty parts
 * with equal bounds, which are all alike, only the first is tried.
 */
#include "search/exact.h"

#include <algorithm>
#include <bit>
#include <cassert>

#include "core/memory.h"

/* Where the search stands.
 *   parts of e holds the parts that the placed vertices of e lie in
 *   weight[p] is the weight of the placed vertices in p; free is that of all others
 */
struct Exact {
    const HGraph *graph;
    const Bounds *bounds;
    Objective objective;
    const int *fixed;
    int order[EXACT_VERTICES]; // of placing
    int part[EXACT_VERTICES];
    uint64_t *parts; // [nnets] a bit for each part
    int64_t weight[EXACT_PARTS], free;
    int64_t budget, best;
    int *where; // the best partition
    bool found;
};

static bool can_reach_least(const Exact *exact)
{
    int64_t missing = 0;
    for (int p = 0; p < exact->bounds->nparts; p++)
        missing += std::max<int64_t>(exact->bounds->least[p] - exact->weight[p], 0);
    return missing <= exact->free;
}

/* Whether an earlier part is as empty as p and bounded alike. */
static bool is_repeated(const Exact *exact, const bool *used, int p)
{
    const Bounds *const bounds = exact->bounds;
    for (int q = 0; q < p && !used[p] && exact->fixed == nullptr; q++)
        if (!used[q] && bounds->most[q] == bounds->most[p] && bounds->least[q] == bounds->least[p])
            return true;
    return false;
}

static void place(Exact *exact, int depth, int64_t cost, bool *used)
{
    const HGraph *const graph = exact->graph;
    assert(depth <= graph->ncells && cost < exact->best);
    assert(exact->free >= 0);
    if (depth == graph->ncells) {
        if (!can_reach_least(exact)) return;
        exact->best = cost;
        exact->found = true;
        std::copy(exact->part, exact->part + graph->ncells, exact->where);
        return;
    }
    const int v = exact->order[depth], w = graph->cellwgt[v];
    for (int p = 0; p < exact->bounds->nparts; p++) {
        if (exact->fixed != nullptr && exact->fixed[v] >= 0 && exact->fixed[v] != p) continue;
        if (exact->weight[p] + w > exact->bounds->most[p] || is_repeated(exact, used, p)) continue;
        if (exact->budget-- <= 0) return;
        const uint64_t bit = uint64_t{1} << p;
        uint64_t before[1 << 10];
        const int degree = graph->incptr[v + 1] - graph->incptr[v];
        assert(degree <= 1 << 10);
        int64_t more = cost;
        for (int i = 0; i < degree; i++) {
            const int e = graph->incind[graph->incptr[v] + i];
            before[i] = exact->parts[e];
            exact->parts[e] |= bit;
            more += net_cost(exact->objective, graph->netwgt[e], std::popcount(exact->parts[e])) -
                    net_cost(exact->objective, graph->netwgt[e], std::popcount(before[i]));
        }
        const bool was_used = used[p];
        used[p] = true;
        exact->weight[p] += w;
        exact->free -= w;
        assert(more >= cost && exact->free >= 0);
        exact->part[v] = p;
        if (more < exact->best && can_reach_least(exact)) place(exact, depth + 1, more, used);
        exact->free += w;
        exact->weight[p] -= w;
        assert(exact->weight[p] >= 0);
        used[p] = was_used;
        for (int i = 0; i < degree; i++)
            exact->parts[graph->incind[graph->incptr[v] + i]] = before[i];
    }
}

bool solve_exactly(const HGraph *graph, const Bounds *bounds, Objective objective, const int *fixed,
                   int64_t budget, int64_t *value, int64_t *excess, int *where)
{
    const int n = graph->ncells;
    assert(n <= EXACT_VERTICES && bounds->nparts <= EXACT_PARTS);
    Exact exact = {};
    exact.graph = graph;
    exact.bounds = bounds;
    exact.objective = objective;
    exact.fixed = fixed;
    exact.budget = budget;
    exact.best = *excess > 0 ? INT64_MAX : *value;
    exact.where = where;
    exact.parts = alloc_array<uint64_t>(static_cast<size_t>(graph->nnets) + 1, "search: parts");
    std::fill(exact.parts, exact.parts + graph->nnets, 0);
    for (int v = 0; v < n; v++) {
        exact.order[v] = v;
        exact.free += graph->cellwgt[v];
        if (graph->incptr[v + 1] - graph->incptr[v] > 1 << 10) exact.budget = 0;
    }
    // those that decide most come first: many hyperedges, then much weight
    std::stable_sort(exact.order, exact.order + n, [&](int u, int v) {
        const int a = graph->incptr[u + 1] - graph->incptr[u];
        const int b = graph->incptr[v + 1] - graph->incptr[v];
        return a != b ? a > b : graph->cellwgt[u] > graph->cellwgt[v];
    });
    bool used[EXACT_PARTS] = {};
    // nothing costs less than nothing, least of all where there is no vertex to place
    if (exact.budget > 0 && exact.best > 0) place(&exact, 0, 0, used);
    assert(!exact.found || exact.best < *value || *excess > 0);
    if (exact.found) {
        *value = exact.best;
        *excess = 0;
    }
    QXfree__(&exact.parts, LTERM);
    return exact.budget > 0;
}
