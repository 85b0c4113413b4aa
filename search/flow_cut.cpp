// SPDX-License-Identifier: MIT
/* search/flow_cut.cpp: balanced minimum cuts by growing both ends of a flow network.
 *
 * Once the flow is maximum, what the source reaches is one minimum cut and what reaches the sink is
 * another. If neither is balanced, the lighter side takes all it reaches for its own and one node
 * more, a candidate next to its cut: it pierces the cut. A candidate that the other side does not
 * reach opens no path, so the weight of the cut stays. All others may cost flow. Growing the sink
 * is growing the source of the network with all flow turned round: one template serves both.
 */
#include "search/flow_cut.h"

#include <algorithm>

#include "core/heavy_assert.h"
#include "core/memory.h"

/* Levels beyond which a search is given up rather than to wrap. */
constexpr int MOST_LEVELS = INT_MAX / 2;
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

template <int X> static bool is_settled(const FlowNet *net, int u)
{
    return net->nodes[u].level[X] == SETTLED;
}

/* Flow of a pin as side X sees it: positive from the vertex into the hyperedge. */
template <int X> static int flow_of(const FlowNet *net, int pin)
{
    return X == SOURCE ? net->flow[pin] : -net->flow[pin];
}

/* The roots of side X become the first level of a growth. */
template <int X> static void begin_growth(FlowNet *net, FlowCut *cut)
{
    FlowSide *const side = &cut->side[X];
    side->base = cut->levels;
    for (int i = 0; i < side->nroots; i++) {
        FlowNode *const u = &net->nodes[side->queue[i]];
        u->level[X] = side->base;
        u->next = u->begin;
    }
}

/* What side X can send more flow to, by levels from its roots; stops after the first level on which
 * settled nodes of the other side are encountered. */
template <int X> static void grow(FlowNet *net, FlowCut *cut)
{
    begin_growth<X>(net, cut);
    FlowSide *const side = &cut->side[X];
    FlowNode *const nodes = net->nodes;
    FlowEdge *const edges = net->edges;
    const FlowArc *const arcs = net->arcs;
    const int *const pins = net->pins, *const flow = net->flow;
    int *const queue = side->queue, *const edgequeue = side->edgequeue, *const hits = cut->hits;
    const int base = side->base, sign = X == SOURCE ? 1 : -1;
    int tail = side->nroots, nedges = 0, nhits = 0, level = base;
    int64_t visits = 0;
    const auto reach = [&](int u) {
        FlowNode *const node = &nodes[u];
        if (node->level[X] >= base) return;
        node->level[X] = level + 1;
        node->next = node->begin;
        if (node->level[1 - X] == SETTLED)
            hits[nhits++] = u;
        else
            queue[tail++] = u;
    };
    for (int head = 0; head < tail; head++) {
        const int u = queue[head];
        if (nodes[u].level[X] > level) {
            if (nhits > 0) break;
            level = nodes[u].level[X];
        }
        const int end = nodes[u + 1].begin;
        for (int i = nodes[u].begin; i < end; i++) {
            const FlowArc arc = arcs[i];
            FlowEdge *const e = &edges[arc.edge];
            if (e->full[X] >= base) continue;
            const bool full = e->left > 0 || sign * flow[arc.pin] < 0;
            if (!full && e->half[X] >= base) continue;
            const int begin = e->begin, last = e[1].begin;
            edgequeue[nedges++] = arc.edge;
            visits += last - begin;
            if (e->half[X] < base) {
                e->half[X] = level;
                e->any = begin;
            }
            if (full) {
                e->full[X] = level;
                e->back = begin;
                for (int j = begin; j < last; j++) reach(pins[j]);
            } else
                for (int j = begin; j < last; j++)
                    if (sign * flow[j] > 0) reach(pins[j]);
        }
    }
    assert(tail <= net->nnodes && nedges <= 2 * net->nedges);
    side->nqueue = tail;
    side->nedgequeue = nedges;
    cut->nhits = nhits;
    cut->levels = level + 2;
    net->visits += visits;
}

/* The roots are settled again, and what else the last growth reached is weighed. */
template <int X> static void end_growth(FlowNet *net, FlowCut *cut)
{
    FlowSide *const side = &cut->side[X];
    side->reached = side->settled;
    for (int i = 0; i < side->nqueue; i++) {
        const int u = side->queue[i];
        if (i < side->nroots)
            net->nodes[u].level[X] = SETTLED;
        else
            side->reached += net->weight[u];
    }
    assert(side->settled <= side->reached && side->reached <= cut->total);
    side->stale = false;
}

/* A pin from which u could be sent more flow along the levels, by the arc at u's next; -1: u is a
 * dead end. */
