/* SPDX-License-Identifier: MIT */
/* refine/move_vertex.h: the move of a vertex of an open bisection (refine/ only).
 *
 * A move changes the vertex's side, two weights, the cut, the counts of its hyperedges, and through
 * them its neighbours' gains. Of a hyperedge the move may have been
 *
 *     the first pin over    it became cut: the pins left no longer lose its weight
 *     the last pin left     it became uncut: the pins on the side entered would now cut it
 *     the last but one      the pin that is alone now on the side left would uncut it
 *     the second pin over   the pin that was alone on the side entered no longer would
 *
 * Only the first two concern all pins of the hyperedge; the others change one gain each, and the
 * exclusive or of the pins says whose. A hyperedge of two pins is two cases at once, and the most
 * frequent of all: the other pin's gain changes by twice the weight.
 *
 * This is where the engine spends most of its time, and waits for memory for most of that. So the
 * hyperedges of a block are all counted before the first is looked into, without a branch on what
 * is found, and what the second step reads is prefetched in the first: the processor overlaps the
 * misses. Pins of the two sides are in different queues, so only the order within a side matters,
 * and that is the order of the hyperedges and of their pins.
 */
#ifndef ZORPEL_REFINE_MOVE_VERTEX_H
#define ZORPEL_REFINE_MOVE_VERTEX_H

#include "core/work_counts.h"
#include "refine/open_bisection.h"

constexpr int NETS_BLOCK = 64; // hyperedges counted before the first of them is looked into

/* Where v's hyperedges start in incind; v may be ncells. */
inline int first_incidence(const BucketBisection *b, int v)
{
    assert(0 <= v && v <= b->level->ncells);
    return b->queues[0].nodes[v].first;
}
inline int first_incidence(const HeapBisection *b, int v)
{
    assert(0 <= v && v <= b->level->ncells);
    return b->level->incptr[v];
}

/* If v, queued under this gain, may be the next to move, prefetches what its move reads first: its
 * weight and the list of its hyperedges. */
[[gnu::always_inline]] inline void prefetch_move(const BucketBisection *b, const BucketQueue *queue,
                                                 int v, int gain)
{
    if (gain < queue->maxgain) return;
    __builtin_prefetch(&b->level->cellwgt[v]);
    __builtin_prefetch(&b->level->incind[queue->nodes[v].first]);
}
inline void prefetch_move(const HeapBisection *, const HeapQueue *, int, int)
{
}

/* Counts the move of pin v of e; true if a gain that matters may change. */
template <MoveRules R, int From, class Queue>
inline bool count_move(OpenBisection<Queue> *b, int e, int v)
{
    constexpr Counted counted = R.exact ? Counted::sides : Counted::sides_and_queued;
    assert(0 <= e && e < b->level->nnets);
    const PackedCounts counts = b->counts[e];
    if (is_large(counts)) [[unlikely]] {
        assert(low_word(counts) < b->nlarge);
        return count_move_plain<From, counted>(&b->large[low_word(counts)], v);
    }
    return count_move_packed<From, counted>(&b->counts[e], v);
}

/* Adds delta to the gain of u, a vertex on this side. Twice a weight may leave 32 bits, the sum
 * does not: deltas wrap. */
template <MoveRules R, class Queue>
inline void add_gain(OpenBisection<Queue> *b, int u, int side, unsigned delta)
{
    Queue *const queue = &b->queues[side];
    const bool queued = queue_holds(queue, u);
    assert(delta != 0 && (!queued || side_of(b, u) == side));
    if (!R.exact && !queued) return;
    count_work(WORK_UPDATES, 1);
    int &gain = queue_key(queue, u);
    const int oldgain = gain, newgain = static_cast<int>(static_cast<unsigned>(oldgain) + delta);
    gain = newgain;
    if (!R.requeue || (R.exact && !queued)) return;
    queue_update(queue, u, oldgain, newgain);
    prefetch_move(b, queue, u, newgain);
}

/* Adds delta to the gains of the pins of a hyperedge on this side, but of v, in pin order. */
template <MoveRules R, int Side, class Queue>
inline void add_gains(OpenBisection<Queue> *b, const FmNet *net, int v, unsigned delta)
{
    const int *const netind = b->level->netind, *const end = netind + net->end;
    assert(net->first < net->end && net->end <= b->level->netptr[b->level->nnets]);
    count_work(WORK_SCANNED_PINS, net->end - net->first);
    for (const int *pin = netind + net->first; pin < end; pin++)
        if (!R.exact || *pin != v) // otherwise v is not queued
            add_gain<R>(b, *pin, Side, delta);
}

