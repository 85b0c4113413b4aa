// SPDX-License-Identifier: MIT
/* search/flow_cut.cpp: balanced minimum cuts by growing both ends of a flow network.
 *
 * Once the flow is maximum, what the source reaches is one minimum cut and what reaches the sink is
 * another. If neither is balanced, the lighter side takes all it reaches for its own and one node
 * more, a candidate next to its cut: it pierces the cut. A candidate that the other side does not
 * reach opens no path, so the weight of the cut stays. All others may cost flow.
 */
#include "search/flow_cut.h"

#include <algorithm>

#include "core/heavy_assert.h"
#include "core/memory.h"
#include "search/flow_grow.h"
#include "search/flow_pierce.h"

/* So many nodes that may cost flow are taken before the other side's reach is made exact again.
 * Until then it is too large: some nodes that would cost nothing are not known to. */
constexpr int REFRESH_EVERY = 16;
/* Growths in a row that may overshoot before the search for more balance ends. */
constexpr int MOST_OVERSHOTS = 16;

void open_flow_cut(FlowCut *cut, const HGraph *graph)
{
    const size_t nnodes = static_cast<size_t>(graph->ncells) + 2;
    const size_t nedges = static_cast<size_t>(graph->nnets);
    for (FlowSide &side : cut->side) {
        side.queue = alloc_pool<int>(nnodes, "flow: queue");
        side.edgequeue = alloc_pool<int>(2 * nedges, "flow: edge queue");
        side.next = alloc_pool<int>(nnodes, "flow: next");
        side.known = alloc_pool<bool>(nnodes, "flow: known");
        side.heads[FREE] = alloc_pool<int>(nnodes + 2, "flow: heads");
        side.heads[OPENING] = alloc_pool<int>(nnodes + 2, "flow: heads");
    }
    cut->hits = alloc_pool<int>(nnodes, "flow: hits");
    cut->steps = alloc_pool<int>(2 * nnodes, "flow: steps");
    cut->npaths = 0;
}

void close_flow_cut(FlowCut *cut)
{
    for (FlowSide &side : cut->side)
        QXfree__(&side.queue, &side.edgequeue, &side.next, &side.known, &side.heads[FREE],
                 &side.heads[OPENING], LTERM);
    QXfree__(&cut->hits, &cut->steps, LTERM);
}

/* Whether the cut around what side X reaches is balanced. */
template <int X> static bool fits(const FlowCut *cut, const FlowBounds *bounds)
{
    const int64_t own = cut->side[X].reached, other = cut->total - own;
    return !cut->side[X].stale && own <= bounds->most[X] && own >= bounds->least[X] &&
           other <= bounds->most[1 - X] && other >= bounds->least[1 - X];
}

/* Side X takes what it reaches and one node more; blocked if there is no such node. */
template <int X>
static void advance(FlowNet *net, FlowCut *cut, const FlowBounds *bounds, int64_t limit)
{
    FlowSide *const side = &cut->side[X];
    settle<X>(net, cut);
    const int64_t room = bounds->most[X] - side->settled;
    int u = pick<X>(net, cut, FREE, room);
    if (u < 0 && cut->side[1 - X].stale && ++side->npierced >= REFRESH_EVERY) {
        side->npierced = 0;
        refresh<1 - X>(net, cut);
        sort_candidates<X>(net, cut);
        u = pick<X>(net, cut, FREE, room);
    }
    if (u < 0) u = pick<X>(net, cut, OPENING, room);
    if (u < 0) u = pick_anywhere<X>(net, cut, room);
    side->blocked = u < 0;
    if (side->blocked) return;
    assert(side->settled + net->weight[u] <= bounds->most[X]);
    pierce<X>(net, cut, u);
    exhaust<X>(net, cut, limit);
}

/* Weight of side X when it holds so much, as a share of what it may hold; the larger share
 * is the heavier side. */
static double load_of(const FlowBounds *bounds, int side, int64_t weight)
{
    return static_cast<double>(weight) /
           static_cast<double>(std::max<int64_t>(bounds->most[side], 1));
}

double heavier_load(const FlowBounds *bounds, int64_t weight0, int64_t weight1)
{
    return std::max(load_of(bounds, SOURCE, weight0), load_of(bounds, SINK, weight1));
}

/* Side X, whose cut is balanced, grows on without more flow while that makes the heavier side
 * lighter. */
