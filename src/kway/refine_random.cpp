// SPDX-License-Identifier: MIT
/* kway/refine_random.cpp: greedy k-way refinement in random order.
 *
 * A vertex moves at most once a sweep, and no move is taken back. The two objectives differ in how
 * entries of a vertex's list rank, from which one on they may be taken, and when one is accepted.
 * True between moves: kpwgts, mincut, minsoed, the hyperedges' records and those of vertices that
 * are not stale describe where.
 */
#include "kway/refine_random.h"

#include <cassert>

#include "core/heavy_assert.h"
#include "core/memory.h"
#include "core/numbers.h"
#include "core/random.h"
#include "core/timers.h"
#include "core/trace.h"
#include "core/vectors.h"
#include "core/work_counts.h"
#include "kway/kway_gains.h"
#include "kway/stale_records.h"

struct KwayWork {
    int *perm;   // [ncells] order of visits
    int *marker; // [ncells] stamps of the update
    StaleRecords stale;
    int minpwgt; // a part that would become lighter gives no vertex
    int maxpwgt; // a part that would become heavier takes none
};

/* Bounds of a part's weight, in single precision. */
static void set_part_bounds(const PartCtrl *ctrl, const HGraph *graph, KwayWork *work)
{
    const float total = static_cast<float>(iasum__(ctrl->nparts, graph->kpwgts));
    const float nparts = static_cast<float>(ctrl->nparts);
    assert(ctrl->nparts > 0);
    work->maxpwgt = trunc_int(part_ratio(ctrl) * total / nparts);
    work->minpwgt = trunc_int(total / (nparts * part_ratio(ctrl)));
}

/* Whether a may be the first candidate of a vertex with this id. */
template <KwayObjective O> static bool eligible(const KwayPartDeg *a, int id)
{
    return O == OBJECTIVE_CUT ? a->num >= id : a->soed >= 0;
}

/* Positive if a ranks above b, 0 on equal keys. */
template <KwayObjective O> static int compare(const KwayPartDeg *a, const KwayPartDeg *b)
{
    const bool cut = O == OBJECTIVE_CUT;
    const int first = cut ? a->num : a->soed, first_b = cut ? b->num : b->soed;
    if (first != first_b) return first > first_b ? 1 : -1;
    const int second = cut ? a->soed : a->num, second_b = cut ? b->soed : b->num;
    if (second != second_b) return second > second_b ? 1 : -1;
    return a->ties > b->ties ? 1 : a->ties < b->ties ? -1 : 0;
}

/* The best part of v's list with room for it, null if none; on a complete tie the lighter part,
 * the later entry if they weigh the same. */
template <KwayObjective O>
static const KwayPartDeg *best_target(const HGraph *graph, const CellKwayInfo *cell, int weight,
                                      int maxpwgt)
{
    const int *const kpwgts = graph->kpwgts;
    const KwayPartDeg *best = nullptr;
    for (int i = 0; i < cell->ndegrees; i++) {
        const KwayPartDeg *const entry = &cell->degrees[i];
        assert(best == nullptr || entry->pid != best->pid);
        if (kpwgts[entry->pid] + weight > maxpwgt) continue;
        if (best == nullptr) {
            if (eligible<O>(entry, cell->id)) best = entry;
            continue;
        }
        const int rank = compare<O>(entry, best);
        if (rank > 0 || (rank == 0 && kpwgts[entry->pid] <= kpwgts[best->pid])) best = entry;
    }
    return best;
}

/* Whether a move that leaves the objective as it is should be made. */
static bool accept_tie(const HGraph *graph, const KwayPartDeg *best, int from, int weight)
{
    if (best->ties != 0) return best->ties > 0;
    assert(best->pid != from);
    return graph->kpwgts[from] - graph->kpwgts[best->pid] > weight;
}

template <KwayObjective O>
static bool accept(const HGraph *graph, const CellKwayInfo *cell, const KwayPartDeg *best, int from,
                   int weight)
{
    if (best->soed > 0) return true;
    if (O == OBJECTIVE_CUT) {
        if (best->num > cell->id) return true;
        if (best->soed < 0) return false;
    } else {
        if (best->num != cell->id) return best->num > cell->id;
    }
    return accept_tie(graph, best, from, weight);
}

static void make_move(const PartCtrl *ctrl, HGraph *graph, KwayWork *work, int v,
                      const KwayPartDeg *best)
{
    const int from = graph->where[v], to = best->pid, weight = graph->cellwgt[v];
    assert(from != to && v >= graph->nfixed && 0 <= to && to < ctrl->nparts);
    const int cutgain = best->num - graph->crinfo[v].id;
    count_work(WORK_KWAY_MOVES, 1);
    // hyperedges of one vertex count as gains and losses time and again: both sums may wrap
    graph->mincut =
        static_cast<int>(static_cast<unsigned>(graph->mincut) - static_cast<unsigned>(cutgain));
    graph->minsoed =
        static_cast<int>(static_cast<unsigned>(graph->minsoed) - static_cast<unsigned>(cutgain) -
                         static_cast<unsigned>(best->soed));
    graph->kpwgts[to] += weight;
    graph->kpwgts[from] -= weight;
    graph->where[v] = to;
    if (ctrl->dbglvl & DBG_MOVE)
        print_trace(ctrl, "\tMoving %6d[%3d] (%3d -> %3d) [%4d %4d %4d %4d] %5d %5d\n", v,
                    graph->incptr[v + 1] - graph->incptr[v], from, to, graph->crinfo[v].id,
                    best->num, best->soed, best->ties, graph->mincut, graph->minsoed);
    note_kway_move(graph, v, from, to, work->marker, &work->stale);
}

