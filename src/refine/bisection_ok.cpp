// SPDX-License-Identifier: MIT
/* refine/bisection_ok.cpp: the invariants of an open bisection, tested from scratch.
 *
 * Sides, weights, cut, pin counts and pinxor are counted again from the level's lists, gains from
 * the plain rule, and the queues are walked with the vertices that they should hold. What the rules
 * of a variant leave stale is skipped, see MoveRules.
 */
#include "core/holds.h"
#include "refine/move_vertex.h"

/* What the pin lists say of a hyperedge. */
struct FreshNet {
    NetCounts counts;
    int pinxor;
    bool fixed; // it has a fixed pin
};

template <class Queue> static FreshNet fresh_net(const OpenBisection<Queue> *b, int e)
{
    const HGraph *const level = b->level;
    FreshNet net = {};
    for (int j = level->netptr[e]; j < level->netptr[e + 1]; j++) {
        const int v = level->netind[j];
        net.counts.npins[b->side[v]]++;
        net.counts.nqueued += queue_holds(&b->queues[b->side[v]], v);
        net.counts.xor0 ^= b->side[v] == 0 ? v : 0;
        net.pinxor ^= v;
        net.fixed |= v < level->nfixed;
    }
    return net;
}

template <class Queue> static bool sides_ok(const OpenBisection<Queue> *b)
{
    int pwgts[2] = {0, 0};
    for (int v = 0; v < b->level->ncells; v++) {
        HOLDS(B1, b->side[v] <= 1);
        pwgts[b->side[v]] += b->level->cellwgt[v];
    }
    HOLDS(B1, pwgts[0] == b->pwgts[0] && pwgts[1] == b->pwgts[1]);
    return true;
}

template <class Queue> static bool counts_ok(const OpenBisection<Queue> *b, MoveRules rules)
{
    const HGraph *const level = b->level;
    int cut = 0, nlarge = 0;
    for (int e = 0; e < level->nnets; e++) {
        const FmNet *const net = &b->nets[e];
        const FreshNet fresh = fresh_net(b, e);
        HOLDS(B4, net->wgt == level->netwgt[e] && net->first == level->netptr[e] &&
                      net->end == level->netptr[e + 1] && net->pinxor == fresh.pinxor);
        HOLDS(B9, ((b->counts[e] & PACKED_FIXED) != 0) == fresh.fixed);
        HOLDS(B9, !is_large(b->counts[e]) || low_word(b->counts[e]) == nlarge);
        nlarge += is_large(b->counts[e]);
        HOLDS(B9, nlarge <= b->nlarge);
        const NetCounts kept = net_counts(b, e);
        HOLDS(B2, kept.npins[0] == fresh.counts.npins[0] && kept.npins[1] == fresh.counts.npins[1]);
        HOLDS(B3, kept.xor0 == fresh.counts.xor0);
        HOLDS(B5, rules.exact || kept.nqueued == fresh.counts.nqueued);
        if (kept.npins[0] > 0 && kept.npins[1] > 0) cut += level->netwgt[e];
    }
    HOLDS(B8, b->single || cut == b->cut);
    return true;
}

/* The gain of v by the pin lists. */
template <class Queue> static int fresh_gain(const OpenBisection<Queue> *b, int v)
{
    const int side = b->side[v];
    int gain = 0;
    for (int j = b->level->incptr[v]; j < b->level->incptr[v + 1]; j++) {
        const int e = b->level->incind[j];
        const FreshNet net = fresh_net(b, e);
        if (net.counts.npins[1 - side] == 0)
            gain -= b->level->netwgt[e];
        else if (net.counts.npins[side] == 1)
            gain += b->level->netwgt[e];
    }
    return gain;
}

template <class Queue> static bool has_single_net(const OpenBisection<Queue> *b, int v)
{
    bool single = false;
    for (int j = b->level->incptr[v]; j < b->level->incptr[v + 1]; j++)
        single |= net_size(b->level, b->level->incind[j]) == 1;
    return single;
}

template <class Queue> static bool gains_ok(const OpenBisection<Queue> *b, MoveRules rules)
{
    for (int v = 0; v < b->level->ncells; v++) {
        const bool queued = queue_holds(&b->queues[b->side[v]], v);
        HOLDS(B6, (!rules.exact && !queued) || has_single_net(b, v) ||
                      fresh_gain(b, v) == gain_of(b, v));
        HOLDS(B7, !queued || v >= b->level->nfixed);
    }
    return true;
}

/* Every vertex of the list of each gain is on this side and, if entries follow, has that gain. */
static bool entries_ok(const BucketBisection *b, int side, MoveRules rules)
{
    const BucketQueue *const queue = &b->queues[side];
    for (int gain = -queue->gainspan; gain <= queue->gainspan; gain++)
        for (int v = bucket_head(queue, gain); v < queue->maxnodes;
             v = static_cast<int>(queue->nodes[v].next / NODE_WORDS))
            HOLDS(B7, b->side[v] == side && (!rules.requeue || gain_of(b, v) == gain));
    return true;
}

static bool entries_ok(const HeapBisection *b, int side, MoveRules rules)
{
    const HeapQueue *const queue = &b->queues[side];
    for (int i = 0; i < queue->nnodes; i++) {
        const int v = queue->heap[i].val, gain = queue->heap[i].key;
        HOLDS(B7, b->side[v] == side && (!rules.requeue || gain_of(b, v) == gain));
    }
    return true;
}

/* Vertices that are in a queue by their own account are those that the queues count. */
template <class Queue> static bool queued_ok(const OpenBisection<Queue> *b)
{
    int held = 0;
    for (int v = 0; v < b->level->ncells; v++) held += queue_holds(&b->queues[b->side[v]], v);
    HOLDS(B7, held == b->queues[0].nnodes + b->queues[1].nnodes);
    return true;
}

template <class Queue> bool bisection_ok(const OpenBisection<Queue> *b, MoveRules rules)
{
    if (!sides_ok(b) || !counts_ok(b, rules)) return false;
    if (!queue_ok(&b->queues[0]) || !queue_ok(&b->queues[1])) return false;
    return queued_ok(b) && entries_ok(b, 0, rules) && entries_ok(b, 1, rules) && gains_ok(b, rules);
}

template bool bisection_ok(const BucketBisection *b, MoveRules rules);
template bool bisection_ok(const HeapBisection *b, MoveRules rules);
