// SPDX-License-Identifier: MIT
/* kway/stale_records.cpp: vertices' records that wait to be recomputed until they are read.
 *
 * A move makes records stale in two ways. Where gains change, the record is marked and listed.
 * Where only ties change, records that are current stay so, as an update at once would leave them
 * too; but a stale record has to be brought up to this point first, so that its ties are counted
 * as they were (S6). refresh_pins does that, for as few records as it can.
 */
#include "kway/stale_records.h"

#include <algorithm>
#include <cassert>
#include <cstring>

#include "core/memory.h"
#include "kway/kway_gains.h"
#include "kway/part_lists.h"

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
        assert(stale->n <= v);
        stale->n += listed;
    }
}

static void make_stale(StaleRecords *stale, int v)
{
    assert((stale->state[v] & LISTED) || stale->state[v] == 0);
    if (stale->state[v] == 0) stale->list[stale->n++] = v;
    stale->state[v] = STALE | LISTED;
}

void compute_outline(HGraph *graph, StaleRecords *stale, int v)
{
    const int home = graph->where[v];
    int id = 0, ed = 0;
    assert((stale->state[v] & (STALE | OUTLINED)) == STALE);
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
    assert(stale->state[v] & LISTED);
    stale->state[v] = LISTED;
    if (graph->crinfo[v].degrees == nullptr)
        graph->crinfo[v].degrees = take_list(&stale->cells, stale->nparts);
    compute_record(graph, v);
}

/* Refreshes the listed vertices but those stamped with v. */
static void refresh_listed(HGraph *graph, StaleRecords *stale, const int *marker, int v)
{
    assert(stale->n <= graph->ncells);
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
    assert(move.i != move.k && move.k <= net->ndegrees);
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
        assert(q < net->ndegrees);
        if (crosses(move, net->degrees[q].num)) refresh_record(graph, stale, u);
    }
}

/* Makes the list of an uncut hyperedge, all of whose pins are in part. */
static void list_uncut(HGraph *graph, StaleRecords *stale, int e, int part)
{
    const int size = net_size(graph, e);
    assert(graph->nrinfo[e].ndegrees == 1);
    NetKwayInfo *const net = &graph->nrinfo[e];
    net->degrees = take_list(&stale->nets, std::min(size, stale->nparts));
    net->degrees[0] = {part, size, 0, 0};
}

void note_kway_move(HGraph *graph, int v, int from, int to, int *marker, StaleRecords *stale)
{
    assert(from != to && graph->where[v] == to && marker[v] != v);
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
