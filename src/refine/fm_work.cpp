/* refine/fm_work.cpp: setting up and winding down the passes of the refiners. */
#include "refine/fm_work.h"

#include "core/memory.h"
#include "core/prefetch.h"
#include "core/random.h"
#include "core/vectors.h"
#include "refine/neighbours.h"

// vertices: smaller levels are in the cache anyway
constexpr int RELABEL_SIZE = HEAVY_ASSERTS ? 24 : 4096;

/* Lists what does not change of the hyperedges. */
static FmNet *list_nets(const HGraph *graph)
{
    FmNet *nets = alloc_array<FmNet>(static_cast<size_t>(graph->nnets), "FM_Refine: nets");
    for (int e = 0; e < graph->nnets; e++) {
        const int begin = graph->netptr[e], end = graph->netptr[e + 1];
        int pinxor = 0;
        for (int j = begin; j < end; j++) pinxor ^= graph->netind[j];
        nets[e] = {graph->netwgt[e], begin, end, pinxor};
    }
    return nets;
}

/* Numbers the large hyperedges and marks those with fixed pins. */
static void open_nets(const HGraph *graph, FmWork *work)
{
    const size_t nnets = static_cast<size_t>(graph->nnets);
    work->nets = work->copy.nets != nullptr ? work->copy.nets : list_nets(graph);
    work->counts = alloc_array<PackedCounts>(nnets, "FM_Refine: counts");
    work->nlarge = 0;
    work->single = false;
    for (int e = 0; e < graph->nnets; e++) {
        const int size = work->nets[e].end - work->nets[e].first;
        const bool small = size > 0 && size <= PACKED_SIZE;
        work->counts[e] = small ? 0 : PACKED_LARGE | static_cast<PackedCounts>(work->nlarge++);
        work->single |= size == 1;
    }
    for (int j = 0; j < graph->incptr[graph->nfixed]; j++)
        work->counts[graph->incind[j]] |= PACKED_FIXED;
    work->large = alloc_array<NetCounts>(static_cast<size_t>(work->nlarge), "FM_Refine: large");
}

const HGraph *open_work(HGraph *original, FmWork *work, int nqueues)
{
    const HGraph *graph = original;
    const int span = largest_of(graph->ncells, graph->adjwgt); // no gain is larger
    const size_t n = static_cast<size_t>(graph->ncells);
    work->copy = {};
    work->nqueues = nqueues;
    if (nqueues == 2)
        init_queue_pair(work->queues, graph->ncells, span);
    else
        PQueueInit__(&work->queues[0], graph->ncells, span);
    const bool buckets = work->queues[0].type == PQ_BUCKETS;
    if (buckets && graph->nearby != nullptr && graph->ncells >= RELABEL_SIZE) {
        relabel_level(original, &work->copy);
        graph = &work->copy.level;
    }
    work->gain = original->gain;
    if (buckets)
        for (int v = 0; v <= graph->ncells; v++) work->queues[0].nodes[v].first = graph->incptr[v];
    work->side = alloc_array<uint8_t>(n, "FM_Refine: moved");
    work->swaps = imalloc__(n, "FM_Refine: swaps");
    work->perm = imalloc__(n, "FM_Refine: perm");
    open_nets(graph, work);
    work->startgain = nullptr;
    return graph;
}

void close_work(FmWork *work, int nqueues)
{
    if (nqueues == 2)
        free_queue_pair(work->queues);
    else
        PQueueFree__(&work->queues[0]);
    if (work->copy.nets == nullptr) QXfree__(&work->nets, LTERM);
    free_relabelled(&work->copy);
    QXfree__(&work->side, &work->counts, &work->large, &work->startgain, &work->swaps, &work->perm,
             LTERM);
}

void load_sides(const HGraph *graph, FmWork *work)
{
    const int *const where = graph->where;
    int total = 0, ones = 0;
    for (int v = 0; v < graph->ncells; v++) {
        work->side[refined_of(work, v)] = static_cast<uint8_t>(where[v]);
        total += graph->cellwgt[v];
        ones += graph->cellwgt[v] & -where[v];
    }
    work->pwgts[0] = total - ones;
    work->pwgts[1] = ones;
}

void store_sides(HGraph *graph, const FmWork *work)
{
    for (int v = 0; v < graph->ncells; v++) graph->where[v] = side_of(work, refined_of(work, v));
    graph->pwgts[0] = work->pwgts[0];
    graph->pwgts[1] = work->pwgts[1];
    graph->mincut = work->mincut;
}

