// SPDX-License-Identifier: MIT
/* refine/oneway.cpp: FM passes that move vertices in one direction.
 *
 * The movable vertices of the giving side are queued, nobody of the other. A vertex that the side's
 * bound holds back is skipped while its gain is positive (it counts as a step and stays on its
 * side); otherwise it ends the pass. The way back to the best point keeps gains and pin counts
 * exact, so they are computed once a call.
 */
#include "refine/oneway.h"

#include <cassert>

#include "core/heavy_assert.h"
#include "core/timers.h"
#include "core/trace.h"
#include "refine/fm_pass.h"
#include "refine/move_vertex.h"

/* Opens pass number i; returns the side that gives: first the heavier one, then in turn. */
template <class Queue>
static int oneway_begin_pass(PartCtrl *ctrl, OpenBisection<Queue> *b, FmPass *pass, int i, int last)
{
    start_timer(ctrl, TIME_INITIALIZE);
    if (i == 0) {
        load_bisection(b);
        set_weight_bounds(ctrl, b->pwgts, pass->minpwgts);
    }
    const int from = i > 0 ? 1 - last : b->pwgts[0] >= b->pwgts[1] ? 0 : 1;
    const bool gives[2] = {from == 0, from == 1};
    assert(from == 0 || from == 1);
    begin_pass(pass, b);
    empty_queues(b);
    fill_queues(&ctrl->random, b, gives);
    if ((ctrl->dbglvl & DBG_PASS) && i == 0)
        print_trace(ctrl, "1-way Partitions: [%6d %8d %8d] Initial Cut: %8d [%d] [%d %d]\n",
                    b->queues[from].nnodes, b->pwgts[from], b->pwgts[1 - from], pass->initcut,
                    cut_of_counts(b), pass->minpwgts[0], pass->minpwgts[1]);
    stop_timer(ctrl, TIME_INITIALIZE);
    return from;
}

template <class Queue>
static void oneway_moves(PartCtrl *ctrl, OpenBisection<Queue> *b, FmPass *pass, int from)
{
    start_timer(ctrl, TIME_ITERATE);
    for (int v; (v = queue_top(&b->queues[from])) >= 0;) {
        queue_delete(&b->queues[from], v);
        const int gain = gain_of(b, v);
        assert(side_of(b, v) == from && b->queues[1 - from].nnodes == 0);
        const bool held = b->pwgts[from] - b->level->cellwgt[v] < pass->minpwgts[from];
        if (held && gain <= 0) break;
        note_step(pass, v, b->level->ncells);
        if (held) continue;
        count_work(WORK_MOVES, 1);
        move_vertex<ALL_GAINS>(b, v);
        note_best<true>(pass, b);
        if (ctrl->dbglvl & DBG_MOVE)
            print_trace(ctrl, "Gains from moving %8d from %2d: %4d, \tNewcut: %d\n",
                        original_of(b, v), from, gain, b->cut);
    }
    HEAVY_ASSERT(bisection_ok(b, ALL_GAINS));
    stop_timer(ctrl, TIME_ITERATE);
}

template <class Queue>
static void oneway_end_pass(PartCtrl *ctrl, OpenBisection<Queue> *b, const FmPass *pass, int from)
{
    start_timer(ctrl, TIME_WRAPUP);
    for (int i = pass->nswaps - 1; i > pass->mincutorder; i--) {
        const int v = pass->swaps[i];
        if (side_of(b, v) == from) continue; // it was held back
        count_work(WORK_UNDONE, 1);
        undo_vertex(b, v);
    }
    assert(b->cut == pass->mincut);
    if (ctrl->dbglvl & DBG_PASS)
        print_trace(ctrl, "\tMinimum Cut: %8d [%8d] at %5d [%6d %6d] [%d]\n", pass->mincut,
                    cut_of_counts(b), pass->mincutorder, b->pwgts[0], b->pwgts[1], from);
    stop_timer(ctrl, TIME_WRAPUP);
}

template <class Queue>
static void oneway_passes(PartCtrl *ctrl, OpenBisection<Queue> *b, FmPass *pass, int npasses)
{
    for (int i = 0, from = 0; i < npasses; i++) {
        from = oneway_begin_pass(ctrl, b, pass, i, from);
        oneway_moves(ctrl, b, pass, from);
        oneway_end_pass(ctrl, b, pass, from);
        if (i % 2 == 1 && pass->mincut == pass->initcut) break;
    }
    store_bisection(b);
}

void Refine_OneWayFM__(PartCtrl *ctrl, HGraph *graph, int npasses)
{
    if (npasses < 1) return;
    FmPass pass;
    open_pass(&pass, graph->ncells);
    with_open_bisection(graph, [&](auto *b) { oneway_passes(ctrl, b, &pass, npasses); });
    close_pass(&pass);
}
