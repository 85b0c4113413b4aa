// SPDX-License-Identifier: MIT
/* coarsen/contract.cpp: construction of the next coarser level.
 *
 *     map         each finer hyperedge to coarse vertices, in order and each once; those within one
 *                 coarse vertex are dropped (map_hyperedges)
 *     merge       hyperedges of equal pins, by sorting keys of them (coarsen/merge_nets.h)
 *     incidence   of each coarse vertex, from its members' (make_vertices)
 * Repeated pins, incidences and hyperedges are found without clearing a table: a mark holds the
 * number of the hyperedge (or vertex) in work, so that a stale one never matches.
 * Arrays are sized by the finer level and written ahead of what is known to be needed: the pins of
 * hyperedge e take at most as much room as those of the finer one.
 */
#include "coarsen/contract.h"

#include <algorithm>
#include <cassert>
#include <cstdlib>

#include "coarsen/merge_nets.h"
#include "core/heavy_assert.h"
#include "core/memory.h"
#include "core/prefetch.h"
#include "core/small_sort.h"
#include "core/timers.h"
#include "core/work_counts.h"

constexpr int FEW_PINS = HEAVY_ASSERTS ? 10 : 16; // sorted by a network: beats marking

/* A finer hyperedge mapped to coarse vertices, which are listed in order and each once. */
struct MappedNet {
    int size;     // pins
    unsigned sum; // of place, counted from 1, times pin; wraps
};

/* The key that brings identical hyperedges together. */
static int pins_key(MappedNet net)
{
    return static_cast<int>(static_cast<unsigned>(net.size) + 100 * net.sum);
}

/* Maps n pins, Least <= n <= Most. Their number and order are those of chance, so there is no
 * branch on either: the last pin fills up the network, and repeated ones are written over. */
template <int Least, int Most>
static MappedNet map_sorted(const int *cellmap, int n, const int *fine, int *pins)
{
    int mapped[Most];
    assert(Least <= n && n <= Most);
    for (int j = 0; j < Most; j++) mapped[j] = cellmap[fine[j < Least ? j : std::min(j, n - 1)]];
    small_sort<Most>(mapped);
    MappedNet net = {1, static_cast<unsigned>(mapped[0])};
    pins[0] = mapped[0];
    for (int j = 1; j < Most; j++) {
        const unsigned fresh = mapped[j] != mapped[j - 1];
        net.size += static_cast<int>(fresh);
        net.sum += fresh * static_cast<unsigned>(net.size) * static_cast<unsigned>(mapped[j]);
        pins[net.size - 1] = mapped[j];
    }
    assert(net.size <= n); // writing ahead stayed within the room of the finer pins
    return net;
}

/* The same for many pins; mark[c] is e once c is among them. */
static MappedNet map_many(const int *cellmap, int n, const int *fine, int *pins, int *mark, int e)
{
    MappedNet net = {0, 0};
    for (int j = 0; j < n; j++) {
        const int c = cellmap[fine[j]];
        assert(c >= 0 && net.size <= j);
        pins[net.size] = c;
        net.size += mark[c] != e;
        mark[c] = e;
    }
    sort_pins(net.size, pins);
    for (int j = 0; j < net.size; j++)
        net.sum += (static_cast<unsigned>(j) + 1) * static_cast<unsigned>(pins[j]);
    return net;
}

static MappedNet map_pins(const HGraph *graph, int e, int *pins, int *mark)
{
    const int *const cellmap = graph->cellmap, *const fine = graph->netind + graph->netptr[e];
    const int n = net_size(graph, e);
    count_work(WORK_CONTRACT_PINS, n);
    if (n == 0) return {0, 0};
    if (n > FEW_PINS) return map_many(cellmap, n, fine, pins, mark, e);
    if (n <= 2) return map_sorted<1, 2>(cellmap, n, fine, pins);
    if (n <= 4) return map_sorted<3, 4>(cellmap, n, fine, pins);
    if (n <= 8) return map_sorted<5, 8>(cellmap, n, fine, pins);
    return map_sorted<9, 16>(cellmap, n, fine, pins);
}

/* Fills nets with what is left of each finer hyperedge, netmap with its number there or -1, pairs
 * with the keys. Returns the weight of the dropped ones. */
