// SPDX-License-Identifier: MIT
/* core/hgraph_ok.cpp: the invariants of a level, tested from scratch.
 *
 * A level's arrays come to life one after the other; the caller says which of them hold at its
 * stage. Everything is derived anew from the pin lists, in O(pins), but for the test that a
 * vertex's hyperedges list it, which looks through them. Gains of vertices with a hyperedge of one
 * pin are not compared: how such a hyperedge counts depends on how the vertex came to its side.
 */
#include <cstring>
#include <vector>

#include "core/hgraph.h"
#include "core/holds.h"

/* Whether every pin is a vertex and no hyperedge lists one twice; last is workspace, all -1. */
static bool pins_ok(const HGraph *graph, int *last)
{
    for (int e = 0; e < graph->nnets; e++) {
        HOLDS(H1, graph->netptr[e] <= graph->netptr[e + 1]);
        for (int j = graph->netptr[e]; j < graph->netptr[e + 1]; j++) {
            const int v = graph->netind[j];
            HOLDS(H1, 0 <= v && v < graph->ncells + graph->nislands);
            HOLDS(H1, last[v] != e);
            last[v] = e;
        }
    }
    return true;
}

static bool lists_ok(const HGraph *graph)
{
    HOLDS(H1, graph->ncells >= 0 && graph->nislands >= 0 && graph->nnets >= 0);
    HOLDS(H1, graph->netptr != nullptr && graph->netptr[0] == 0);
    std::vector<int> last(static_cast<size_t>(graph->ncells + graph->nislands), -1);
    return pins_ok(graph, last.data());
}

static bool has_pin(const HGraph *graph, int e, int v)
{
    for (int i = graph->netptr[e]; i < graph->netptr[e + 1]; i++)
        if (graph->netind[i] == v) return true;
    return false;
}

/* The list of v: each of its hyperedges, once; their weights make up adjwgt. seen is workspace, of
 * which no entry is v. */
static bool vertex_ok(const HGraph *graph, int v, int npins, int *seen)
{
    int sum = 0;
    HOLDS(H2, graph->incptr[v + 1] - graph->incptr[v] == npins);
    for (int j = graph->incptr[v]; j < graph->incptr[v + 1]; j++) {
        const int e = graph->incind[j];
        HOLDS(H2, 0 <= e && e < graph->nnets);
        HOLDS(H2, seen[e] != v && has_pin(graph, e, v));
        seen[e] = v;
        sum += graph->netwgt[e];
    }
    HOLDS(H3, sum == graph->adjwgt[v]);
    return true;
}

static bool edge_weights_ok(const HGraph *graph)
{
    for (int e = 0; e < graph->nnets; e++) {
        const float wanted = edge_weight(graph->netwgt[e], net_size(graph, e));
        HOLDS(H4, memcmp(&wanted, &graph->edgewgt[e], sizeof wanted) == 0);
    }
    return true;
}

static bool incidence_ok(const HGraph *graph)
{
    const int ncells = graph->ncells, nnets = graph->nnets;
    HOLDS(H2, graph->incptr[0] == 0 && graph->incptr[ncells] == graph->netptr[nnets]);
    std::vector<int> seen(static_cast<size_t>(nnets), -1);
    std::vector<int> npins(static_cast<size_t>(ncells + graph->nislands));
    for (int j = 0; j < graph->netptr[nnets]; j++) npins[static_cast<size_t>(graph->netind[j])]++;
    for (int v = 0; v < ncells; v++)
        if (!vertex_ok(graph, v, npins[static_cast<size_t>(v)], seen.data())) return false;
    return edge_weights_ok(graph);
}

static bool sides_ok(const HGraph *graph)
{
    for (int v = 0; v < graph->ncells; v++) HOLDS(H5, graph->where[v] == 0 || graph->where[v] == 1);
    return true;
}

/* Whether the gain of v is that of the pin counts; not known with a hyperedge of one pin. */
static bool gain_agrees(const HGraph *graph, int v)
{
    const int side = graph->where[v];
    int gain = 0;
    for (int j = graph->incptr[v]; j < graph->incptr[v + 1]; j++) {
        const int e = graph->incind[j];
        if (net_size(graph, e) < 2) return true;
        if (graph->ndeg[1 - side][e] == 0)
            gain -= graph->netwgt[e];
        else if (graph->ndeg[side][e] == 1)
            gain += graph->netwgt[e];
    }
    return gain == graph->gain[v];
}

static bool gains_ok(const HGraph *graph)
{
    int cut = 0, pwgts[2] = {0, 0};
    bool single = false;
    for (int e = 0; e < graph->nnets; e++) {
        int ndeg[2] = {0, 0};
        for (int j = graph->netptr[e]; j < graph->netptr[e + 1]; j++)
            ndeg[graph->where[graph->netind[j]]]++;
        HOLDS(H6, ndeg[0] == graph->ndeg[0][e] && ndeg[1] == graph->ndeg[1][e]);
        if (ndeg[0] > 0 && ndeg[1] > 0) cut += graph->netwgt[e];
        single = single || net_size(graph, e) == 1;
    }
    for (int v = 0; v < graph->ncells; v++) {
        pwgts[graph->where[v]] += graph->cellwgt[v];
        HOLDS(H6, gain_agrees(graph, v));
    }
    HOLDS(H6, single || cut == graph->mincut);
    HOLDS(H6, pwgts[0] == graph->pwgts[0] && pwgts[1] == graph->pwgts[1]);
    return true;
}

bool hgraph_ok(const HGraph *graph, int stages)
{
    if ((stages & HG_LISTS) && !lists_ok(graph)) return false;
    if ((stages & HG_INCIDENCE) && !incidence_ok(graph)) return false;
    if ((stages & HG_WHERE) && !sides_ok(graph)) return false;
    return !(stages & HG_GAINS) || gains_ok(graph);
}
