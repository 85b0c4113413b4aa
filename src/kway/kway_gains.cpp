// SPDX-License-Identifier: MIT
/* kway/kway_gains.cpp: part lists of hyperedges and vertices for k-way refinement.
 *
 * Each hyperedge lists the parts it touches with its pins in each; each vertex lists the other
 * parts it is connected to with what a move there would gain. A hyperedge's list is short and
 * searched linearly; the order of a vertex's decides ties between moves.
 * Source: Sanchis, Multiple-way network partitioning, IEEE Trans. Computers 38(1), 1989, for
 *         gains per target part.
 */
#include "kway/kway_gains.h"

#include <algorithm>
#include <cassert>

#include "core/heavy_assert.h"
#include "core/memory.h"
#include "core/vectors.h"
#include "core/work_counts.h"
#include "kway/part_lists.h"

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
    graph->nrdata = alloc_pool<KwayPartDeg>(npins, "AllocateKwayRefinementMemory: nrdata");
    graph->crdata =
        alloc_pool<KwayPartDeg>(ncells * nparts, "AllocateKwayRefinementMemory: crdata");
    graph->kplace = ismalloc__(nparts, -1, "AllocateKwayRefinementMemory: kplace");
    for (size_t e = 0; e < nnets; e++) graph->nrinfo[e] = {0, graph->nrdata + graph->netptr[e]};
    for (size_t v = 0; v < ncells; v++) graph->crinfo[v].degrees = graph->crdata + v * nparts;
}

/* Adds the parts of these pins of a cut hyperedge to its list. Whether a part is new can't be
 * predicted: its entry is written either way. */
static void list_parts(HGraph *graph, NetKwayInfo *net, int begin, int end)
{
    int *const place = graph->kplace;
    KwayPartDeg *const list = net->degrees;
    int n = net->ndegrees;
    assert(n == 1 && begin < end && place[list[0].pid] == -1);
    place[list[0].pid] = 0;
    for (int j = begin; j < end; j++) {
        const int part = graph->where[graph->netind[j]];
        const int i = place[part] < 0 ? n : place[part];
        list[i] = {part, i < n ? list[i].num + 1 : 1, 0, 0};
        place[part] = i;
        n += i == n;
    }
    for (int i = 0; i < n; i++) place[list[i].pid] = -1;
    net->ndegrees = n;
}

/* Builds the list of hyperedge e in pin order. Most are within one part: where lists are taken from
 * what is unused of nrdata, those get none. */
static void count_parts(HGraph *graph, int e, int nparts, KwayPartDeg **unused)
{
    NetKwayInfo *const net = &graph->nrinfo[e];
    const int begin = graph->netptr[e], end = graph->netptr[e + 1];
    const bool uncut = net->ndegrees == UNCUT;
    assert(net->ndegrees == UNCUT || net->ndegrees >= 0);
    HEAVY_ASSERT(!uncut || end_of_part(graph, graph->where, e) == end);
    net->ndegrees = begin < end;
    net->degrees = unused == nullptr ? graph->nrdata + begin : nullptr;
    if (begin == end || (uncut && unused != nullptr)) return;
    const int j = end_of_part(graph, graph->where, e);
    if (j < end && unused != nullptr)
        net->degrees = take_list(unused, std::min(end - begin, nparts));
    if (net->degrees != nullptr)
        net->degrees[0] = {graph->where[graph->netind[begin]], j - begin, 0, 0};
    if (j < end) list_parts(graph, net, j, end);
}

/* A vertex's record under construction. place is where in the list a part stands, -1 if it does
 * not. */
struct NewRecord {
    KwayPartDeg *list;
    int *place; // [nparts]
    int n;      // entries of the list
};

/* Adds what a cut hyperedge of weight w, with own pins in the vertex's part, says of another part
 * that it touches. uncut is w if a move there would uncut it, else 0. */
static void add_part(NewRecord *record, const KwayPartDeg *other, int own, int w, int uncut)
{
    int *const place = &record->place[other->pid];
    assert(own > 0 && other->num > 0 && *place < record->n);
    if (*place < 0) {
        *place = record->n++;
        record->list[*place] = {other->pid, 0, 0, 0};
    }
    KwayPartDeg *const entry = &record->list[*place];
    entry->soed += w; // for now the weight that touches the part
    entry->ties += (own < other->num) - (own > other->num);
    entry->num += uncut;
}

