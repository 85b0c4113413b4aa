// SPDX-License-Identifier: MIT
/* search/flow_pierce.cpp: candidates in the order in which a side likes to take them.
 *
 * They are kept in chains by rank. One that the other side does not reach opens no path.
 */
#include "search/flow_pierce.h"

#include <algorithm>

#include "search/flow_grow.h"

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

template <int X> void settle(FlowNet *net, FlowCut *cut)
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

template <int X> int pick(FlowNet *net, FlowCut *cut, FlowChain chain, int64_t room)
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

template <int X> void sort_candidates(FlowNet *net, FlowCut *cut)
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

template <int X> int pick_anywhere(FlowNet *net, FlowCut *cut, int64_t room)
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

template <int X> void pierce(FlowNet *net, FlowCut *cut, int u)
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

template void settle<SOURCE>(FlowNet *net, FlowCut *cut);
template void settle<SINK>(FlowNet *net, FlowCut *cut);
template int pick<SOURCE>(FlowNet *net, FlowCut *cut, FlowChain chain, int64_t room);
template int pick<SINK>(FlowNet *net, FlowCut *cut, FlowChain chain, int64_t room);
template void sort_candidates<SOURCE>(FlowNet *net, FlowCut *cut);
template void sort_candidates<SINK>(FlowNet *net, FlowCut *cut);
template int pick_anywhere<SOURCE>(FlowNet *net, FlowCut *cut, int64_t room);
template int pick_anywhere<SINK>(FlowNet *net, FlowCut *cut, int64_t room);
template void pierce<SOURCE>(FlowNet *net, FlowCut *cut, int u);
template void pierce<SINK>(FlowNet *net, FlowCut *cut, int u);