static int map_hyperedges(HGraph *graph, NetLists *nets, KeyValue *pairs, int *mark)
{
    int dropped = 0;
    nets->nnets = 0;
    nets->netptr[0] = 0;
    for (int e = 0; e < graph->nnets; e++) {
        int *const pins = nets->netind + nets->netptr[nets->nnets];
        const MappedNet net = map_pins(graph, e, pins, mark);
        if (net.size == 1) {
            dropped += graph->netwgt[e];
            continue;
        }
        const int t = nets->nnets++;
        assert(net.size <= net_size(graph, e) &&
               nets->netptr[t] + net.size <= graph->netptr[e + 1]);
        graph->netmap[e] = t;
        nets->netwgt[t] = graph->netwgt[e];
        nets->netptr[t + 1] = nets->netptr[t] + net.size;
        pairs[t] = {pins_key(net), t};
    }
    return dropped;
}

static void make_hyperedges(HGraph *graph, HGraph *coarser, int *mark)
{
    const size_t nnets = static_cast<size_t>(graph->nnets);
    const size_t npins = static_cast<size_t>(graph->netptr[graph->nnets]);
    graph->netmap = ismalloc__(nnets, -1, "CreateCoarseHGraph: graph->netmap");
    NetLists nets, merged;
    nets.netptr = imalloc__(nnets + 1, "CreateCoarseHGraph: coarser->netptr");
    nets.netind = imalloc__(npins, "CreateCoarseHGraph: coarser->netind");
    nets.netwgt = imalloc__(nnets, "CreateCoarseHGraph: coarser->netwgt");
    KeyValue *pairs = alloc_array<KeyValue>(nnets, "CreateCoarseHGraph: cand");
    coarser->removedwgt = graph->removedwgt + map_hyperedges(graph, &nets, pairs, mark);

    const size_t kept = static_cast<size_t>(nets.nnets);
    merged.netptr = imalloc__(kept + 1, "CreateCoarseHGraph: dnetptr");
    merged.netind =
        imalloc__(static_cast<size_t>(nets.netptr[nets.nnets]), "CreateCoarseHGraph: dnetind");
    merged.netwgt = imalloc__(kept, "CreateCoarseHGraph: dnetwgt");
    int *dnetmaps = ismalloc__(kept + 1, -1, "CreateCoarseHGraph: dnetmap");
    int *const dnetmap = dnetmaps + 1; // dnetmap[-1] is -1: what was dropped stays so
    int *dseen = ismalloc__(kept, -1, "CreateCoarseHGraph: dseen");
    merge_identical(&nets, pairs, &merged, dnetmap, dseen);
    for (int e = 0; e < graph->nnets; e++) graph->netmap[e] = dnetmap[graph->netmap[e]];
    QXfree__(&nets.netptr, &nets.netind, &nets.netwgt, &pairs, &dnetmaps, &dseen, LTERM);

    coarser->nnets = merged.nnets;
    coarser->netptr = merged.netptr;
    coarser->netind = merged.netind;
    coarser->netwgt = merged.netwgt;
    coarser->edgewgt =
        fmalloc__(static_cast<size_t>(merged.nnets), "CreateCoarseHGraph: coarser->edgewgt");
    for (int e = 0; e < merged.nnets; e++)
        coarser->edgewgt[e] = edge_weight(merged.netwgt[e], net_size(coarser, e));
}

/* A coarse hyperedge as its vertices' incidence is built: both are read together. */
struct ListedNet {
    int last; // the coarse vertex that listed it last, -1 at first
    int wgt;
};

/* Appends to the incidence at used the coarse hyperedges of finer vertex v that c does not list
 * yet; returns the end. Half are listed already, at random: they are written over, not branched
 * around. listed[-1], the dropped hyperedges, counts as listed. Inlined, the loop would lack
 * registers. */
