/* refine/balance.cpp: greedy repair of an unbalanced bisection.
 *
 * Vertices leave the side that keeps its bound for the one that does not, by gain; one that is too
 * heavy for the giving side is discarded. All gains stay exact, moved vertices' too.
 */
#include "refine/balance.h"

#include <cstdio>

#include "core/heavy_assert.h"
#include "core/timers.h"
#include "refine/fm_steps.h"
#include "refine/gains.h"

struct BalanceWork {
    PQueue queues[2];
    int *moved; // [ncells] NOT_MOVED; 1 once fixed, moved or discarded
    int minpwgts[2];
    int cut;
};

static void sum_sides(HGraph *graph)
{
    graph->pwgts[0] = graph->pwgts[1] = 0;
    for (int v = 0; v < graph->ncells; v++) graph->pwgts[graph->where[v]] += graph->cellwgt[v];
}

static void balance_open(PartCtrl *ctrl, HGraph *graph, BalanceWork *work)
{
    const size_t n = static_cast<size_t>(graph->ncells);
    const int span = gain_bound(graph);
    PQueueInit__(&work->queues[0], graph->ncells, span);
    PQueueInit__(&work->queues[1], graph->ncells, span);
    work->moved = ismalloc__(n, NOT_MOVED, "FM_Refine: perm"); // the same text twice, on purpose
    int *perm = imalloc__(n, "FM_Refine: perm");
    start_timer(ctrl, TIME_INITIALIZE);
    ComputeInitGains__(graph);
    work->cut = graph->mincut;
    fill_queues(graph, work->queues, perm, work->moved, -1);
    if (ctrl->dbglvl & DBG_PASS)
        printf("Partitions[B]: [%6d,%8d]  [%6d,%8d], Initial Cut: %8d [%d] [%d]\n",
               work->queues[0].nnodes, graph->pwgts[0], work->queues[1].nnodes, graph->pwgts[1],
               work->cut, ComputeCut__(graph), work->minpwgts[0]);
    stop_timer(ctrl, TIME_INITIALIZE);
    QXfree__(&perm, LTERM);
}

/* Moves or discards the best vertex of side from. */
static void balance_step(HGraph *graph, BalanceWork *work, int from)
{
    constexpr UpdateRules updates = {true, false, true};
    const int v = PQueueGetMax__(&work->queues[from]);
    work->moved[v] = 1;
    if (graph->pwgts[from] - graph->cellwgt[v] < work->minpwgts[from]) return;
    work->cut -= graph->gain[v];
    change_side(graph, v, from, 1 - from);
    graph->gain[v] = -graph->gain[v];
    update_neighbours<updates>(graph, work->queues, work->moved, v, from);
}

void Balance__(PartCtrl *ctrl, HGraph *graph)
{
    BalanceWork work;
    sum_sides(graph);
    set_weight_bounds(ctrl, graph->pwgts, work.minpwgts);
    if (within_bounds(graph->pwgts, work.minpwgts)) return;

    balance_open(ctrl, graph, &work);
    start_timer(ctrl, TIME_ITERATE);
    for (int step = 0; step < graph->ncells; step++) {
        if (within_bounds(graph->pwgts, work.minpwgts)) break;
        const int from = graph->pwgts[0] >= work.minpwgts[0] ? 0 : 1;
        if (work.queues[from].nnodes == 0) break;
        balance_step(graph, &work, from);
    }
    graph->mincut = work.cut;
    HEAVY_ASSERT(pqueue_ok(&work.queues[0]) && pqueue_ok(&work.queues[1]));
    HEAVY_ASSERT(hgraph_ok(graph, HG_WHERE | HG_GAINS));
    stop_timer(ctrl, TIME_ITERATE);
    PQueueFree__(&work.queues[0]);
    PQueueFree__(&work.queues[1]);
    QXfree__(&work.moved, LTERM);
}