/* Counts the pins of e on each side, and nqueued as if all free pins were queued. */
static NetCounts count_pins(const HGraph *graph, const FmWork *work, const FmNet *net)
{
    const int *const netind = graph->netind;
    const uint8_t *const sides = work->side;
    const int size = net->end - net->first;
    int ones = 0, onexor = 0, nfixed = 0;
    count_work(WORK_GAIN_PINS, size);
    for (int j = net->first; j < net->end; j++) {
        const int u = netind[j], side = sides[u];
        ones += side;
        onexor ^= u & -side;
    }
    for (int j = net->first; graph->nfixed > 0 && j < net->end; j++)
        nfixed += netind[j] < graph->nfixed;
    return {{size - ones, ones}, size - nfixed, net->pinxor ^ onexor};
}

static PackedCounts pack_counts(const NetCounts *c)
{
    return static_cast<PackedCounts>(static_cast<uint32_t>(c->xor0)) |
           static_cast<PackedCounts>(c->npins[0]) << PACKED_NPINS |
           static_cast<PackedCounts>(c->npins[1]) << (PACKED_NPINS + 8) |
           static_cast<PackedCounts>(c->nqueued) << PACKED_NQUEUED;
}

static void put_counts(FmWork *work, int e, const NetCounts *counts)
{
    if (is_large(work->counts[e])) [[unlikely]]
        work->large[low_counts(work->counts[e])] = *counts;
    else
        work->counts[e] = (work->counts[e] & PACKED_FIXED) | pack_counts(counts);
}

/* Adds w to the gain of pin, if that is all that its side has of a hyperedge; else adds nothing to
 * some gain. Which of the two can't be foreseen. */
template <bool Heap> static void add_if_alone(FmWork *work, int npins, int pin, int w)
{
    const int alone = -(npins == 1);
    gain_of<Heap>(work, pin & alone) += w & alone;
}

template <bool Heap> void compute_gains(const HGraph *graph, FmWork *work)
{
    // uncut hyperedges take their weight off each pin's gain: start from that for all, give it
    // back at cut ones, and add it where a pin is alone on its side
    for (int v = 0; v < graph->ncells; v++) gain_of<Heap>(work, v) = -graph->adjwgt[v];
    work->mincut = 0;
    for (int e = 0; e < graph->nnets; e++) {
        const FmNet *const net = &work->nets[e];
        const NetCounts counts = count_pins(graph, work, net);
        put_counts(work, e, &counts);
        if (counts.npins[0] == 0 || counts.npins[1] == 0) continue;
        work->mincut += net->wgt;
        for (int j = net->first; j < net->end; j++)
            gain_of<Heap>(work, graph->netind[j]) += net->wgt;
        add_if_alone<Heap>(work, counts.npins[0], counts.xor0, net->wgt);
        add_if_alone<Heap>(work, counts.npins[1], net->pinxor ^ counts.xor0, net->wgt);
    }
}

template <bool Heap> void store_gains(HGraph *graph, FmWork *work)
{
    for (int e = 0; e < graph->nnets; e++) {
        const int k = work->copy.netlabel != nullptr ? work->copy.netlabel[e] : e;
        const NetCounts counts = net_counts(work, k);
        graph->ndeg[0][e] = counts.npins[0];
        graph->ndeg[1][e] = counts.npins[1];
    }
    for (int v = 0; v < graph->ncells; v++)
        graph->gain[v] = gain_of<Heap>(work, refined_of(work, v));
}

template <bool Heap> void save_start(const HGraph *graph, FmWork *work)
{
    if (work->startgain == nullptr)
        work->startgain = imalloc__(static_cast<size_t>(graph->ncells), "FM_Refine: startgain");
    for (int v = 0; v < graph->ncells; v++) work->startgain[v] = gain_of<Heap>(work, v);
}

/* Takes the counts back to the start of a pass that is over: each free pin has changed sides. */
static void reverse_counts(const HGraph *graph, FmWork *work)
{
    for (int e = 0; e < graph->nnets; e++) {
        const FmNet *const net = &work->nets[e];
        const NetCounts end = net_counts(work, e);
        NetCounts start = {
            {end.npins[1], end.npins[0]}, net->end - net->first, net->pinxor ^ end.xor0};
        if (work->counts[e] & PACKED_FIXED) start = count_pins(graph, work, net);
        put_counts(work, e, &start);
    }
}

template <bool Heap> void restart_at_best(const HGraph *original, const HGraph *graph, FmWork *work)
{
    constexpr UpdateRules updates = {true, false, false};
    load_sides(original, work);
    for (int v = 0; v < graph->ncells; v++) gain_of<Heap>(work, v) = work->startgain[v];
    reverse_counts(graph, work);
    count_work(WORK_UNDONE, work->mincutorder + 1);
    for (int i = 0; i <= work->mincutorder; i++) {
        const int v = work->swaps[i], from = side_of(work, v);
        change_side(graph, work, v, from, 1 - from);
        gain_of<Heap>(work, v) = -gain_of<Heap>(work, v);
        update_neighbours<Heap, updates>(graph, work, v, from);
    }
}