template <int X> static int step_back(FlowNet *net, int u)
{
    FlowNode *const nodes = net->nodes;
    assert(nodes[u].level[X] > 0 && nodes[u].next >= nodes[u].begin);
    const int before = nodes[u].level[X] - 1, end = nodes[u + 1].begin;
    for (int i = nodes[u].next; i < end; i++) {
        FlowEdge *const e = &net->edges[net->arcs[i].edge];
        const int last = e[1].begin;
        nodes[u].next = i;
        if (e->half[X] == before && (e->left > 0 || flow_of<X>(net, net->arcs[i].pin) > 0))
            for (; e->any < last; e->any++)
                if (nodes[net->pins[e->any]].level[X] == before) return e->any;
        if (e->full[X] == before)
            for (; e->back < last; e->back++)
                if (nodes[net->pins[e->back]].level[X] == before && flow_of<X>(net, e->back) < 0)
                    return e->back;
    }
    return -1;
}

/* Sends d more from pin from to pin to of e. */
template <int X> static void send(FlowNet *net, FlowEdge *e, int from, int to, int d)
{
    assert(d > 0 && from != to);
    const int sent = flow_of<X>(net, from), got = flow_of<X>(net, to);
    const int sign = X == SOURCE ? 1 : -1;
    const int less = d - std::min(d, std::max(-sent, 0)); // not given back by from
    e->left -= less - std::min(d, std::max(got, 0));      // nor by to
    assert(e->left >= 0);
    net->flow[from] += sign * d;
    net->flow[to] -= sign * d;
}

template <int X>
static int64_t room_of_step(const FlowNet *net, const FlowEdge *e, int from, int to)
{
    return int64_t{e->left} + std::max(-flow_of<X>(net, from), 0) +
           std::max(flow_of<X>(net, to), 0);
}

/* Sends along the path of the first nsteps steps what fits, at most most. */
template <int X> static int64_t send_path(FlowNet *net, FlowCut *cut, int nsteps, int64_t most)
{
    int64_t d = most;
    for (int k = 0; k < nsteps; k++) {
        const FlowArc arc = net->arcs[cut->steps[2 * k]];
        d = std::min(d,
                     room_of_step<X>(net, &net->edges[arc.edge], cut->steps[2 * k + 1], arc.pin));
    }
    assert(d > 0);
    for (int k = 0; k < nsteps; k++) {
        const FlowArc arc = net->arcs[cut->steps[2 * k]];
        send<X>(net, &net->edges[arc.edge], cut->steps[2 * k + 1], arc.pin, static_cast<int>(d));
    }
    assert(d <= most);
    cut->npaths++;
    return d;
}

/* Sends flow from the roots to hit along the levels of the last growth, at most most. Paths are
 * searched from their end: every node of a level can be reached, so only what earlier paths used
 * up makes a dead end. */
template <int X> static int64_t send_to(FlowNet *net, FlowCut *cut, int hit, int64_t most)
{
    const int base = cut->side[X].base;
    int64_t sum = 0;
    int nsteps = 0;
    for (int u = hit; sum < most;) {
        if (net->nodes[u].level[X] == base) {
            sum += send_path<X>(net, cut, nsteps, most - sum);
            nsteps = 0;
            u = hit;
            continue;
        }
        const int pin = step_back<X>(net, u);
        net->visits++;
        if (pin >= 0) {
            cut->steps[2 * nsteps] = net->nodes[u].next;
            cut->steps[2 * nsteps + 1] = pin;
            nsteps++;
            assert(nsteps < net->nnodes);
            u = net->pins[pin];
        } else {
            net->nodes[u].level[X] = -1;
            if (u == hit) break;
            assert(nsteps > 0);
            nsteps--;
            u = net->pins[net->arcs[cut->steps[2 * nsteps]].pin];
        }
    }
    return sum;
}

/* Whether the search has to end before it has found anything. */
static bool gives_up(const FlowNet *net, FlowCut *cut)
{
    cut->over =
        cut->over || net->visits > cut->visits || cut->levels > MOST_LEVELS || was_set(cut->cancel);
    return cut->over;
}

/* Makes the flow maximum, as far as limit: beyond it nothing is looked for, nor once the search has
 * to end. */
template <int X> static void exhaust(FlowNet *net, FlowCut *cut, int64_t limit)
{
    const int64_t before = cut->value;
    for (;;) {
        grow<X>(net, cut);
        if (cut->nhits == 0) break;
        for (int i = 0; i < cut->nhits && cut->value <= limit; i++)
            cut->value += send_to<X>(net, cut, cut->hits[i], limit + 1 - cut->value);
        if (cut->value > limit || gives_up(net, cut)) return;
    }
    end_growth<X>(net, cut);
    if (cut->value != before) cut->side[1 - X].stale = true;
}

/* Reaches anew what a changed flow reaches. */
template <int X> static void refresh(FlowNet *net, FlowCut *cut)
{
    grow<X>(net, cut);
    assert(cut->nhits == 0); // F2
    end_growth<X>(net, cut);
}

/* The order in which side X likes to take u: what is far from the cut on its own side first, what
 * is far on the other side last. */
