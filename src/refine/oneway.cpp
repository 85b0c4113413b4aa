/* refine/oneway.cpp: FM passes that move vertices in one direction.
 *
 * One queue holds the movable vertices of the giving side. A vertex that the side's bound holds
 * back is skipped while its gain is positive (it counts as a step, with moved == ncells);
 * otherwise it ends the pass. Rollback keeps gains and pin counts exact, so they are computed once
 * a call.
 */
#include "refine/oneway.h"

#include <cstdio>

#include "core/heavy_assert.h"
#include "core/timers.h"
#include "refine/fm_steps.h"
#include "refine/gains.h"

static void oneway_begin_pass(PartCtrl *ctrl, HGraph *graph, FmWork *work, int pass, int *from)
{
    start_timer(ctrl, TIME_INITIALIZE);
    if (pass == 0) {
        ComputeInitGains__(graph);
        set_weight_bounds(ctrl, graph->pwgts, work->minpwgts);
        *from = graph->pwgts[0] >= graph->pwgts[1] ? 0 : 1;
    } else {
        *from = 1 - *from;
    }
    reset_pass(graph, work);
    fill_queues(graph, work->queues, work->perm, work->moved, *from);
    if ((ctrl->dbglvl & DBG_PASS) && pass == 0)
        printf("1-way Partitions: [%6d %8d %8d] Initial Cut: %8d [%d] [%d %d]\n",
               work->queues[0].nnodes, graph->pwgts[*from], graph->pwgts[1 - *from], work->initcut,
               ComputeCut__(graph), work->minpwgts[0], work->minpwgts[1]);
    stop_timer(ctrl, TIME_INITIALIZE);
}

static void oneway_moves(PartCtrl *ctrl, HGraph *graph, FmWork *work, int from)
{
    constexpr UpdateRules updates = {true, true, true};
    start_timer(ctrl, TIME_ITERATE);
    for (int v; work->nswaps < graph->ncells; work->nswaps++) {
        if ((v = PQueueGetMax__(&work->queues[0])) < 0) break;
        const bool held = graph->pwgts[from] - graph->cellwgt[v] < work->minpwgts[from];
        if (held && graph->gain[v] <= 0) break;
        work->swaps[work->nswaps] = v;
        work->moved[v] = held ? graph->ncells : work->nswaps;
        if (held) continue;
        work->newcut -= graph->gain[v];
        change_side(graph, v, from, 1 - from);
        note_best<true>(graph, work);
        if (ctrl->dbglvl & DBG_MOVE)
            printf("Gains from moving %8d from %2d: %4d, \tNewcut: %d\n", v, from, graph->gain[v],
                   work->newcut);
        graph->gain[v] = -graph->gain[v];
        update_neighbours<updates>(graph, work->queues, work->moved, v, from);
    }
    HEAVY_ASSERT(pqueue_ok(&work->queues[0]));
    stop_timer(ctrl, TIME_ITERATE);
}

static void oneway_end_pass(PartCtrl *ctrl, HGraph *graph, FmWork *work, int from)
{
    constexpr UpdateRules updates = {true, true, false};
    const int to = 1 - from;
    start_timer(ctrl, TIME_WRAPUP);
    for (int i = work->nswaps - 1; i > work->mincutorder; i--) {
        const int v = work->swaps[i];
        if (work->moved[v] == graph->ncells) continue;
        change_side(graph, v, to, from);
        graph->gain[v] = -graph->gain[v];
        update_neighbours<updates>(graph, work->queues, work->moved, v, to);
    }
    if (ctrl->dbglvl & DBG_PASS)
        printf("\tMinimum Cut: %8d [%8d] at %5d [%6d %6d] [%d]\n", work->mincut,
               ComputeCut__(graph), work->mincutorder, graph->pwgts[0], graph->pwgts[1], from);
    graph->mincut = work->mincut;
    HEAVY_ASSERT(hgraph_ok(graph, HG_WHERE | HG_GAINS));
    stop_timer(ctrl, TIME_WRAPUP);
}

void Refine_OneWayFM__(PartCtrl *ctrl, HGraph *graph, int npasses)
{
    FmWork work;
    int from = 0;
    open_work(graph, &work, 1);
    for (int pass = 0; pass < npasses; pass++) {
        oneway_begin_pass(ctrl, graph, &work, pass, &from);
        oneway_moves(ctrl, graph, &work, from);
        oneway_end_pass(ctrl, graph, &work, from);
        if (pass % 2 == 1 && work.mincut == work.initcut) break;
    }
    close_work(&work);
}
