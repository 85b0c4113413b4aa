// SPDX-License-Identifier: MIT
/* kway/kway_ok.cpp: the invariants of k-way records, tested by computing everything aside.
 *
 * A second set of records is made for the same level and partition and compared with the first, as
 * sets of parts: their order is one of appearance. Records that wait for an update are compared
 * with what the update would make of them.
 */
#include <vector>

#include "core/holds.h"
#include "core/memory.h"
#include "core/vectors.h"
#include "kway/kway_gains.h"
#include "kway/part_lists.h"
#include "kway/stale_records.h"

/* The same level with records of its own, computed afresh from where. */
static HGraph fresh_records(const PartCtrl *ctrl, const HGraph *graph)
{
    HGraph fresh = *graph; // shares lists and weights
    AllocateKwayRefinementMemory__(ctrl, &fresh);
    icopy__(graph->ncells, graph->where, fresh.where);
    ComputeInitKwayGains__(ctrl, &fresh);
    return fresh;
}

static void drop_records(HGraph *fresh)
{
    QXfree__(&fresh->where, &fresh->kpwgts, &fresh->nrinfo, &fresh->crinfo, &fresh->nrdata,
             &fresh->crdata, &fresh->kplace, LTERM);
}

enum class ListOf { vertex, net }; // only a vertex has a soed beside each part

static bool same_list(const KwayPartDeg *a, const KwayPartDeg *b, int n, ListOf owner)
{
    for (int i = 0; i < n; i++) {
        const int k = find_part(b, n, a[i].pid);
        if (k == n || a[i].num != b[k].num || (owner == ListOf::vertex && a[i].soed != b[k].soed))
            return false;
    }
    return true;
}

static bool same_outline(const CellKwayInfo *a, const CellKwayInfo *b)
{
    return a->id == b->id && a->ed == b->ed;
}

static bool same_record(const CellKwayInfo *a, const CellKwayInfo *b)
{
    return a->ndegrees == b->ndegrees &&
           same_list(a->degrees, b->degrees, a->ndegrees, ListOf::vertex);
}

/* A move of the only vertex of a hyperedge counts as cutting it, so the kept cut drifts. */
static bool has_single(const HGraph *graph)
{
    for (int e = 0; e < graph->nnets; e++)
        if (net_size(graph, e) == 1) return true;
    return false;
}

/* K1 to K3 and K6. */
static bool parts_ok(const PartCtrl *ctrl, const HGraph *graph, const HGraph *fresh)
{
    for (int p = 0; p < ctrl->nparts; p++) {
        HOLDS(K1, graph->kpwgts[p] == fresh->kpwgts[p]);
        HOLDS(K6, graph->kplace[p] == -1);
    }
    const bool drifts = has_single(graph);
    HOLDS(K2, drifts || (fresh->mincut == graph->mincut && fresh->minsoed == graph->minsoed));
    for (int e = 0; e < graph->nnets; e++) {
        const NetKwayInfo *const a = &graph->nrinfo[e], *const b = &fresh->nrinfo[e];
        HOLDS(K3, a->ndegrees == b->ndegrees && (a->degrees != nullptr || a->ndegrees <= 1));
        HOLDS(K3,
              a->degrees == nullptr || same_list(a->degrees, b->degrees, a->ndegrees, ListOf::net));
    }
    return true;
}

static bool cells_ok(const HGraph *graph, const HGraph *fresh)
{
    for (int v = 0; v < graph->ncells; v++) {
        HOLDS(K4, same_outline(&graph->crinfo[v], &fresh->crinfo[v]));
        HOLDS(K5, same_record(&graph->crinfo[v], &fresh->crinfo[v]));
    }
    return true;
}

bool kway_ok(const PartCtrl *ctrl, const HGraph *graph)
{
    HGraph fresh = fresh_records(ctrl, graph);
    const bool ok = parts_ok(ctrl, graph, &fresh) && cells_ok(graph, &fresh);
    drop_records(&fresh);
    return ok;
}

static bool states_ok(const HGraph *graph, const StaleRecords *stale)
{
    int nlisted = 0;
    for (int v = 0; v < graph->ncells; v++) {
        const int state = stale->state[v];
        HOLDS(S1, state == 0 || state == LISTED || state == (STALE | LISTED) ||
                      state == (STALE | LISTED | OUTLINED));
        nlisted += state != 0;
    }
    HOLDS(S2, stale->n == nlisted);
    std::vector<bool> seen(static_cast<size_t>(graph->ncells));
    for (int i = 0; i < stale->n; i++) {
        const size_t v = static_cast<size_t>(stale->list[i]);
        HOLDS(S2, stale->state[v] != 0 && !seen[v]);
        seen[v] = true;
    }
    return true;
}

static bool waiting_ok(const HGraph *graph, const HGraph *fresh, const StaleRecords *stale)
{
    for (int v = 0; v < graph->ncells; v++) {
        const CellKwayInfo *const a = &graph->crinfo[v], *const b = &fresh->crinfo[v];
        const bool current = (stale->state[v] & STALE) == 0;
        HOLDS(S3, !current || (same_outline(a, b) && same_record(a, b)));
        HOLDS(S4, (stale->state[v] & OUTLINED) == 0 || same_outline(a, b));
    }
    return true;
}

static bool pools_ok(const PartCtrl *ctrl, const HGraph *graph, const StaleRecords *stale)
{
    HOLDS(S5, stale->cells - graph->crdata >= 0 &&
                  stale->cells - graph->crdata <= ptrdiff_t{graph->ncells} * ctrl->nparts);
    HOLDS(S5, stale->nets - graph->nrdata >= 0 &&
                  stale->nets - graph->nrdata <= graph->netptr[graph->nnets]);
    return true;
}

bool stale_ok(const PartCtrl *ctrl, const HGraph *graph, const StaleRecords *stale)
{
    HGraph fresh = fresh_records(ctrl, graph);
    const bool ok = states_ok(graph, stale) && parts_ok(ctrl, graph, &fresh) &&
                    waiting_ok(graph, &fresh, stale) && pools_ok(ctrl, graph, stale);
    drop_records(&fresh);
    return ok;
}

static bool same_entry(const KwayPartDeg *a, const KwayPartDeg *b)
{
    return a->pid == b->pid && a->num == b->num && a->ties == b->ties && a->soed == b->soed;
}

bool late_ok(const HGraph *graph, const HGraph *atonce)
{
    for (int v = 0; v < graph->ncells; v++) {
        const CellKwayInfo *const a = &graph->crinfo[v], *const b = &atonce->crinfo[v];
        HOLDS(S6, same_outline(a, b) && a->ndegrees == b->ndegrees);
        for (int i = 0; i < a->ndegrees; i++) HOLDS(S6, same_entry(&a->degrees[i], &b->degrees[i]));
    }
    return true;
}
