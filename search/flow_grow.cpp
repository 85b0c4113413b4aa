// SPDX-License-Identifier: MIT
/* search/flow_grow.cpp: growth of either side by levels, and paths along them.
 *
 * Stages, repeated until the flow is maximum: grow a side until it reaches settled nodes of the
 * other, send flow to these along the levels.
 */
#include "search/flow_grow.h"

#include <algorithm>

/* Levels beyond which a search is given up rather than to wrap. */
constexpr int MOST_LEVELS = INT_MAX / 2;

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

bool gives_up(const FlowNet *net, FlowCut *cut)
{
    cut->over =
        cut->over || net->visits > cut->visits || cut->levels > MOST_LEVELS || was_set(cut->cancel);
    return cut->over;
}

template <int X> void exhaust(FlowNet *net, FlowCut *cut, int64_t limit)
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

template <int X> void refresh(FlowNet *net, FlowCut *cut)
{
    grow<X>(net, cut);
    assert(cut->nhits == 0); // F2
    end_growth<X>(net, cut);
}

template void exhaust<SOURCE>(FlowNet *net, FlowCut *cut, int64_t limit);
template void exhaust<SINK>(FlowNet *net, FlowCut *cut, int64_t limit);
template void refresh<SOURCE>(FlowNet *net, FlowCut *cut);
template void refresh<SINK>(FlowNet *net, FlowCut *cut);