void compute_record(HGraph *graph, int v)
{
    CellKwayInfo *const cell = &graph->crinfo[v];
    NewRecord record = {cell->degrees, graph->kplace, 0};
    const int home = graph->where[v], end = graph->incptr[v + 1];
    assert(record.list != nullptr || graph->incptr[v] == end);
    int id = 0, ed = 0;
    count_work(WORK_KWAY_RECORDS, 1);
    for (int j = graph->incptr[v]; j < end; j++) {
        const int e = graph->incind[j], w = graph->netwgt[e];
        const int lambda = graph->nrinfo[e].ndegrees;
        const KwayPartDeg *const list = graph->nrinfo[e].degrees;
        if (lambda == 1) {
            id += w;
        } else if (lambda == 2) {
            const int i = list[0].pid == home ? 0 : 1, own = list[i].num;
            assert(list[i].pid == home);
            const int alone = own == 1 ? w : 0;
            ed += alone;
            add_part(&record, &list[1 - i], own, w, alone);
        } else {
            const int i = find_part(list, lambda, home), own = list[i].num;
            assert(i < lambda);
            ed += own == 1 ? w : 0;
            for (int q = 0; q < lambda; q++)
                if (q != i) add_part(&record, &list[q], own, w, 0);
        }
    }
    for (int i = 0; i < record.n; i++) {
        KwayPartDeg *const entry = &record.list[i];
        entry->soed = ed - (graph->adjwgt[v] - entry->soed);
        record.place[entry->pid] = -1;
    }
    cell->ndegrees = record.n;
    cell->id = id;
    cell->ed = ed;
}

/* Takes what cut hyperedge e says of them into id and ed of its pins. */
static void outline_pins(HGraph *graph, int e)
{
    const NetKwayInfo *const net = &graph->nrinfo[e];
    const int w = graph->netwgt[e];
    for (int j = graph->netptr[e]; j < graph->netptr[e + 1]; j++) {
        const int u = graph->netind[j];
        const int i = place_in(net->degrees, net->ndegrees, graph->where[u]);
        assert(net->degrees[i].pid == graph->where[u] && net->degrees[i].num > 0);
        CellKwayInfo *const cell = &graph->crinfo[u];
        cell->id -= w;
        cell->ed += net->degrees[i].num == 1 ? w : 0;
        cell->ndegrees = NOT_COUNTED;
    }
}

void outline_all(const PartCtrl *ctrl, HGraph *graph, KwayPartDeg **unused)
{
    iset__(ctrl->nparts, 0, graph->kpwgts);
    for (int v = 0; v < graph->ncells; v++) {
        CellKwayInfo *const cell = &graph->crinfo[v];
        const size_t place = static_cast<size_t>(v) * static_cast<size_t>(ctrl->nparts);
        assert(0 <= graph->where[v] && graph->where[v] < ctrl->nparts);
        graph->kpwgts[graph->where[v]] += graph->cellwgt[v];
        cell->degrees = unused == nullptr ? graph->crdata + place : nullptr;
        cell->ndegrees = cell->ed = 0;
        cell->id = graph->adjwgt[v];
    }
    graph->mincut = 0;
    unsigned soed = 0; // wraps if it must
    for (int e = 0; e < graph->nnets; e++) {
        count_parts(graph, e, ctrl->nparts, unused);
        const int lambda = graph->nrinfo[e].ndegrees;
        if (lambda < 2) continue;
        graph->mincut += graph->netwgt[e];
        soed += static_cast<unsigned>(lambda) * static_cast<unsigned>(graph->netwgt[e]);
        outline_pins(graph, e);
    }
    graph->minsoed = static_cast<int>(soed);
}

void ComputeInitKwayGains__(const PartCtrl *ctrl, HGraph *graph)
{
    outline_all(ctrl, graph, nullptr);
    for (int v = 0; v < graph->ncells; v++)
        if (graph->crinfo[v].ndegrees == NOT_COUNTED) compute_record(graph, v);
}
