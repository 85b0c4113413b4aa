/* refine/oneway.cpp: FM passes that move vertices in one direction.
 *
 * One queue holds the movable vertices of the giving side. A vertex that the side's bound holds
 * back is skipped while its gain is positive (it counts as a step and stays on its side);
 * otherwise it ends the pass. Rollback keeps gains and pin counts exact, so they are computed once
 * a call.
 */
#include "refine/oneway.h"

#include "core/heavy_assert.h"
#include "core/timers.h"
#include "core/trace.h"
#include "refine/neighbours.h"

template <bool Heap>
static void oneway_begin_pass(PartCtrl *ctrl, const HGraph *original, const HGraph *graph,
                              FmWork *work, int pass, int *from)
{
    start_timer(ctrl, TIME_INITIALIZE);
    if (pass == 0) {
        load_sides(original, work);
        compute_gains<Heap>(graph, work);
        set_weight_bounds(ctrl, work->pwgts, work->minpwgts);
        *from = work->pwgts[0] >= work->pwgts[1] ? 0 : 1;
    } else {
        *from = 1 - *from;
    }
    reset_pass(work, 1);
    fill_queues<Heap>(&ctrl->random, graph, work, *from);
    if ((ctrl->dbglvl & DBG_PASS) && pass == 0)
        print_trace(ctrl, "1-way Partitions: [%6d %8d %8d] Initial Cut: %8d [%d] [%d %d]\n",
                    work->queues[0].nnodes, work->pwgts[*from], work->pwgts[1 - *from],
                    work->initcut, cut_of_counts(graph, work), work->minpwgts[0],
                    work->minpwgts[1]);
    stop_timer(ctrl, TIME_INITIALIZE);
}

template <bool Heap>
static void oneway_moves(PartCtrl *ctrl, const HGraph *graph, FmWork *work, int from)
{
    constexpr UpdateRules updates = {true, true, true};
    start_timer(ctrl, TIME_ITERATE);
    for (int v; (v = PQueueGetMax__(&work->queues[0])) >= 0; work->nswaps++) {
        const int gain = gain_of<Heap>(work, v);
        const bool held = work->pwgts[from] - graph->cellwgt[v] < work->minpwgts[from];
        if (held && gain <= 0) break;
        work->swaps[work->nswaps] = v;
        if (held) continue;
        work->newcut -= gain;
        change_side(graph, work, v, from, 1 - from);
        count_work(WORK_MOVES, 1);
        note_best<true>(work);
        if (ctrl->dbglvl & DBG_MOVE)
            print_trace(ctrl, "Gains from moving %8d from %2d: %4d, \tNewcut: %d\n",
                        original_of(work, v), from, gain, work->newcut);
        gain_of<Heap>(work, v) = -gain;
        update_neighbours<Heap, updates>(graph, work, v, from);
    }
    stop_timer(ctrl, TIME_ITERATE);
}

template <bool Heap>
static void oneway_end_pass(PartCtrl *ctrl, const HGraph *graph, FmWork *work, int from)
{
    constexpr UpdateRules updates = {true, true, false};
    const int to = 1 - from;
    start_timer(ctrl, TIME_WRAPUP);
    for (int i = work->nswaps - 1; i > work->mincutorder; i--) {
        const int v = work->swaps[i];
        if (side_of(work, v) == from) continue; // it was held back
        change_side(graph, work, v, to, from);
        count_work(WORK_UNDONE, 1);
        gain_of<Heap>(work, v) = -gain_of<Heap>(work, v);
        update_neighbours<Heap, updates>(graph, work, v, to);
    }
    if (ctrl->dbglvl & DBG_PASS)
        print_trace(ctrl, "\tMinimum Cut: %8d [%8d] at %5d [%6d %6d] [%d]\n", work->mincut,
                    cut_of_counts(graph, work), work->mincutorder, work->pwgts[0], work->pwgts[1],
                    from);
    HEAVY_ASSERT(work_ok(graph, work, true));
    stop_timer(ctrl, TIME_WRAPUP);
}

template <bool Heap>
static void oneway_passes(PartCtrl *ctrl, HGraph *original, const HGraph *graph, FmWork *work,
                          int npasses)
{
    for (int pass = 0, from = 0; pass < npasses; pass++) {
        oneway_begin_pass<Heap>(ctrl, original, graph, work, pass, &from);
        oneway_moves<Heap>(ctrl, graph, work, from);
        oneway_end_pass<Heap>(ctrl, graph, work, from);
        if (pass % 2 == 1 && work->mincut == work->initcut) break;
    }
    store_sides(original, work);
    store_gains<Heap>(original, work);
}

void Refine_OneWayFM__(PartCtrl *ctrl, HGraph *graph, int npasses)
{
    if (npasses < 1) return;
    FmWork work;
    const HGraph *const refined = open_work(graph, &work, 1);
    with_form(&work,
              [&]<bool Heap>() { oneway_passes<Heap>(ctrl, graph, refined, &work, npasses); });
    close_work(&work, 1);
}
