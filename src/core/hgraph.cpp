/* core/hgraph.cpp: the hypergraph record: creation, release, incidence, derived weights.
 *
 * Incidence comes from the pin lists by counting transposition (count, prefix sum, place), so each
 * vertex lists its hyperedges in increasing order without a sort, in O(pins).
 * Source: Gustavson, Two fast algorithms for sparse matrices, ACM TOMS 4(3), 1978.
 */
#include "core/hgraph.h"

#include <cstdlib>
#include <cstring>

#include "core/memory.h"
#include "core/vectors.h"
#include "partition/ctrl.h"

void InitHGraph__(HGraph *graph)
{
    memset(graph, 0, sizeof *graph);
    graph->ncells = graph->nnets = graph->nfixed = graph->level = -1;
    graph->pwgts[0] = graph->pwgts[1] = -1;
}

HGraph *CreateHGraph__()
{
    HGraph *const graph = alloc_array<HGraph>(1, "CreateCoarseHGraph: graph");
    InitHGraph__(graph);
    return graph;
}

void FreeHGraph__(HGraph *graph)
{
    FreeRootHGraph__(graph);
    if (!graph->borrows)
        QXfree__(&graph->incptr, &graph->incind, &graph->netptr, &graph->netind, &graph->cellwgt,
                 &graph->netwgt, &graph->adjwgt, &graph->edgewgt, LTERM);
    QXfree__(&graph->nearby, LTERM);
    free(graph);
}

void free_cycle_arrays(HGraph *graph)
{
    QXfree__(&graph->cellmap, &graph->netmap, &graph->mptr, &graph->mind, &graph->gain,
             &graph->ndeg[0], &graph->ndeg[1], &graph->islandmap, LTERM);
}

void free_kway_arrays(HGraph *graph)
{
    QXfree__(&graph->nrinfo, &graph->crinfo, &graph->nrdata, &graph->crdata, &graph->kpwgts,
             &graph->kplace, &graph->islandmap, LTERM);
}

void FreeRootHGraph__(HGraph *graph)
{
    free_cycle_arrays(graph);
    free_kway_arrays(graph);
    QXfree__(&graph->where, LTERM);
}

static void transpose_pins(HGraph *graph)
{
    const int ncells = graph->ncells, nnets = graph->nnets;
    const int *const netptr = graph->netptr, *const netind = graph->netind;
    const size_t n = static_cast<size_t>(ncells);
    const int npins = netptr[nnets];
    int *const incptr = ismalloc__(n + 1, 0, "CreateIncidentHGraph: incptr");
    int *const incind =
        imalloc__(static_cast<size_t>(npins), "CreateIncidentHGraph: graph->incind");
    for (int j = 0; j < npins; j++) incptr[netind[j]]++;
    counts_to_starts(ncells, incptr);
    for (int e = 0; e < nnets; e++)
        for (int j = netptr[e]; j < netptr[e + 1]; j++) incind[incptr[netind[j]]++] = e;
    ends_to_starts(ncells, incptr);
    graph->incptr = incptr;
    graph->incind = incind;
}

float edge_weight(int netwgt, int size)
{
    return static_cast<float>(static_cast<double>(netwgt) / (size - 1));
}

void CreateIncidentHGraph__(HGraph *graph)
{
    const int ncells = graph->ncells, nnets = graph->nnets;
    transpose_pins(graph);
    graph->adjwgt = imalloc__(static_cast<size_t>(ncells), "CreateIncidentHGraph: adjwgt");
    for (int v = 0; v < ncells; v++) {
        int sum = 0;
        for (int j = graph->incptr[v]; j < graph->incptr[v + 1]; j++)
            sum += graph->netwgt[graph->incind[j]];
        graph->adjwgt[v] = sum;
    }
    graph->edgewgt = fmalloc__(static_cast<size_t>(nnets), "CreateIncidentHGraph: graph->edgewgt");
    for (int e = 0; e < nnets; e++)
        graph->edgewgt[e] = edge_weight(graph->netwgt[e], net_size(graph, e));
}

void mark_cut_nets(const HGraph *graph, const int *where, bool *cutnets)
{
    for (int e = 0; e < graph->nnets; e++)
        cutnets[e] = end_of_part(graph, where, e) < graph->netptr[e + 1];
}