/* Brings the gains of the pins of e up to date after v moved there, its counts being so. */
template <MoveRules R, int From, class Queue>
inline void update_pins(OpenBisection<Queue> *b, int e, int v)
{
    constexpr int To = 1 - From;
    const FmNet *const net = &b->nets[e];
    const NetCounts counts = net_counts(b, e);
    const int nfrom = counts.npins[From], nto = counts.npins[To];
    const unsigned w = static_cast<unsigned>(net->wgt);
    assert(nto >= 1 && few_pins(nto, nfrom) && nto + nfrom == net->end - net->first);
    if (w == 0) return; // a gain that stays keeps its place
    const bool first_over = nto == 1, last_left = nfrom == 0;
    if (nfrom + nto == 2) { // more than half of all; which of the cases it is can't be predicted
        const int other = net->pinxor ^ v;
        assert(other != v);
        add_gain<R>(b, other, first_over ? From : To, first_over ? 2 * w : 2 * -w);
    } else if (first_over) {
        if (!last_left) add_gains<R, From>(b, net, v, w); // both: v is its only pin
    } else if (last_left) {
        add_gains<R, To>(b, net, v, -w);
    } else {
        const int xor0 = counts.xor0, xor1 = net->pinxor ^ xor0;
        const bool last_but_one = nfrom == 1, second_over = nto == 2;
        const int remaining = From ? xor1 : xor0, earlier = (From ? xor0 : xor1) ^ v;
        assert(!last_but_one || remaining != v);
        assert(!second_over || earlier != v);
        if (last_but_one) add_gain<R>(b, remaining, From, w);
        if (second_over) add_gain<R>(b, earlier, To, -w);
    }
}

/* Brings counts, gains and queue entries up to date after v moved off side From. */
template <MoveRules R, int From, class Queue>
inline void update_neighbours_of(OpenBisection<Queue> *b, int v)
{
    const int *const incind = b->level->incind;
    int changed[NETS_BLOCK];
    const int end = first_incidence(b, v + 1);
    int first = first_incidence(b, v);
    assert(first <= end);
    count_work(WORK_MOVED_NETS, end - first);
    for (; first < end; first += NETS_BLOCK) {
        const int last = end - first > NETS_BLOCK ? first + NETS_BLOCK : end;
        int nchanged = 0;
        for (int j = first; j < last; j++) {
            const int e = incind[j];
            __builtin_prefetch(&b->nets[e]);
            assert(nchanged < NETS_BLOCK);
            changed[nchanged] = e;
            nchanged += count_move<R, From>(b, e, v);
        }
        for (int i = 0; i < nchanged; i++) update_pins<R, From>(b, changed[i], v);
    }
}

template <MoveRules R, class Queue>
inline void update_neighbours(OpenBisection<Queue> *b, int v, int from)
{
    assert((from == 0 || from == 1) && side_of(b, v) == 1 - from);
    if (from == 0)
        update_neighbours_of<R, 0>(b, v);
    else
        update_neighbours_of<R, 1>(b, v);
}

/* Moves v, which is in no queue if the queues follow, to the other side. */
template <MoveRules R, class Queue> inline void move_vertex(OpenBisection<Queue> *b, int v)
{
    const int from = side_of(b, v), weight = b->level->cellwgt[v], gain = gain_of(b, v);
    assert(b->pwgts[from] >= weight && weight >= 0);
    assert(v >= b->level->nfixed && (!R.requeue || !queue_holds(&b->queues[from], v)));
    b->side[v] = static_cast<uint8_t>(1 - from);
    b->pwgts[from] -= weight;
    b->pwgts[1 - from] += weight;
    b->cut -= gain;
    if (R.exact) gain_of(b, v) = -gain;
    update_neighbours<R>(b, v, from);
}

/* Takes back the last move that was not taken back yet, of v; all gains are exact before and after.
 * The queues do not follow. */
template <class Queue> inline void undo_vertex(OpenBisection<Queue> *b, int v)
{
    move_vertex<ALL_GAINS_UNQUEUED>(b, v);
}

#endif
