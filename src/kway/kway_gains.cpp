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
#include <cstdlib>
#include <cstring>

#include "core/heavy_assert.h"
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
    graph->nrdata = alloc_pool<KwayPartDeg>(npins, "AllocateKwayRefinementMemory: nrdata");
    graph->crdata =
        alloc_pool<KwayPartDeg>(ncells * nparts, "AllocateKwayRefinementMemory: crdata");
    graph->kplace = ismalloc__(nparts, -1, "AllocateKwayRefinementMemory: kplace");
    for (size_t e = 0; e < nnets; e++) graph->nrinfo[e] = {0, graph->nrdata + graph->netptr[e]};
    for (size_t v = 0; v < ncells; v++) graph->crinfo[v].degrees = graph->crdata + v * nparts;
}

/* Place of part in a list of n entries, n when it is not there. */
static int find_part(const KwayPartDeg *list, int n, int part)
{
    int i = 0;
    while (i < n && list[i].pid != part) i++;
    return i;
}

/* The same for a part that is there. Most lists have two parts, and which is met is a toss-up. */
static int place_in(const KwayPartDeg *list, int n, int part)
{
    return n == 2 ? list[0].pid != part : find_part(list, n, part);
}

static KwayPartDeg *take_list(KwayPartDeg **unused, int size)
{
    KwayPartDeg *const list = *unused;
    *unused += size;
    return list;
}

/* Adds the parts of these pins of a cut hyperedge to its list. Whether a part is new can't be
 * foreseen: its entry is written either way. */
