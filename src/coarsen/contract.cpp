/* coarsen/contract.cpp: construction of the next coarser level.
 *
 * Repeated pins, incidences and hyperedges are found without clearing a table: a mark holds the
 * number of the hyperedge (or vertex) in work, so that a stale one never matches.
 */
#include "coarsen/contract.h"

#include <algorithm>
#include <cstdlib>

#include "coarsen/merge_nets.h"
#include "core/heavy_assert.h"
#include "core/memory.h"
#include "core/timers.h"
#include "core/vectors.h"

/* Maps the pins of finer hyperedge e to coarse vertices, each once; returns their number. */
static int map_pins(const HGraph *graph, int e, int *pins, int *mark)
{
    int size = 0;
    for (int j = graph->netptr[e]; j < graph->netptr[e + 1]; j++) {
        const int c = graph->cellmap[graph->netind[j]];
        if (mark[c] == e) continue;
        mark[c] = e;
        pins[size++] = c;
    }
    return size;
}

/* The positional key by which identical hyperedges meet; wraps. */
static int pins_key(int size, const int *pins)
{
    unsigned sum = 0;
    for (int j = 0; j < size; j++)
        sum += (static_cast<unsigned>(j) + 1) * static_cast<unsigned>(pins[j]);
    return static_cast<int>(static_cast<unsigned>(size) + 100 * sum);
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
        const int size = map_pins(graph, e, pins, mark);
        if (size == 1) {
            dropped += graph->netwgt[e];
            continue;
        }
        const int t = nets->nnets++;
        sort_pins(size, pins);
        graph->netmap[e] = t;
        nets->netwgt[t] = graph->netwgt[e];
        nets->netptr[t + 1] = nets->netptr[t] + size;
        pairs[t] = {size > 0 ? pins_key(size, pins) : 0, t};
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
    int *dnetmap = ismalloc__(kept, -1, "CreateCoarseHGraph: dnetmap");
    int *dseen = ismalloc__(kept, -1, "CreateCoarseHGraph: dseen");
    merge_identical(&nets, pairs, &merged, dnetmap, dseen);
    for (int e = 0; e < graph->nnets; e++)
        if (graph->netmap[e] != -1) graph->netmap[e] = dnetmap[graph->netmap[e]];
    QXfree__(&nets.netptr, &nets.netind, &nets.netwgt, &pairs, &dnetmap, &dseen, LTERM);

    coarser->nnets = merged.nnets;
    coarser->netptr = merged.netptr;
    coarser->netind = merged.netind;
    coarser->netwgt = merged.netwgt;
    coarser->edgewgt =
        fmalloc__(static_cast<size_t>(merged.nnets), "CreateCoarseHGraph: coarser->edgewgt");
    for (int e = 0; e < merged.nnets; e++)
        coarser->edgewgt[e] = edge_weight(merged.netwgt[e], net_size(coarser, e));
}

/* Appends to the incidence at used the coarse hyperedges of finer vertex v that c has not met;
 * returns the end. */
static int append_incidence(const HGraph *graph, int v, HGraph *coarser, int c, int used, int *mark)
{
    for (int j = graph->incptr[v]; j < graph->incptr[v + 1]; j++) {
        const int d = graph->netmap[graph->incind[j]];
        if (d == -1 || mark[d] == c) continue;
        mark[d] = c;
        coarser->incind[used++] = d;
        coarser->adjwgt[c] += coarser->netwgt[d];
    }
    return used;
}

static void make_vertices(const HGraph *graph, HGraph *coarser, int *mark)
{
    const size_t n = static_cast<size_t>(coarser->ncells);
    coarser->cellwgt = ismalloc__(n, 0, "CreateCoarseHGraph: coarser->cellwgt");
    coarser->adjwgt = ismalloc__(n, 0, "CreateCoarseHGraph: coarser->adjwgt");
    coarser->incptr = imalloc__(n + 1, "CreateCoarseHGraph: coarser->incptr");
    coarser->incind = imalloc__(static_cast<size_t>(graph->netptr[graph->nnets]),
                                "CreateCoarseHGraph: coarser->incind");
    int used = 0;
    coarser->incptr[0] = 0;
    for (int c = 0; c < coarser->ncells; c++) {
        for (int i = graph->mptr[c]; i < graph->mptr[c + 1]; i++) {
            const int v = graph->mind[i];
            coarser->cellwgt[c] += graph->cellwgt[v];
            used = append_incidence(graph, v, coarser, c, used, mark);
        }
        coarser->incptr[c + 1] = used;
    }
}

void CreateCoarseHGraph__(PartCtrl *ctrl, HGraph *graph, int cnvtxs)
{
    start_timer(ctrl, TIME_AUX2);
    HGraph *const coarser = CreateHGraph__();
    coarser->ncells = cnvtxs;
    coarser->nfixed = graph->nfixed;
    coarser->finer = graph;
    graph->coarser = coarser;

    const int nmarks = std::max(cnvtxs, graph->nnets); // coarse vertices, then coarse hyperedges
    int *mark = ismalloc__(static_cast<size_t>(nmarks), -1, "CreateCoarseHGraph: htable");
    make_hyperedges(graph, coarser, mark);
    iset__(nmarks, -1, mark);
    make_vertices(graph, coarser, mark);
    QXfree__(&mark, LTERM);
    HEAVY_ASSERT(hgraph_ok(coarser, HG_LISTS | HG_INCIDENCE));
    stop_timer(ctrl, TIME_AUX2);
}