int cut_of_counts(const HGraph *graph, const FmWork *work)
{
    int cut = 0;
    for (int e = 0; e < graph->nnets; e++) {
        const NetCounts counts = net_counts(work, e);
        if (counts.npins[0] != 0 && counts.npins[1] != 0) cut += graph->netwgt[e];
    }
    return cut;
}

void reset_pass(FmWork *work, int nqueues)
{
    for (int i = 0; i < nqueues; i++) PQueueReset__(&work->queues[i]);
    work->initcut = work->newcut = work->mincut;
    work->initpwgts[0] = work->pwgts[0];
    work->initpwgts[1] = work->pwgts[1];
    work->mindiff = weight_difference(work->pwgts);
    work->mincutorder = -1;
    work->nswaps = 0;
}

/* Asks for the sides and nodes of coming vertices of the order of queueing. */
[[gnu::always_inline]] static inline void prefetch_queued(const HGraph *graph, const FmWork *work,
                                                          int i)
{
    constexpr int ahead = 16;
    if (i + 2 * ahead >= graph->ncells) return;
    if (work->copy.label != nullptr)
        __builtin_prefetch(&work->copy.label[work->perm[i + 2 * ahead]]);
    const int v = refined_of(work, work->perm[i + ahead]);
    __builtin_prefetch(&work->side[v]);
    __builtin_prefetch(&work->queues[0].nodes[v], 1);
}

template <bool Heap>
void fill_queues(Generator *random, const HGraph *graph, FmWork *work, int onlyside)
{
    const bool far = worth_prefetching(graph);
    RandomPermute__(random, work->perm, graph->ncells, 1);
    for (int i = 0; i < graph->ncells; i++) {
        const int v = refined_of(work, work->perm[i]), side = side_of(work, v);
        if (!Heap && far) prefetch_queued(graph, work, i);
        if (v < graph->nfixed || (onlyside >= 0 && side != onlyside)) continue;
        PQueue *const queue = &work->queues[onlyside >= 0 ? 0 : side];
        count_work(WORK_QUEUED, 1);
        if (Heap)
            PQueueInsert__(queue, v, gain_of<Heap>(work, v));
        else
            bucket_insert(queue, v, gain_of<Heap>(work, v));
    }
}

/* Whether v's gain is what the pin counts say; with a hyperedge of one pin it drifts. */
static bool gain_agrees(const HGraph *graph, FmWork *work, int v)
{
    const int side = side_of(work, v);
    int gain = 0;
    for (int j = graph->incptr[v]; j < graph->incptr[v + 1]; j++) {
        const int e = graph->incind[j];
        const NetCounts counts = net_counts(work, e);
        if (net_size(graph, e) == 1) return true;
        if (counts.npins[1 - side] == 0)
            gain -= graph->netwgt[e];
        else if (counts.npins[side] == 1)
            gain += graph->netwgt[e];
    }
    return gain ==
           (work->queues[0].type == PQ_HEAP ? gain_of<true>(work, v) : gain_of<false>(work, v));
}

static bool in_any_queue(const FmWork *work, int v)
{
    const int index = work->nqueues == 2 ? side_of(work, v) : 0;
    return work->queues[0].type == PQ_HEAP ? is_queued<true>(work, index, v)
                                           : is_queued<false>(work, index, v);
}

bool work_ok(const HGraph *graph, FmWork *work, bool exact)
{
    for (int e = 0; e < graph->nnets; e++) {
        int nqueued = 0;
        const NetCounts fresh = count_pins(graph, work, &work->nets[e]);
        const NetCounts kept = net_counts(work, e);
        for (int j = graph->netptr[e]; j < graph->netptr[e + 1]; j++)
            nqueued += in_any_queue(work, graph->netind[j]);
        if (fresh.npins[0] != kept.npins[0] || fresh.npins[1] != kept.npins[1] ||
            fresh.xor0 != kept.xor0 || (!exact && kept.nqueued != nqueued))
            return false;
    }
    for (int v = 0; v < graph->ncells; v++)
        if ((exact || in_any_queue(work, v)) && !gain_agrees(graph, work, v)) return false;
    return pqueue_ok(&work->queues[0]);
}

template void compute_gains<false>(const HGraph *graph, FmWork *work);
template void compute_gains<true>(const HGraph *graph, FmWork *work);
template void store_gains<false>(HGraph *graph, FmWork *work);
template void store_gains<true>(HGraph *graph, FmWork *work);
template void save_start<false>(const HGraph *graph, FmWork *work);
template void save_start<true>(const HGraph *graph, FmWork *work);
template void restart_at_best<false>(const HGraph *original, const HGraph *graph, FmWork *work);
template void restart_at_best<true>(const HGraph *original, const HGraph *graph, FmWork *work);
template void fill_queues<false>(Generator *random, const HGraph *graph, FmWork *work,
                                 int onlyside);
template void fill_queues<true>(Generator *random, const HGraph *graph, FmWork *work, int onlyside);
