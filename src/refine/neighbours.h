/* refine/neighbours.h: what the move of a vertex does to its neighbours' gains (refine/ only).
 *
 * With nto and nfrom pins of a hyperedge on the side entered and on the one left, after the move:
 * pins on to lose its weight if nfrom is 0 and if nto is 2, pins on from gain it if nfrom is 1 and
 * if nto is 1. Only the first and the last pin to cross thus concern all pins of the hyperedge; in
 * between at most one pin a side changes, and the exclusive or tells which.
 * This is where the engine spends most of its time, and waits for memory for most of that. So the
 * hyperedges of a block are all counted before the first is looked into, without a branch on what
 * is found, and what the second step reads is asked for in the first: the processor overlaps the
 * misses. Pins of the two sides are in different queues, so only the order within a side matters,
 * and that is the order of the hyperedges and of their pins.
 */
#ifndef ZORPEL_REFINE_NEIGHBOURS_H
#define ZORPEL_REFINE_NEIGHBOURS_H

#include "core/work_counts.h"
#include "refine/fm_work.h"

/* Which neighbours' gains a move brings up to date, and which of them are queued. */
struct UpdateRules {
    bool exact;    // all pins' gains; else those of queued pins only, and nqueued is kept
    bool one_side; // only vertices of side from are queued, all in the first queue
    bool requeue;  // queue entries follow the gains
};

constexpr int NETS_BLOCK = 64; // hyperedges counted before the first of them is looked into

/* Start of v's hyperedges in incind. */
template <bool Heap> inline int first_incidence(const HGraph *graph, const FmWork *work, int v)
{
    return Heap ? graph->incptr[v] : work->queues[0].nodes[v].first;
}

/* Whether nto pins on the side entered and nfrom on the side left may change a gain. */
inline bool few_pins(int nto, int nfrom)
{
    return (nto <= 2) | (nfrom <= 1);
}

template <UpdateRules R, int From> inline bool count_in_large(NetCounts *counts, int v)
{
    const int nto = ++counts->npins[1 - From], nfrom = --counts->npins[From];
    counts->xor0 ^= v;
    if (!R.exact) counts->nqueued--;
    return few_pins(nto, nfrom) && (R.exact || counts->nqueued > 0);
}

constexpr PackedCounts packed_byte(PackedCounts value, int shift)
{
    return value << shift;
}

constexpr int npins_shift(int side)
{
    return PACKED_NPINS + 8 * side;
}

/* Counts the move of pin v of e; true if a gain that matters may change: fewer than two pins are
 * left or no more than two have come, and somebody is still queued. */
template <UpdateRules R, int From> inline bool count_move(FmWork *work, int e, int v)
{
    constexpr int fromshift = npins_shift(From), toshift = npins_shift(1 - From);
    PackedCounts counts = work->counts[e];
    if (is_large(counts)) [[unlikely]]
        return count_in_large<R, From>(&work->large[low_counts(counts)], v);
    counts ^= static_cast<uint32_t>(v);
    counts += packed_byte(1, toshift) - packed_byte(1, fromshift);
    if (!R.exact) counts -= packed_byte(1, PACKED_NQUEUED);
    work->counts[e] = counts;
    // few_pins in one comparison: 128 - k added to a byte sets its top bit if it is k or more
    constexpr PackedCounts to = packed_byte(128, toshift), from = packed_byte(128, fromshift);
    constexpr PackedCounts queued = R.exact ? 0 : packed_byte(128, PACKED_NQUEUED);
    constexpr PackedCounts limits = packed_byte(128 - 3, toshift) +
                                    packed_byte(128 - 2, fromshift) +
                                    (R.exact ? 0 : packed_byte(128 - 1, PACKED_NQUEUED));
    return (((counts + limits) & (to | from | queued)) ^ queued) < (to | from);
}

/* Asks for what the move of v, which may be the next, reads first: its weight and the list of its
 * hyperedges. */
[[gnu::always_inline]] inline void prefetch_move(const HGraph *graph, const FmWork *work, int v)
{
    __builtin_prefetch(&graph->cellwgt[v]);
    __builtin_prefetch(&graph->incind[work->queues[0].nodes[v].first]);
}

/* Adds delta to the gain of u, a vertex on this side. Twice a weight may leave 32 bits, the sum
 * does not: deltas wrap. */