template <int X> static int rank_of(const FlowNet *net, const FlowCut *cut, int u)
{
    const bool own = X == SOURCE ? u < net->first[1] : u >= net->first[1];
    return own ? cut->deepest[1 - X] + 1 + net->depth[u] : cut->deepest[1 - X] - net->depth[u];
}

static void push_candidate(FlowSide *side, FlowChain chain, int rank, int u)
{
    assert(0 <= rank);
    side->next[u] = side->heads[chain][rank];
    side->heads[chain][rank] = u;
    side->top[chain] = std::max(side->top[chain], rank);
}

/* The pins of a hyperedge that has just been settled by half become candidates. */
template <int X> static void add_candidates(FlowNet *net, FlowCut *cut, const FlowEdge *e)
{
    FlowSide *const side = &cut->side[X];
    assert(e->left == 0); // F3
    net->visits += e[1].begin - e->begin;
    for (int j = e->begin; j < e[1].begin; j++) {
        const int u = net->pins[j];
        if (side->known[u] || is_settled<X>(net, u) || is_settled<1 - X>(net, u)) continue;
        side->known[u] = true;
        push_candidate(side, FREE, rank_of<X>(net, cut, u), u);
    }
}

/* Side X takes all that it reaches. */
template <int X> static void settle(FlowNet *net, FlowCut *cut)
{
    FlowSide *const side = &cut->side[X];
    assert(!side->stale);
    for (int i = side->nroots; i < side->nqueue; i++) net->nodes[side->queue[i]].level[X] = SETTLED;
    for (int i = 0; i < side->nedgequeue; i++) {
        FlowEdge *const e = &net->edges[side->edgequeue[i]];
        if (e->full[X] >= side->base) e->full[X] = SETTLED;
        e->half[X] = SETTLED;
    }
    for (int i = 0; i < side->nedgequeue; i++) {
        const FlowEdge *const e = &net->edges[side->edgequeue[i]];
        if (e->full[X] != SETTLED) add_candidates<X>(net, cut, e);
    }
    assert(side->settled <= side->reached);
    side->settled = side->reached;
    side->nroots = side->nqueue = side->nedgequeue = 0;
}

template <int X> static bool reached_by(const FlowNet *net, const FlowCut *cut, int u)
{
    return net->nodes[u].level[X] >= cut->side[X].base;
}

/* Takes the best candidate out of a chain that side X has room for; -1: none. Those of FREE that
 * the other side reaches change over to OPENING. */
template <int X> static int pick(FlowNet *net, FlowCut *cut, FlowChain chain, int64_t room)
{
    FlowSide *const side = &cut->side[X];
    int *const heads = side->heads[chain];
    for (; side->top[chain] >= 0; side->top[chain]--)
        for (int u; (u = heads[side->top[chain]]) >= 0;) {
            heads[side->top[chain]] = side->next[u];
            if (is_settled<X>(net, u) || is_settled<1 - X>(net, u) || net->weight[u] > room)
                continue;
            if (chain == OPENING || !reached_by<1 - X>(net, cut, u)) return u;
            push_candidate(side, OPENING, side->top[FREE], u);
        }
    return -1;
}

/* What the other side no longer reaches goes back to FREE. */
template <int X> static void sort_candidates(FlowNet *net, FlowCut *cut)
{
    FlowSide *const side = &cut->side[X];
    for (int rank = side->top[OPENING]; rank >= 0; rank--) {
        int *last = &side->heads[OPENING][rank];
        for (int u; (u = *last) >= 0;) {
            if (reached_by<1 - X>(net, cut, u)) {
                last = &side->next[u];
                continue;
            }
            *last = side->next[u];
            if (!is_settled<X>(net, u)) push_candidate(side, FREE, rank, u);
        }
    }
}

/* A node to take where the cut has no candidates left: the first in the order of ranks that is
 * settled nowhere; -1: none. */
template <int X> static int pick_anywhere(FlowNet *net, FlowCut *cut, int64_t room)
{
    const int nown = X == SOURCE ? net->first[1] - 2 : net->nnodes - net->first[1];
    for (int *const i = &cut->side[X].cursor; *i < net->nnodes - 2; (*i)++) {
        const int own = X == SOURCE ? net->first[1] - 1 - *i : net->nnodes - 1 - *i;
        const int other = X == SOURCE ? net->first[1] + *i - nown : 2 + *i - nown;
        const int u = *i < nown ? own : other;
        if (!is_settled<X>(net, u) && !is_settled<1 - X>(net, u) && net->weight[u] <= room)
            return u;
    }
    return -1;
}

/* Makes u a terminal of side X, which has just settled. */
template <int X> static void pierce(FlowNet *net, FlowCut *cut, int u)
{
    FlowSide *const side = &cut->side[X];
    assert(side->nroots == 0 && !is_settled<1 - X>(net, u)); // F1
    assert(!is_settled<X>(net, u));
    net->nodes[u].level[X] = SETTLED;
    side->settled += net->weight[u];
    assert(side->settled <= cut->total);
    side->queue[0] = u;
    side->nroots = 1;
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