[[gnu::noinline]] static int append_incidence(const HGraph *graph, int v, HGraph *coarser, int c,
                                              int used, ListedNet *listed)
{
    const int *const netmap = graph->netmap, *const incind = graph->incind;
    int *const coarseind = coarser->incind;
    const int end = graph->incptr[v + 1];
    int adjwgt = 0;
    count_work(WORK_CONTRACT_PINS, end - graph->incptr[v]);
    for (int j = graph->incptr[v]; j < end; j++) {
        const int d = netmap[incind[j]];
        const int fresh = listed[d].last != c;
        listed[d].last = c;
        assert(-1 <= d && d < coarser->nnets && used < graph->netptr[graph->nnets]);
        coarseind[used] = d;
        used += fresh;
        adjwgt += listed[d].wgt & -fresh;
    }
    coarser->adjwgt[c] += adjwgt;
    return used;
}

/* Prefetches what the incidences of coming vertices of mind lead to, in four steps, each of which
 * needs what the one before has fetched:
 *     mind[i + 8]   where its list starts
 *     mind[i + 6]   the list
 *     mind[i + 4]   the coarse numbers of its hyperedges
 *     mind[i + 2]   their entries in listed
 */
[[gnu::always_inline]] static inline void prefetch_incidences(const HGraph *graph, int i,
                                                              const ListedNet *listed)
{
    const int *const incptr = graph->incptr, *const incind = graph->incind;
    if (i + 8 >= graph->ncells) return;
    __builtin_prefetch(&incptr[graph->mind[i + 8]]);
    const int u = graph->mind[i + 4], v = graph->mind[i + 2];
    __builtin_prefetch(&incind[incptr[graph->mind[i + 6]]]);
    for (int j = incptr[u]; j < incptr[u + 1]; j++) __builtin_prefetch(&graph->netmap[incind[j]]);
    for (int j = incptr[v]; j < incptr[v + 1]; j++)
        __builtin_prefetch(&listed[graph->netmap[incind[j]]]);
}

static void make_vertices(const HGraph *graph, HGraph *coarser)
{
    ListedNet *table = alloc_array<ListedNet>(static_cast<size_t>(coarser->nnets) + 1,
                                              "CreateCoarseHGraph: htable");
    ListedNet *const listed = table + 1;
    for (int d = 0; d < coarser->nnets; d++) listed[d] = {-1, coarser->netwgt[d]};
    const size_t n = static_cast<size_t>(coarser->ncells);
    coarser->cellwgt = imalloc__(n, "CreateCoarseHGraph: coarser->cellwgt");
    coarser->adjwgt = ismalloc__(n, 0, "CreateCoarseHGraph: coarser->adjwgt");
    coarser->incptr = imalloc__(n + 1, "CreateCoarseHGraph: coarser->incptr");
    coarser->incind = imalloc__(static_cast<size_t>(graph->netptr[graph->nnets]),
                                "CreateCoarseHGraph: coarser->incind");
    const bool far = worth_prefetching(graph);
    const int *const mind = graph->mind, *const mptr = graph->mptr;
    int used = 0;
    coarser->incptr[0] = 0;
    for (int c = 0; c < coarser->ncells; c++) {
        int wgt = 0;
        assert(mptr[c] <= mptr[c + 1] && mptr[c + 1] <= graph->ncells);
        listed[-1].last = c;
        for (int i = mptr[c]; i < mptr[c + 1]; i++) {
            if (far) prefetch_incidences(graph, i, listed);
            wgt += graph->cellwgt[mind[i]];
            used = append_incidence(graph, mind[i], coarser, c, used, listed);
        }
        coarser->cellwgt[c] = wgt;
        coarser->incptr[c + 1] = used;
    }
    QXfree__(&table, LTERM);
}

void CreateCoarseHGraph__(PartCtrl *ctrl, HGraph *graph, int cnvtxs)
{
    assert(cnvtxs >= graph->nfixed && graph->coarser == nullptr);
    start_timer(ctrl, TIME_AUX2);
    HGraph *const coarser = CreateHGraph__();
    coarser->ncells = cnvtxs;
    coarser->nfixed = graph->nfixed;
    coarser->finer = graph;
    graph->coarser = coarser;

    int *mark = ismalloc__(static_cast<size_t>(cnvtxs), -1, "CreateCoarseHGraph: htable");
    make_hyperedges(graph, coarser, mark);
    make_vertices(graph, coarser);
    QXfree__(&mark, LTERM);
    HEAVY_ASSERT(hgraph_ok(coarser, HG_LISTS | HG_INCIDENCE));
    stop_timer(ctrl, TIME_AUX2);
}
