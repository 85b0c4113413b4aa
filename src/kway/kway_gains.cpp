/* kway/kway_gains.cpp: part lists of hyperedges and vertices for k-way refinement.
 *
 * Each hyperedge lists the parts it touches with its pins in each; each vertex lists the other
 * parts it is connected to with what a move there would gain. Lists are short and searched
 * linearly; their order decides ties between moves.
 * Source: Sanchis, Multiple-way network partitioning, IEEE Trans. Computers 38(1), 1989, for
 *         gains per target part.
 */
#include "kway/kway_gains.h"

#include <cstdlib>
#include <cstring>

#include "core/memory.h"
#include "core/vectors.h"
#include "core/work_counts.h"

void AllocateKwayRefinementMemory__(const PartCtrl *ctrl, HGraph *graph)
{
    const size_t ncells = static_cast<size_t>(graph->ncells);
    const size_t nnets = static_cast<size_t>(graph->nnets);
    const size_t nislands = static_cast<size_t>(graph->nislands);
    const size_t nparts = static_cast<size_t>(ctrl->nparts);
    const size_t npins = static_cast<size_t>(graph->netptr[graph->nnets]);
    graph->where = imalloc__(ncells + nislands, "AllocateRefinementMemory: where");
    graph->kpwgts = imalloc__(nparts, "AllocateKwayRefinementMemory: kpwgts");
    graph->nrinfo = alloc_array<NetKwayInfo>(nnets, "AllocateKwayRefinementMemory: nrinfo");
    graph->crinfo = alloc_array<CellKwayInfo>(ncells, "AllocateKwayRefinementMemory: crinfo");
    graph->nrdata = alloc_array<KwayPartDeg>(npins, "AllocateKwayRefinementMemory: nrdata");
    graph->crdata =
        alloc_array<KwayPartDeg>(ncells * nparts, "AllocateKwayRefinementMemory: crdata");
    for (size_t e = 0; e < nnets; e++) graph->nrinfo[e].degrees = graph->nrdata + graph->netptr[e];
    for (size_t v = 0; v < ncells; v++) graph->crinfo[v].degrees = graph->crdata + v * nparts;
}

/* Place of part in a list of n entries, n when it is not there. */
static int find_part(const KwayPartDeg *list, int n, int part)
{
    int i = 0;
    while (i < n && list[i].pid != part) i++;
    return i;
}

/* Builds the list of hyperedge e in pin order. */
static void count_parts(HGraph *graph, int e)
{
    NetKwayInfo *const net = &graph->nrinfo[e];
    net->ndegrees = 0;
    for (int j = graph->netptr[e]; j < graph->netptr[e + 1]; j++) {
        const int part = graph->where[graph->netind[j]];
        const int i = find_part(net->degrees, net->ndegrees, part);
        if (i < net->ndegrees)
            net->degrees[i].num++;
        else
            net->degrees[net->ndegrees++] = {part, 1, 0, 0};
    }
}

/* Adds cut hyperedge e, weight w, with own of its pins in v's part, to v's record. */
static void add_net(CellKwayInfo *cell, const NetKwayInfo *net, int home, int w)
{
    const int own = net->degrees[find_part(net->degrees, net->ndegrees, home)].num;
    if (own == 1) cell->ed += w;
    for (int i = 0; i < net->ndegrees; i++) {
        const KwayPartDeg other = net->degrees[i];
        if (other.pid == home) continue;
        const int k = find_part(cell->degrees, cell->ndegrees, other.pid);
        if (k == cell->ndegrees) cell->degrees[cell->ndegrees++] = {other.pid, 0, 0, 0};
        KwayPartDeg *const entry = &cell->degrees[k];
        entry->soed += w; // for now the weight that touches the part
        entry->ties += own < other.num ? 1 : own > other.num ? -1 : 0;
        if (own == 1 && net->ndegrees == 2) entry->num += w;
    }
}

static void compute_record(HGraph *graph, int v)
{
    CellKwayInfo *const cell = &graph->crinfo[v];
    const int home = graph->where[v];
    count_work(WORK_KWAY_RECORDS, 1);
    cell->ndegrees = cell->id = cell->ed = 0;
    for (int j = graph->incptr[v]; j < graph->incptr[v + 1]; j++) {
        const int e = graph->incind[j];
        if (graph->nrinfo[e].ndegrees == 1)
            cell->id += graph->netwgt[e];
        else
            add_net(cell, &graph->nrinfo[e], home, graph->netwgt[e]);
    }
    for (int i = 0; i < cell->ndegrees; i++)
        cell->degrees[i].soed = cell->ed - (graph->adjwgt[v] - cell->degrees[i].soed);
}