template <int X> static void balance(FlowNet *net, FlowCut *cut, const FlowBounds *bounds)
{
    FlowSide *const side = &cut->side[X];
    if (cut->side[1 - X].stale) {
        refresh<1 - X>(net, cut);
        sort_candidates<X>(net, cut);
    }
    settle<X>(net, cut);
    for (int overshots = 0; overshots < MOST_OVERSHOTS;) {
        const int64_t before = side->settled;
        const double load = load_of(bounds, 1 - X, cut->total - before);
        const int u = load_of(bounds, X, before) < load
                          ? pick<X>(net, cut, FREE, bounds->most[X] - before)
                          : -1;
        if (u < 0) break;
        pierce<X>(net, cut, u);
        refresh<X>(net, cut);
        if (load_of(bounds, X, side->reached) <= load &&
            cut->total - side->reached >= bounds->least[1 - X]) {
            settle<X>(net, cut);
            continue;
        }
        assert(side->settled >= before);
        net->nodes[u].level[X] = -1;
        side->settled = before;
        side->nroots = side->nqueue = side->nedgequeue = 0;
        side->reached = before;
        overshots++;
    }
}

/* Both ends become terminals; nothing is reached yet. */
static void begin_cut(FlowNet *net, FlowCut *cut)
{
    cut->levels = 0;
    cut->value = 0;
    cut->total = 0;
    for (int u = 0; u < net->nnodes; u++) cut->total += net->weight[u];
    cut->deepest[SOURCE] = net->first[1] > 2 ? net->depth[net->first[1] - 1] : -1;
    cut->deepest[SINK] = net->nnodes > net->first[1] ? net->depth[net->nnodes - 1] : -1;
    cut->nranks = cut->deepest[SOURCE] + cut->deepest[SINK] + 2;
    for (int x = SOURCE; x <= SINK; x++) {
        FlowSide *const side = &cut->side[x];
        side->settled = side->reached = net->weight[x];
        side->queue[0] = x;
        side->nroots = side->nqueue = 1;
        side->nedgequeue = 0;
        side->base = 0;
        side->stale = true;
        side->npierced = 0;
        side->blocked = false;
        side->cursor = 0;
        std::fill(side->known, side->known + net->nnodes, false);
        for (int chain = FREE; chain <= OPENING; chain++) {
            std::fill(side->heads[chain], side->heads[chain] + cut->nranks, -1);
            side->top[chain] = -1;
        }
        net->nodes[x].level[x] = SETTLED;
    }
}

/* The side with the lesser load; -1: neither can grow. What a stale side reaches is at most what
 * the other does not. */
static int side_to_grow(const FlowCut *cut, const FlowBounds *bounds)
{
    const FlowSide *const source = &cut->side[SOURCE], *const sink = &cut->side[SINK];
    if (source->blocked || sink->blocked)
        return !source->blocked ? SOURCE : !sink->blocked ? SINK : -1;
    int64_t weight0 = source->reached, weight1 = sink->reached;
    if (source->stale) weight0 = std::min(weight0, cut->total - weight1);
    if (sink->stale) weight1 = std::min(weight1, cut->total - weight0);
    return load_of(bounds, SOURCE, weight0) < load_of(bounds, SINK, weight1) ? SOURCE : SINK;
}

int find_balanced_cut(FlowNet *net, FlowCut *cut, const FlowBounds *bounds, int64_t limit,
                      int64_t visits, const volatile int *cancel)
{
    assert(limit <= MOST_FLOW && bounds->most[SOURCE] >= 0 && bounds->most[SINK] >= 0);
    begin_cut(net, cut);
    cut->visits = visits;
    cut->cancel = cancel;
    cut->over = false;
    exhaust<SOURCE>(net, cut, limit);
    if (cut->value > limit || gives_up(net, cut)) return -1;
    refresh<SINK>(net, cut);
    while (!gives_up(net, cut)) {
        HEAVY_ASSERT(flow_cut_ok(net, cut));
        if (fits<SOURCE>(cut, bounds)) return balance<SOURCE>(net, cut, bounds), SOURCE;
        if (fits<SINK>(cut, bounds)) return balance<SINK>(net, cut, bounds), SINK;
        const int x = side_to_grow(cut, bounds);
        if (x < 0) return -1;
        if (cut->side[x].stale)
            x == SOURCE ? refresh<SOURCE>(net, cut) : refresh<SINK>(net, cut);
        else
            x == SOURCE ? advance<SOURCE>(net, cut, bounds, limit)
                        : advance<SINK>(net, cut, bounds, limit);
        if (cut->value > limit) return -1;
    }
    return -1;
}