/* Visits every vertex once; returns the number of moves. */
template <KwayObjective O> static int sweep(const PartCtrl *ctrl, HGraph *graph, KwayWork *work)
{
    int nmoves = 0;
    for (int i = 0; i < graph->ncells; i++) {
        const int v = work->perm[i];
        if (v < graph->nfixed) continue;
        refresh_outline(graph, &work->stale, v);
        const CellKwayInfo *const cell = &graph->crinfo[v];
        if (cell->id > cell->ed) continue;
        const int from = graph->where[v], weight = graph->cellwgt[v];
        assert(cell->id + cell->ed <= graph->adjwgt[v]);
        if (graph->kpwgts[from] - weight < work->minpwgt) continue;
        refresh_record(graph, &work->stale, v); // one in ten comes this far
        const KwayPartDeg *const best = best_target<O>(graph, cell, weight, work->maxpwgt);
        if (best == nullptr || !accept<O>(graph, cell, best, from, weight)) continue;
        make_move(ctrl, graph, work, v, best);
        nmoves++;
    }
    return nmoves;
}

[[gnu::cold]] static void trace_start(const PartCtrl *ctrl, const HGraph *graph,
                                      const KwayWork *work)
{
    const int *const kpwgts = graph->kpwgts;
    print_trace(ctrl,
                "Partitions: [%5d,%5d], Balance: [%3.2f, %5d,%5d], Init Cut: %5d, Init SOED: %5d\n",
                kpwgts[iamin__(ctrl->nparts, kpwgts)], kpwgts[iamax__(ctrl->nparts, kpwgts)],
                static_cast<double>(part_ratio(ctrl)), work->minpwgt, work->maxpwgt, graph->mincut,
                graph->minsoed);
}

[[gnu::cold]] static void trace_end(const PartCtrl *ctrl, const HGraph *graph, int nmoves)
{
    const int *const kpwgts = graph->kpwgts;
    print_trace(ctrl, "\tCut: %8d, SOED: %8d, Nmoves: %3d, Pwgts: [%6d %6d]\n", graph->mincut,
                graph->minsoed, nmoves, kpwgts[iamin__(ctrl->nparts, kpwgts)],
                kpwgts[iamax__(ctrl->nparts, kpwgts)]);
}

template <KwayObjective O>
static void refine(PartCtrl *ctrl, HGraph *graph, int npasses, KwayRecords records)
{
    const size_t n = static_cast<size_t>(graph->ncells);
    HEAVY_ASSERT(ctrl_ok(ctrl));
    KwayWork work;
    work.perm = imalloc__(n, "RefineKway_Random: perm");
    work.marker = imalloc__(n, "RefineKway_Random: marker");
    open_stale(graph, &work.stale);
    for (int v = 0; v < graph->ncells; v++) work.perm[v] = v;
    start_timer(ctrl, TIME_INITIALIZE);
    outline_records(ctrl, graph, &work.stale, records == KwayRecords::dropped);
    set_part_bounds(ctrl, graph, &work);
    stop_timer(ctrl, TIME_INITIALIZE);

    for (int pass = 0; pass < npasses; pass++) {
        RandomPermute__(&ctrl->random, work.perm, graph->ncells, 0);
        if ((ctrl->dbglvl & DBG_PASS) && pass == 0) trace_start(ctrl, graph, &work);
        const int oldcut = graph->mincut, oldsoed = graph->minsoed;
        iset__(graph->ncells, -1, work.marker);
        start_timer(ctrl, TIME_ITERATE);
        const int nmoves = sweep<O>(ctrl, graph, &work);
        stop_timer(ctrl, TIME_ITERATE);
        HEAVY_ASSERT(stale_ok(ctrl, graph, &work.stale));
        if (ctrl->dbglvl & DBG_PASS) trace_end(ctrl, graph, nmoves);
        if (graph->mincut == oldcut && graph->minsoed == oldsoed) break;
    }
    graph->objval = O == OBJECTIVE_CUT ? graph->mincut : graph->minsoed;
    if (records == KwayRecords::current) {
        refresh_all(graph, &work.stale);
        HEAVY_ASSERT(kway_ok(ctrl, graph));
    }
    close_stale(&work.stale);
    QXfree__(&work.perm, &work.marker, LTERM);
}

void refine_kway_random(PartCtrl *ctrl, HGraph *graph, int npasses, KwayObjective objective,
                        KwayRecords records)
{
    if (objective == OBJECTIVE_SOED)
        refine<OBJECTIVE_SOED>(ctrl, graph, npasses, records);
    else
        refine<OBJECTIVE_CUT>(ctrl, graph, npasses, records);
}

void RefineCutKway_Random__(PartCtrl *ctrl, HGraph *graph, int npasses)
{
    refine_kway_random(ctrl, graph, npasses, OBJECTIVE_CUT, KwayRecords::current);
}

void RefineSOEDKway_Random__(PartCtrl *ctrl, HGraph *graph, int npasses)
{
    refine_kway_random(ctrl, graph, npasses, OBJECTIVE_SOED, KwayRecords::current);
}