void ComputeInitKwayGains__(const PartCtrl *ctrl, HGraph *graph)
{
    iset__(ctrl->nparts, 0, graph->kpwgts);
    graph->mincut = 0;
    unsigned soed = 0; // wraps if it must
    for (int e = 0; e < graph->nnets; e++) {
        count_parts(graph, e);
        const int lambda = graph->nrinfo[e].ndegrees;
        if (lambda < 2) continue;
        graph->mincut += graph->netwgt[e];
        soed += static_cast<unsigned>(lambda) * static_cast<unsigned>(graph->netwgt[e]);
    }
    graph->minsoed = static_cast<int>(soed);
    for (int v = 0; v < graph->ncells; v++) {
        graph->kpwgts[graph->where[v]] += graph->cellwgt[v];
        compute_record(graph, v);
    }
}

void ComputeKwayGainsSet__(HGraph *graph, int n, const int *list)
{
    for (int i = 0; i < n; i++) compute_record(graph, list[i]);
}

/* Moves one pin of a hyperedge; writes the new counts of both parts. */
static void move_pin(NetKwayInfo *net, int from, int to, int *nfrom, int *nto)
{
    KwayPartDeg *const list = net->degrees;
    const int i = find_part(list, net->ndegrees, from);
    *nfrom = --list[i].num;
    if (*nfrom == 0) list[i] = list[--net->ndegrees];
    const int k = find_part(list, net->ndegrees, to);
    if (k == net->ndegrees) list[net->ndegrees++] = {to, 0, 0, 0};
    *nto = ++list[k].num;
}

void KwayUpdateGainInfo__(HGraph *graph, int v, int from, int to, int *marker, int *updind)
{
    int nupdates = 0;
    marker[v] = v;
    updind[nupdates++] = v;
    for (int j = graph->incptr[v]; j < graph->incptr[v + 1]; j++) {
        const int e = graph->incind[j];
        int nfrom, nto;
        move_pin(&graph->nrinfo[e], from, to, &nfrom, &nto);
        if (nfrom > 1 && nto > 2) continue;
        for (int i = graph->netptr[e]; i < graph->netptr[e + 1]; i++) {
            const int u = graph->netind[i];
            if (marker[u] == v) continue;
            marker[u] = v;
            updind[nupdates++] = u;
        }
    }
    ComputeKwayGainsSet__(graph, nupdates, updind);
}

static bool same_list(const KwayPartDeg *a, const KwayPartDeg *b, int n, bool vertex)
{
    for (int i = 0; i < n; i++) {
        const int k = find_part(b, n, a[i].pid);
        if (k == n || a[i].num != b[k].num || (vertex && a[i].soed != b[k].soed)) return false;
    }
    return true;
}

/* A move of the only vertex of a hyperedge counts as cutting it, so the kept cut drifts. */
static bool has_single(const HGraph *graph)
{
    for (int e = 0; e < graph->nnets; e++)
        if (net_size(graph, e) == 1) return true;
    return false;
}

bool kway_ok(const PartCtrl *ctrl, const HGraph *graph)
{
    HGraph fresh = *graph; // shares lists and weights
    AllocateKwayRefinementMemory__(ctrl, &fresh);
    icopy__(graph->ncells, graph->where, fresh.where);
    ComputeInitKwayGains__(ctrl, &fresh);
    bool ok =
        (has_single(graph) || (fresh.mincut == graph->mincut && fresh.minsoed == graph->minsoed)) &&
        memcmp(fresh.kpwgts, graph->kpwgts, static_cast<size_t>(ctrl->nparts) * sizeof(int)) == 0;
    for (int e = 0; e < graph->nnets && ok; e++) {
        const NetKwayInfo *const a = &graph->nrinfo[e], *const b = &fresh.nrinfo[e];
        ok = a->ndegrees == b->ndegrees && same_list(a->degrees, b->degrees, a->ndegrees, false);
    }
    for (int v = 0; v < graph->ncells && ok; v++) {
        const CellKwayInfo *const a = &graph->crinfo[v], *const b = &fresh.crinfo[v];
        ok = a->ndegrees == b->ndegrees && a->id == b->id && a->ed == b->ed &&
             same_list(a->degrees, b->degrees, a->ndegrees, true);
    }
    QXfree__(&fresh.where, &fresh.kpwgts, &fresh.nrinfo, &fresh.crinfo, &fresh.nrdata,
             &fresh.crdata, LTERM);
    return ok;
}
