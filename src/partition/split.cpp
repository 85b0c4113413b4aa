// SPDX-License-Identifier: MIT
/* partition/split.cpp: the two halves of a bisected hypergraph.
 *
 * The lists of both halves grow side by side in one sweep over the hyperedges. A cut hyperedge goes
 * nowhere, or, on request, its pieces of two vertices and more to both; pieces that came out alike
 * are merged then. Vertices keep their order and get new numbers; label keeps the old ones.
 */
#include "partition/split.h"

#include <cassert>

#include "coarsen/collapse.h"
#include "core/memory.h"
#include "core/vectors.h"
#include "partition/initbisect.h"

/* Texts that name one half's arrays. */
struct HalfTexts {
    const char *snetptr, *snetind, *snetwgt, *slabel, *scellwgt;
    const char *netptr, *netind, *netwgt;
};

static const HalfTexts TEXTS[2] = {
    {"SplitGraphPart: snetptr[0]", "SplitGraphPart: snetind[0]", "SplitGraphPart: snetwgt[0]",
     "SplitGraphPart: slabel[0]", "SplitGraphPart: scellwgt[0]", "SplitGraphPart: lgraph->netptr",
     "SplitGraphPart: lgraph->netind", "SplitGraphPart: lgraph->netwgt"},
    {"SplitGraphPart: snetptr[1]", "SplitGraphPart: snetind[1]", "SplitGraphPart: snetwgt[1]",
     "SplitGraphPart: slabel[1]", "SplitGraphPart: scellwgt[1]", "SplitGraphPart: rgraph->netptr",
     "SplitGraphPart: rgraph->netind", "SplitGraphPart: rgraph->netwgt"},
};

/* Room for the hyperedge lists of one half; nnets grows. */
static NetLists open_half(const HGraph *graph, const HalfTexts *texts)
{
    NetLists half;
    half.nnets = 0;
    half.netptr = imalloc__(static_cast<size_t>(graph->nnets) + 1, texts->snetptr);
    half.netind = imalloc__(static_cast<size_t>(graph->netptr[graph->nnets]), texts->snetind);
    half.netwgt = imalloc__(static_cast<size_t>(graph->nnets), texts->snetwgt);
    half.netptr[0] = 0;
    return half;
}

/* Appends the vertices of e on this side, by their new numbers. */
static void append_piece(const HGraph *graph, int e, int side, const int *bisection,
                         const int *rename, NetLists *half)
{
    int used = half->netptr[half->nnets];
    assert(0 <= e && e < graph->nnets && half->nnets < graph->nnets && (side == 0 || side == 1));
    for (int j = graph->netptr[e]; j < graph->netptr[e + 1]; j++) {
        const int v = graph->netind[j];
        if (bisection[v] == side) {
            assert(used < graph->netptr[graph->nnets]);
            half->netind[used++] = rename[v];
        }
    }
    half->netwgt[half->nnets] = graph->netwgt[e];
    half->netptr[++half->nnets] = used;
}

static void split_hyperedges(const PartCtrl *ctrl, const HGraph *graph, const int *bisection,
                             const int *rename, NetLists halves[2])
{
    for (int e = 0; e < graph->nnets; e++) {
        const int size = net_size(graph, e);
        int ones = 0;
        for (int j = graph->netptr[e]; j < graph->netptr[e + 1]; j++)
            ones += bisection[graph->netind[j]];
        const int count[2] = {size - ones, ones};
        if (count[0] == 0 || count[1] == 0) { // whole; an empty one goes to side 0
            const int side = ones > 0 ? 1 : 0;
            append_piece(graph, e, side, bisection, rename, &halves[side]);
            continue;
        }
        for (int side = 0; ctrl->Reconst && side < 2; side++)
            if (count[side] > 1) append_piece(graph, e, side, bisection, rename, &halves[side]);
    }
}

/* Replaces the lists by merged ones. */
static void collapse_half(NetLists *half)
{
    assert(half->netptr[0] == 0 && half->nnets >= 0);
    NetLists merged;
    CollapseSameHEdges__(half, &merged);
    QXfree__(&half->netptr, &half->netind, &half->netwgt, LTERM);
    *half = merged;
}

/* Gives the record exactly-sized copies of the lists and frees these. */
static void keep_half(NetLists *half, HGraph *subgraph, const HalfTexts *texts)
{
    const int nnets = half->nnets, npins = half->netptr[nnets];
    subgraph->nnets = nnets;
    subgraph->netptr = imalloc__(static_cast<size_t>(nnets) + 1, texts->netptr);
    subgraph->netind = imalloc__(static_cast<size_t>(npins), texts->netind);
    subgraph->netwgt = imalloc__(static_cast<size_t>(nnets), texts->netwgt);
    icopy__(nnets + 1, half->netptr, subgraph->netptr);
    icopy__(npins, half->netind, subgraph->netind);
    icopy__(nnets, half->netwgt, subgraph->netwgt);
    QXfree__(&half->netptr, &half->netind, &half->netwgt, LTERM);
}

/* Numbers the vertices of each side in order; counts them. */
static int *number_sides(const HGraph *graph, const int *bisection, int count[2])
{
    int *const rename = imalloc__(static_cast<size_t>(graph->ncells), "SplitGraphPart: rename");
    count[0] = count[1] = 0;
    for (int v = 0; v < graph->ncells; v++) rename[v] = count[bisection[v]]++;
    return rename;
}

void SplitGraphPart__(const PartCtrl *ctrl, const HGraph *graph, const int *bisection,
                      HGraph *lgraph, HGraph *rgraph)
{
    HGraph *const subgraphs[2] = {lgraph, rgraph};
    int count[2];
    int *rename = number_sides(graph, bisection, count);
    NetLists halves[2] = {open_half(graph, &TEXTS[0]), open_half(graph, &TEXTS[1])};
    assert(count[0] + count[1] == graph->ncells);
    for (int side = 0; side < 2; side++) {
        const size_t n = static_cast<size_t>(count[side]);
        subgraphs[side]->ncells = count[side];
        subgraphs[side]->keep = 0;
        subgraphs[side]->label = imalloc__(n, TEXTS[side].slabel);
        subgraphs[side]->cellwgt = imalloc__(n, TEXTS[side].scellwgt);
    }
    split_hyperedges(ctrl, graph, bisection, rename, halves);
    for (int v = 0; v < graph->ncells; v++) {
        HGraph *const subgraph = subgraphs[bisection[v]];
        subgraph->label[rename[v]] = graph->label[v];
        subgraph->cellwgt[rename[v]] = graph->cellwgt[v];
    }
    QXfree__(&rename, LTERM);
    for (int side = 0; side < 2; side++) {
        if (ctrl->Reconst) collapse_half(&halves[side]);
        keep_half(&halves[side], subgraphs[side], &TEXTS[side]);
    }
    lgraph->nfixed = fixed_on_side0(ctrl, graph->nfixed);
    rgraph->nfixed = graph->nfixed - lgraph->nfixed;
    assert(lgraph->nfixed >= 0 && rgraph->nfixed >= 0);
}