int ComputeMaxCellWgt__(PartCtrl *ctrl, int n, const int *cellwgt)
{
    long long total = sum_wide(n, cellwgt);
    const long long limit = 2 * total / ctrl->CoarsenTo;
    int nheavy = 0;
    for (int v = 0; v < n; v++) {
        if (cellwgt[v] <= limit) continue;
        total -= cellwgt[v];
        nheavy++;
    }
    ctrl->heavycells = nheavy > 0;
    return static_cast<int>(2 * total / (ctrl->CoarsenTo - nheavy));
}

static bool lists_ok(const HGraph *graph)
{
    const int nverts = graph->ncells + graph->nislands;
    if (graph->ncells < 0 || graph->nislands < 0 || graph->nnets < 0) return false;
    if (graph->netptr == nullptr || graph->netptr[0] != 0) return false;
    int *const last = ismalloc__(static_cast<size_t>(nverts), -1, "hgraph_ok: last");
    bool ok = true;
    for (int e = 0; e < graph->nnets && ok; e++) {
        ok = net_size(graph, e) >= 0;
        for (int j = graph->netptr[e]; j < graph->netptr[e + 1] && ok; j++) {
            const int v = graph->netind[j];
            ok = v >= 0 && v < nverts && last[v] != e;
            if (ok) last[v] = e;
        }
    }
    free(last);
    return ok;
}

/* Every (vertex, hyperedge) of the incidence is a pin, listed once; and the numbers agree. */
static bool incidence_ok(const HGraph *graph)
{
    const int ncells = graph->ncells, nnets = graph->nnets;
    if (graph->incptr[0] != 0 || graph->incptr[ncells] != graph->netptr[nnets]) return false;
    int *const seen = ismalloc__(static_cast<size_t>(nnets), -1, "hgraph_ok: seen");
    int *const npins =
        ismalloc__(static_cast<size_t>(ncells + graph->nislands), 0, "hgraph_ok: npins");
    for (int j = 0; j < graph->netptr[nnets]; j++) npins[graph->netind[j]]++;
    bool ok = true;
    for (int v = 0; v < ncells && ok; v++) ok = graph->incptr[v] <= graph->incptr[v + 1];
    for (int v = 0; v < ncells && ok; v++) {
        int sum = 0;
        for (int j = graph->incptr[v]; j < graph->incptr[v + 1] && ok; j++) {
            const int e = graph->incind[j];
            ok = e >= 0 && e < nnets && seen[e] != v;
            if (!ok) break;
            seen[e] = v;
            sum += graph->netwgt[e];
            bool found = false;
            for (int i = graph->netptr[e]; i < graph->netptr[e + 1] && !found; i++)
                found = graph->netind[i] == v;
            ok = found;
        }
        ok = ok && sum == graph->adjwgt[v] && npins[v] == graph->incptr[v + 1] - graph->incptr[v];
    }
    for (int e = 0; e < nnets && ok; e++) {
        const float wanted = edge_weight(graph->netwgt[e], net_size(graph, e));
        ok = memcmp(&wanted, &graph->edgewgt[e], sizeof wanted) == 0;
    }
    free(seen);
    free(npins);
    return ok;
}

static bool sides_ok(const HGraph *graph)
{
    for (int v = 0; v < graph->ncells; v++)
        if (graph->where[v] != 0 && graph->where[v] != 1) return false;
    return true;
}

/* The gain of v, or of its hyperedges of two and more vertices, from the pin lists. */
static bool gain_ok(const HGraph *graph, int v)
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
        if (ndeg[0] != graph->ndeg[0][e] || ndeg[1] != graph->ndeg[1][e]) return false;
        if (ndeg[0] > 0 && ndeg[1] > 0) cut += graph->netwgt[e];
        single = single || net_size(graph, e) == 1;
    }
    for (int v = 0; v < graph->ncells; v++) {
        pwgts[graph->where[v]] += graph->cellwgt[v];
        if (!gain_ok(graph, v)) return false;
    }
    return (single || cut == graph->mincut) && pwgts[0] == graph->pwgts[0] &&
           pwgts[1] == graph->pwgts[1];
}

bool hgraph_ok(const HGraph *graph, int stages)
{
    if ((stages & HG_LISTS) && !lists_ok(graph)) return false;
    if ((stages & HG_INCIDENCE) && !incidence_ok(graph)) return false;
    if ((stages & HG_WHERE) && !sides_ok(graph)) return false;
    return !(stages & HG_GAINS) || gains_ok(graph);
}
