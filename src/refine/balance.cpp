// SPDX-License-Identifier: MIT
/* refine/balance.cpp: greedy repair of an unbalanced bisection.
 *
 * Vertices leave the side that keeps its bound for the one that does not, by gain; one that is too
 * heavy for the giving side is discarded. All gains stay exact, moved vertices' too.
 */
#include "refine/balance.h"

#include <cassert>

#include "core/heavy_assert.h"
#include "core/timers.h"
#include "core/trace.h"
#include "refine/fm_pass.h"
#include "refine/move_vertex.h"

static void sum_sides(HGraph *graph)
{
    graph->pwgts[0] = graph->pwgts[1] = 0;
    for (int v = 0; v < graph->ncells; v++) graph->pwgts[graph->where[v]] += graph->cellwgt[v];
}

template <class Queue>
static void balance_begin(PartCtrl *ctrl, OpenBisection<Queue> *b, const int minpwgts[2])
{
    constexpr bool both[2] = {true, true};
    start_timer(ctrl, TIME_INITIALIZE);
    load_bisection(b);
    fill_queues(&ctrl->random, b, both);
    if (ctrl->dbglvl & DBG_PASS)
        print_trace(ctrl, "Partitions[B]: [%6d,%8d]  [%6d,%8d], Initial Cut: %8d [%d] [%d]\n",
                    b->queues[0].nnodes, b->pwgts[0], b->queues[1].nnodes, b->pwgts[1], b->cut,
                    cut_of_counts(b), minpwgts[0]);
    stop_timer(ctrl, TIME_INITIALIZE);
}

/* Moves or discards the best vertex of side from. */
template <class Queue>
static void balance_step(OpenBisection<Queue> *b, const int minpwgts[2], int from)
{
    const int v = queue_top(&b->queues[from]);
    assert(v >= b->level->nfixed && b->pwgts[1 - from] < minpwgts[1 - from]);
    queue_delete(&b->queues[from], v);
    if (b->pwgts[from] - b->level->cellwgt[v] < minpwgts[from]) return;
    count_work(WORK_MOVES, 1);
    move_vertex<ALL_GAINS>(b, v);
}

template <class Queue>
static void balance_sides(PartCtrl *ctrl, OpenBisection<Queue> *b, const int minpwgts[2])
{
    balance_begin(ctrl, b, minpwgts);
    start_timer(ctrl, TIME_ITERATE);
    while (!within_bounds(b->pwgts, minpwgts)) {
        const int from = b->pwgts[0] >= minpwgts[0] ? 0 : 1;
        if (b->queues[from].nnodes == 0) break;
        balance_step(b, minpwgts, from);
    }
    HEAVY_ASSERT(bisection_ok(b, ALL_GAINS));
    store_bisection(b);
    stop_timer(ctrl, TIME_ITERATE);
}

void Balance__(PartCtrl *ctrl, HGraph *graph)
{
    int minpwgts[2];
    sum_sides(graph);
    assert(graph->pwgts[0] >= 0 && graph->pwgts[1] >= 0);
    set_weight_bounds(ctrl, graph->pwgts, minpwgts);
    if (within_bounds(graph->pwgts, minpwgts)) return;
    with_open_bisection(graph, [&](auto *b) { balance_sides(ctrl, b, minpwgts); });
}
