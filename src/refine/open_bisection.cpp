// SPDX-License-Identifier: MIT
/* refine/open_bisection.cpp: opening, loading, queueing and storing a bisection under refinement.
 *
 * Gains are computed hyperedge by hyperedge: uncut ones take their weight off each pin's gain, so
 * every vertex starts from that for all its hyperedges; cut ones give it back, and add it where a
 * pin is alone on its side.
 */
#include "refine/open_bisection.h"

#include <cassert>

#include "core/memory.h"
#include "core/prefetch.h"
#include "core/work_counts.h"

// vertices: smaller levels are in the cache anyway
constexpr int RELABEL_SIZE = HEAVY_ASSERTS ? 24 : 4096;

/* Lists what does not change of the hyperedges. */
static FmNet *list_nets(const HGraph *level)
{
    FmNet *nets = alloc_array<FmNet>(static_cast<size_t>(level->nnets), "FM_Refine: nets");
    for (int e = 0; e < level->nnets; e++) {
        const int begin = level->netptr[e], end = level->netptr[e + 1];
        assert(begin <= end);
        int pinxor = 0;
        for (int j = begin; j < end; j++) pinxor ^= level->netind[j];
        nets[e] = {level->netwgt[e], begin, end, pinxor};
    }
    return nets;
}

/* Numbers the large hyperedges and marks those with fixed pins. */
template <class Queue> static void open_nets(OpenBisection<Queue> *b)
{
    const HGraph *const level = b->level;
    const size_t nnets = static_cast<size_t>(level->nnets);
    b->nets = b->copy.nets != nullptr ? b->copy.nets : list_nets(level);
    b->counts = alloc_array<PackedCounts>(nnets, "FM_Refine: counts");
    b->nlarge = 0;
    b->single = false;
    for (int e = 0; e < level->nnets; e++) {
        const int size = b->nets[e].end - b->nets[e].first;
        const bool small = size > 0 && size <= PACKED_SIZE;
        assert(size >= 0 && b->nets[e].pinxor >= 0);
        b->counts[e] = small ? 0 : PACKED_LARGE | static_cast<PackedCounts>(b->nlarge++);
        b->single |= size == 1;
    }
    for (int j = 0; j < level->incptr[level->nfixed]; j++)
        b->counts[level->incind[j]] |= PACKED_FIXED;
    b->large = alloc_array<NetCounts>(static_cast<size_t>(b->nlarge), "FM_Refine: large");
}

/* A bucket queue keeps the gains and the starts of the vertices' lists itself, and pays for a copy
 * with close neighbours. */
static void attach_level(BucketBisection *b)
{
    HGraph *const original = b->original;
    if (original->nearby != nullptr && original->ncells >= RELABEL_SIZE) {
        relabel_level(original, &b->copy);
        b->level = &b->copy.level;
    }
    for (int v = 0; v <= original->ncells; v++) b->queues[0].nodes[v].first = b->level->incptr[v];
}

static void attach_level(HeapBisection *b)
{
    for (HeapQueue &queue : b->queues) queue.keys = b->original->gain;
}

template <class Queue> void open_bisection(OpenBisection<Queue> *b, HGraph *original, int span)
{
    assert(original->nfixed >= 0 && original->nfixed <= original->ncells);
    const size_t n = static_cast<size_t>(original->ncells);
    b->original = original;
    b->level = original;
    b->copy = {};
    open_queues(b->queues, 2, original->ncells, span);
    attach_level(b);
    b->side = alloc_array<uint8_t>(n, "FM_Refine: moved");
    b->perm = imalloc__(n, "FM_Refine: perm");
    open_nets(b);
}

template <class Queue> void close_bisection(OpenBisection<Queue> *b)
{
    close_queues(b->queues, 2);
    if (b->copy.nets == nullptr) QXfree__(&b->nets, LTERM);
    free_relabelled(&b->copy);
    QXfree__(&b->side, &b->counts, &b->large, &b->perm, LTERM);
}

template <class Queue> void load_sides(OpenBisection<Queue> *b)
{
    const HGraph *const original = b->original;
    const int *const where = original->where;
    int total = 0, ones = 0;
    for (int v = 0; v < original->ncells; v++) {
        assert(where[v] == 0 || where[v] == 1);
        b->side[refined_of(b, v)] = static_cast<uint8_t>(where[v]);
        total += original->cellwgt[v];
        ones += original->cellwgt[v] & -where[v];
    }
    b->pwgts[0] = total - ones;
    b->pwgts[1] = ones;
}

/* Counts the pins of a hyperedge on each side, and nqueued as if all free pins were queued. Most
 * have few, so that a call would cost more than they do. */
template <class Queue>
[[gnu::always_inline]] static inline NetCounts count_pins(const OpenBisection<Queue> *b,
                                                          const FmNet *net)
{
    const int *const netind = b->level->netind;
    const uint8_t *const sides = b->side;
    const int nfixed = b->level->nfixed, size = net->end - net->first;
    int ones = 0, onexor = 0, fixed = 0;
    count_work(WORK_GAIN_PINS, size);
    for (int j = net->first; j < net->end; j++) {
        const int u = netind[j], side = sides[u];
        assert(side <= 1);
        ones += side;
        onexor ^= u & -side;
    }
    for (int j = net->first; nfixed > 0 && j < net->end; j++) fixed += netind[j] < nfixed;
    return {{size - ones, ones}, size - fixed, net->pinxor ^ onexor};
}

template <class Queue>
static void put_counts(OpenBisection<Queue> *b, int e, const NetCounts *counts)
{
    if (is_large(b->counts[e])) [[unlikely]]
        b->large[low_word(b->counts[e])] = *counts;
    else
        b->counts[e] = (b->counts[e] & PACKED_FIXED) | pack_counts(counts);
}