static void list_parts(HGraph *graph, NetKwayInfo *net, int begin, int end)
{
    int *const place = graph->kplace;
    KwayPartDeg *const list = net->degrees;
    int n = net->ndegrees;
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

/* A vertex's record under construction. place tells where in the list a part stands, -1 if it does
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
    if (*place < 0) {
        *place = record->n++;
        record->list[*place] = {other->pid, 0, 0, 0};
    }
    KwayPartDeg *const entry = &record->list[*place];
    entry->soed += w; // for now the weight that touches the part
    entry->ties += (own < other->num) - (own > other->num);
    entry->num += uncut;
}

static void compute_record(HGraph *graph, int v)
{
    CellKwayInfo *const cell = &graph->crinfo[v];
    NewRecord record = {cell->degrees, graph->kplace, 0};
    const int home = graph->where[v], end = graph->incptr[v + 1];
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
            const int alone = own == 1 ? w : 0;
            ed += alone;
            add_part(&record, &list[1 - i], own, w, alone);
        } else {
            const int i = find_part(list, lambda, home), own = list[i].num;
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

constexpr int NOT_COUNTED = -1; // ndegrees of a vertex that has cut hyperedges, but no list yet

/* Takes what cut hyperedge e says of them into id and ed of its pins. */
static void outline_pins(HGraph *graph, int e)
{
    const NetKwayInfo *const net = &graph->nrinfo[e];
    const int w = graph->netwgt[e];
    for (int j = graph->netptr[e]; j < graph->netptr[e + 1]; j++) {
        const int u = graph->netind[j];
        const int i = place_in(net->degrees, net->ndegrees, graph->where[u]);
        CellKwayInfo *const cell = &graph->crinfo[u];
        cell->id -= w;
        cell->ed += net->degrees[i].num == 1 ? w : 0;
        cell->ndegrees = NOT_COUNTED;
    }
}

/* Computes kpwgts, mincut, minsoed, the hyperedges' records, and id and ed of all vertices. Lists
 * are at their own places; with unused, those of cut hyperedges are taken from it, and nobody else
 * has one. */
static void outline_all(const PartCtrl *ctrl, HGraph *graph, KwayPartDeg **unused)
{
    iset__(ctrl->nparts, 0, graph->kpwgts);
    for (int v = 0; v < graph->ncells; v++) {
        CellKwayInfo *const cell = &graph->crinfo[v];
        const size_t place = static_cast<size_t>(v) * static_cast<size_t>(ctrl->nparts);
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

void ComputeKwayGainsSet__(HGraph *graph, int n, const int *list)
{
    for (int i = 0; i < n; i++) compute_record(graph, list[i]);
}

/* A pin of a hyperedge on its way from one part to another. */
struct PinMove {
    int i, k; // places of the parts in the list; k is ndegrees if the part entered is not there
    int nfrom, nto; // their pins after the move
};

static PinMove find_move(const NetKwayInfo *net, int from, int to)
{
    const KwayPartDeg *const list = net->degrees;
    const int i = find_part(list, net->ndegrees, from), k = find_part(list, net->ndegrees, to);
    return {i, k, list[i].num - 1, (k < net->ndegrees ? list[k].num : 0) + 1};
}

static void move_pin(NetKwayInfo *net, PinMove move, int to)
{
    KwayPartDeg *const list = net->degrees;
    const bool listed = move.k < net->ndegrees;
    list[move.i].num = move.nfrom;
    if (move.nfrom == 0) {
        list[move.i] = list[--net->ndegrees];
        if (listed && move.k == net->ndegrees) move.k = move.i;
    }
    if (!listed) list[move.k = net->ndegrees++] = {to, 0, 0, 0};
    list[move.k].num = move.nto;
}

/* Whether the move may change more than ties in the records of the hyperedge's pins. */
static bool gains_change(PinMove move)
{
    return move.nfrom <= 1 || move.nto <= 2;
}

void KwayUpdateGainInfo__(HGraph *graph, int v, int from, int to, int *marker, int *updind)
{
    int nupdates = 0;
    marker[v] = v;
    updind[nupdates++] = v;
    for (int j = graph->incptr[v]; j < graph->incptr[v + 1]; j++) {
        const int e = graph->incind[j];
        const PinMove move = find_move(&graph->nrinfo[e], from, to);
        move_pin(&graph->nrinfo[e], move, to);
        if (!gains_change(move)) continue;
        for (int p = graph->netptr[e]; p < graph->netptr[e + 1]; p++) {
            const int u = graph->netind[p];
            if (marker[u] == v) continue;
            marker[u] = v;
            updind[nupdates++] = u;
        }
    }
    ComputeKwayGainsSet__(graph, nupdates, updind);
}

void open_stale(const HGraph *graph, StaleRecords *stale)
{
    const size_t n = static_cast<size_t>(graph->ncells);
    *stale = {};
    stale->state = alloc_array<uint8_t>(n, "RefineKway_Random: stale");
    stale->list = imalloc__(n, "RefineKway_Random: updind");
    if (n > 0) memset(stale->state, 0, n);
}

void close_stale(StaleRecords *stale)
{
    QXfree__(&stale->state, &stale->list, LTERM);
}

void outline_records(const PartCtrl *ctrl, HGraph *graph, StaleRecords *stale, bool compact)
{
    stale->cells = graph->crdata;
    stale->nets = graph->nrdata;
    stale->nparts = ctrl->nparts;
    outline_all(ctrl, graph, compact ? &stale->nets : nullptr);
    for (int v = 0; v < graph->ncells; v++) {
        const int listed = graph->crinfo[v].ndegrees == NOT_COUNTED; // no branch on it
        stale->state[v] = static_cast<uint8_t>(-listed & (STALE | LISTED | OUTLINED));
        stale->list[stale->n] = v;
        stale->n += listed;
    }
}

static void make_stale(StaleRecords *stale, int v)
{
    if (stale->state[v] == 0) stale->list[stale->n++] = v;
    stale->state[v] = STALE | LISTED;
}

void compute_outline(HGraph *graph, StaleRecords *stale, int v)
{
    const int home = graph->where[v];
    int id = 0, ed = 0;
    for (int j = graph->incptr[v]; j < graph->incptr[v + 1]; j++) {
        const int e = graph->incind[j], w = graph->netwgt[e];
        const NetKwayInfo *const net = &graph->nrinfo[e];
        if (net->ndegrees == 1)
            id += w;
        else if (net->degrees[place_in(net->degrees, net->ndegrees, home)].num == 1)
            ed += w;
    }
    graph->crinfo[v].id = id;
    graph->crinfo[v].ed = ed;
    stale->state[v] |= OUTLINED;
}

void refresh_record(HGraph *graph, StaleRecords *stale, int v)
{
    if ((stale->state[v] & STALE) == 0) return;
    stale->state[v] = LISTED;
    if (graph->crinfo[v].degrees == nullptr)
        graph->crinfo[v].degrees = take_list(&stale->cells, stale->nparts);
    compute_record(graph, v);
}

/* Refreshes the listed vertices but those stamped with v. */
static void refresh_listed(HGraph *graph, StaleRecords *stale, const int *marker, int v)
{
    int kept = 0;
    for (int i = 0; i < stale->n; i++) {
        const int u = stale->list[i];
        if (marker[u] == v && (stale->state[u] & STALE)) {
            stale->list[kept++] = u;
            continue;
        }
        refresh_record(graph, stale, u);
        stale->state[u] = 0;
    }
    stale->n = kept;
    stale->looked = 0;
}

void refresh_all(HGraph *graph, StaleRecords *stale)
{
    for (int i = 0; i < stale->n; i++) {
        refresh_record(graph, stale, stale->list[i]);
        stale->state[stale->list[i]] = 0;
    }
    stale->n = 0;
}

/* Whether a part with num pins changes sides in a comparison with the part left or entered; those
 * two themselves always may. */
static bool crosses(PinMove move, int num)
{
    return num == move.nfrom || num == move.nfrom + 1 || num == move.nto || num == move.nto - 1;
}

/* Whether the move, before it is made, is about to change some comparison of two parts' pins. */
static bool ties_change(const NetKwayInfo *net, PinMove move)
{
    const int lead = move.nfrom - move.nto; // it was 2 more
    bool change = -2 <= lead && lead <= 0;
    for (int q = 0; q < net->ndegrees; q++)
        change |= q != move.i && q != move.k && crosses(move, net->degrees[q].num);
    return change;
}

constexpr int MOST_LOOKS = 512; // at pins, for each listed vertex: about the cost of a record

/* Refreshes the stale pins of e that v's move has not stamped and whose ties it may change; all
 * that are stale, if that is less to look through, or if so many pins were looked at in vain that
 * large hyperedges would make the moves quadratic. */
static void refresh_pins(HGraph *graph, StaleRecords *stale, int e, PinMove move, const int *marker,
                         int v)
{
    const NetKwayInfo *const net = &graph->nrinfo[e];
    stale->looked += net_size(graph, e);
    if (net_size(graph, e) > stale->n || stale->looked > int64_t{MOST_LOOKS} * stale->n) {
        refresh_listed(graph, stale, marker, v);
        return;
    }
    for (int p = graph->netptr[e]; p < graph->netptr[e + 1]; p++) {
        const int u = graph->netind[p];
        if (marker[u] == v || (stale->state[u] & STALE) == 0) continue;
        const int q = find_part(net->degrees, net->ndegrees, graph->where[u]);
        if (crosses(move, net->degrees[q].num)) refresh_record(graph, stale, u);
    }
}

/* Makes the list of an uncut hyperedge, all of whose pins are in part. */
static void list_uncut(HGraph *graph, StaleRecords *stale, int e, int part)
{
    const int size = net_size(graph, e);
    NetKwayInfo *const net = &graph->nrinfo[e];
    net->degrees = take_list(&stale->nets, std::min(size, stale->nparts));
    net->degrees[0] = {part, size, 0, 0};
}

void note_kway_move(HGraph *graph, int v, int from, int to, int *marker, StaleRecords *stale)
{
    marker[v] = v;
    make_stale(stale, v);
    for (int j = graph->incptr[v]; j < graph->incptr[v + 1]; j++) {
        const int e = graph->incind[j];
        NetKwayInfo *const net = &graph->nrinfo[e];
        if (net->degrees == nullptr) list_uncut(graph, stale, e, from);
        const PinMove move = find_move(net, from, to);
        if (!gains_change(move) && ties_change(net, move))
            refresh_pins(graph, stale, e, move, marker, v);
        move_pin(net, move, to);
        if (!gains_change(move)) continue;
        for (int p = graph->netptr[e]; p < graph->netptr[e + 1]; p++) {
            const int u = graph->netind[p];
            if (marker[u] == v) continue;
            marker[u] = v;
            make_stale(stale, u);
        }
    }
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
        ok = a->ndegrees == b->ndegrees &&
             (a->degrees == nullptr || same_list(a->degrees, b->degrees, a->ndegrees, false));
    }
    for (int v = 0; v < graph->ncells && ok; v++) {
        const CellKwayInfo *const a = &graph->crinfo[v], *const b = &fresh.crinfo[v];
        ok = a->ndegrees == b->ndegrees && a->id == b->id && a->ed == b->ed &&
             same_list(a->degrees, b->degrees, a->ndegrees, true);
    }
    QXfree__(&fresh.where, &fresh.kpwgts, &fresh.nrinfo, &fresh.crinfo, &fresh.nrdata,
             &fresh.crdata, &fresh.kplace, LTERM);
    return ok;
}