template <bool Heap, UpdateRules R>
inline void add_gain(const HGraph *graph, FmWork *work, int u, int side, unsigned delta)
{
    const int index = R.one_side ? 0 : side;
    const bool queued = is_queued<Heap>(work, index, u);
    if (!R.exact && !queued) return;
    count_work(WORK_UPDATES, 1);
    int &gain = gain_of<Heap>(work, u);
    const int oldgain = gain, newgain = static_cast<int>(static_cast<unsigned>(oldgain) + delta);
    gain = newgain;
    if (!R.requeue || (R.exact && !queued)) return;
    PQueue *const queue = &work->queues[index];
    if (Heap) {
        PQueueUpdate__(queue, u, oldgain, newgain);
    } else {
        bucket_move(queue, u, newgain);
        if (newgain >= queue->maxgain) prefetch_move(graph, work, u);
    }
}

/* Adds delta to the gains of the pins of a hyperedge on this side, but of v, in pin order. */
template <bool Heap, UpdateRules R, int Side>
inline void add_gains(const HGraph *graph, FmWork *work, const FmNet *net, int v, unsigned delta)
{
    const int *const end = graph->netind + net->end;
    count_work(WORK_SCANNED_PINS, net->end - net->first);
    for (const int *pin = graph->netind + net->first; pin < end; pin++) {
        const int u = *pin;
        if (!R.exact || u != v) // v itself is not queued
            add_gain<Heap, R>(graph, work, u, Side, delta);
    }
}

/* Gains of the pins of e after v moved there, its counts being up to date. */
template <bool Heap, UpdateRules R, int From>
inline void update_pins(const HGraph *graph, FmWork *work, int e, int v)
{
    constexpr int To = 1 - From;
    const FmNet *const net = &work->nets[e];
    const PackedCounts counts = work->counts[e];
    const unsigned w = static_cast<unsigned>(net->wgt);
    int nfrom = static_cast<uint8_t>(counts >> npins_shift(From));
    int nto = static_cast<uint8_t>(counts >> npins_shift(To));
    int xor0 = static_cast<int>(static_cast<uint32_t>(counts));
    if (is_large(counts)) [[unlikely]] {
        const NetCounts *const large = &work->large[low_counts(counts)];
        nfrom = large->npins[From];
        nto = large->npins[To];
        xor0 = large->xor0;
    }
    if (w == 0) return;     // a gain that stays keeps its place
    if (nfrom + nto == 2) { // more than half of all; whether the other pin stays is a toss-up
        const bool stays = nto == 1;
        add_gain<Heap, R>(graph, work, net->pinxor ^ v, stays ? From : To, stays ? 2 * w : 2 * -w);
    } else if (nto == 1) {
        if (nfrom > 0) add_gains<Heap, R, From>(graph, work, net, v, w);
    } else if (nfrom == 0) {
        add_gains<Heap, R, To>(graph, work, net, v, -w);
    } else {
        const int xor1 = net->pinxor ^ xor0;
        const int left = From ? xor1 : xor0, met = (From ? xor0 : xor1) ^ v;
        if (nfrom == 1) add_gain<Heap, R>(graph, work, left, From, w);
        if (nto == 2) add_gain<Heap, R>(graph, work, met, To, -w);
    }
}

/* The same as below for moves from one side. */
template <bool Heap, UpdateRules R, int From>
inline void update_neighbours_of(const HGraph *graph, FmWork *work, int v)
{
    const int *const incind = graph->incind;
    int changed[NETS_BLOCK];
    const int end = first_incidence<Heap>(graph, work, v + 1);
    int first = first_incidence<Heap>(graph, work, v);
    count_work(WORK_MOVED_NETS, end - first);
    for (; first < end; first += NETS_BLOCK) {
        const int last = end - first > NETS_BLOCK ? first + NETS_BLOCK : end;
        int nchanged = 0;
        for (int j = first; j < last; j++) {
            const int e = incind[j];
            __builtin_prefetch(&work->nets[e]);
            changed[nchanged] = e;
            nchanged += count_move<R, From>(work, e, v);
        }
        for (int i = 0; i < nchanged; i++) update_pins<Heap, R, From>(graph, work, changed[i], v);
    }
}

/* Brings pin counts, gains and queue entries up to date after v moved from one side to the other.
 */
template <bool Heap, UpdateRules R>
inline void update_neighbours(const HGraph *graph, FmWork *work, int v, int from)
{
    if (from == 0)
        update_neighbours_of<Heap, R, 0>(graph, work, v);
    else
        update_neighbours_of<Heap, R, 1>(graph, work, v);
}

#endif