/* Adds w to the gain of pin, if that is all that its side has of a hyperedge; otherwise adds 0 to
 * gain 0: branch-free, as the case is unpredictable. */
template <class Queue> static void add_if_alone(OpenBisection<Queue> *b, int npins, int pin, int w)
{
    const int alone = -(npins == 1);
    gain_of(b, pin & alone) += w & alone;
}

/* Counts, gains and the cut from the sides. */
template <class Queue> static void compute_gains(OpenBisection<Queue> *b)
{
    const HGraph *const level = b->level;
    for (int v = 0; v < level->ncells; v++) gain_of(b, v) = -level->adjwgt[v];
    b->cut = 0;
    for (int e = 0; e < level->nnets; e++) {
        const FmNet *const net = &b->nets[e];
        const NetCounts counts = count_pins(b, net);
        put_counts(b, e, &counts);
        if (counts.npins[0] == 0 || counts.npins[1] == 0) continue;
        b->cut += net->wgt;
        for (int j = net->first; j < net->end; j++) gain_of(b, level->netind[j]) += net->wgt;
        add_if_alone(b, counts.npins[0], counts.xor0, net->wgt);
        add_if_alone(b, counts.npins[1], counts.xor0 ^ net->pinxor, net->wgt);
    }
}

template <class Queue> void load_bisection(OpenBisection<Queue> *b)
{
    load_sides(b);
    compute_gains(b);
}

template <class Queue> void store_bisection(const OpenBisection<Queue> *b)
{
    HGraph *const original = b->original;
    for (int e = 0; e < original->nnets; e++) {
        const NetCounts counts =
            net_counts(b, b->copy.netlabel != nullptr ? b->copy.netlabel[e] : e);
        assert(counts.npins[0] + counts.npins[1] == net_size(original, e));
        original->ndeg[0][e] = counts.npins[0];
        original->ndeg[1][e] = counts.npins[1];
    }
    for (int v = 0; v < original->ncells; v++) {
        original->where[v] = side_of(b, refined_of(b, v));
        original->gain[v] = gain_of(b, refined_of(b, v));
    }
    original->pwgts[0] = b->pwgts[0];
    original->pwgts[1] = b->pwgts[1];
    original->mincut = b->cut;
}

template <class Queue> void reverse_counts(OpenBisection<Queue> *b)
{
    for (int e = 0; e < b->level->nnets; e++) {
        const FmNet *const net = &b->nets[e];
        const NetCounts end = net_counts(b, e);
        assert(end.npins[0] + end.npins[1] == net->end - net->first);
        NetCounts start = {
            {end.npins[1], end.npins[0]}, net->end - net->first, net->pinxor ^ end.xor0};
        if (b->counts[e] & PACKED_FIXED) start = count_pins(b, net);
        put_counts(b, e, &start);
    }
}

template <class Queue> int cut_of_counts(const OpenBisection<Queue> *b)
{
    int cut = 0;
    for (int e = 0; e < b->level->nnets; e++) {
        const NetCounts counts = net_counts(b, e);
        if (counts.npins[0] != 0 && counts.npins[1] != 0) cut += b->level->netwgt[e];
    }
    return cut;
}

template <class Queue> void empty_queues(OpenBisection<Queue> *b)
{
    queue_reset(&b->queues[0]);
    queue_reset(&b->queues[1]);
}

/* Prefetches the sides and nodes of coming vertices of the order of queueing. */
[[gnu::always_inline]] static inline void prefetch_queued(const BucketBisection *b, int i)
{
    constexpr int ahead = 16;
    if (i + 2 * ahead >= b->level->ncells) return;
    if (b->copy.label != nullptr) __builtin_prefetch(&b->copy.label[b->perm[i + 2 * ahead]]);
    const int v = refined_of(b, b->perm[i + ahead]);
    __builtin_prefetch(&b->side[v]);
    __builtin_prefetch(&b->queues[0].nodes[v], 1);
}

static inline void prefetch_queued(const HeapBisection *, int)
{
}

template <class Queue>
void fill_queues(Generator *random, OpenBisection<Queue> *b, const bool gives[2])
{
    const int ncells = b->level->ncells, nfixed = b->level->nfixed;
    const bool far = worth_prefetching(b->level);
    assert(b->queues[0].nnodes == 0 && b->queues[1].nnodes == 0);
    RandomPermute__(random, b->perm, ncells, 1);
    for (int i = 0; i < ncells; i++) {
        const int v = refined_of(b, b->perm[i]), side = side_of(b, v);
        if (far) prefetch_queued(b, i);
        if (v < nfixed || !gives[side]) continue;
        count_work(WORK_QUEUED, 1);
        queue_insert(&b->queues[side], v, gain_of(b, v));
    }
}

#define INSTANTIATE(Queue)                                                                         \
    template void open_bisection(OpenBisection<Queue> *b, HGraph *original, int span);             \
    template void close_bisection(OpenBisection<Queue> *b);                                        \
    template void load_bisection(OpenBisection<Queue> *b);                                         \
    template void load_sides(OpenBisection<Queue> *b);                                             \
    template void store_bisection(const OpenBisection<Queue> *b);                                  \
    template void empty_queues(OpenBisection<Queue> *b);                                           \
    template void fill_queues(Generator *random, OpenBisection<Queue> *b, const bool gives[2]);    \
    template void reverse_counts(OpenBisection<Queue> *b);                                         \
    template int cut_of_counts(const OpenBisection<Queue> *b)
INSTANTIATE(BucketQueue);
INSTANTIATE(HeapQueue);
