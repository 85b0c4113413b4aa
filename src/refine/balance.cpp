/* refine/balance.cpp: greedy repair of an unbalanced bisection.
 *
 * Vertices leave the side that keeps its bound for the one that does not, by gain; one that is too
 * heavy for the giving side is discarded. All gains stay exact, moved vertices' too.
 */
#include "refine/balance.h"

#include "core/heavy_assert.h"
#include "core/timers.h"
#include "core/trace.h"
#include "refine/neighbours.h"

static void sum_sides(HGraph *graph)
{
    graph->pwgts[0] = graph->pwgts[1] = 0;
    for (int v = 0; v < graph->ncells; v++) graph->pwgts[graph->where[v]] += graph->cellwgt[v];
}

template <bool Heap>
static void balance_begin(PartCtrl *ctrl, const HGraph *original, const HGraph *graph, FmWork *work)
{
    start_timer(ctrl, TIME_INITIALIZE);
    load_sides(original, work);
    compute_gains<Heap>(graph, work);
    reset_pass(work, 2);
    fill_queues<Heap>(&ctrl->random, graph, work, -1);
    if (ctrl->dbglvl & DBG_PASS)
        print_trace(ctrl, "Partitions[B]: [%6d,%8d]  [%6d,%8d], Initial Cut: %8d [%d] [%d]\n",
                    work->queues[0].nnodes, work->pwgts[0], work->queues[1].nnodes, work->pwgts[1],
                    work->newcut, cut_of_counts(graph, work), work->minpwgts[0]);
    stop_timer(ctrl, TIME_INITIALIZE);
}

/* Moves or discards the best vertex of side from. */
template <bool Heap> static void balance_step(const HGraph *graph, FmWork *work, int from)
{
    constexpr UpdateRules updates = {true, false, true};
    const int v = PQueueGetMax__(&work->queues[from]);
    if (work->pwgts[from] - graph->cellwgt[v] < work->minpwgts[from]) return;
    count_work(WORK_MOVES, 1);
    work->newcut -= gain_of<Heap>(work, v);
    change_side(graph, work, v, from, 1 - from);
    gain_of<Heap>(work, v) = -gain_of<Heap>(work, v);
    update_neighbours<Heap, updates>(graph, work, v, from);
}

template <bool Heap>
static void balance_sides(PartCtrl *ctrl, HGraph *original, const HGraph *graph, FmWork *work)
{
    balance_begin<Heap>(ctrl, original, graph, work);
    start_timer(ctrl, TIME_ITERATE);
    while (!within_bounds(work->pwgts, work->minpwgts)) {
        const int from = work->pwgts[0] >= work->minpwgts[0] ? 0 : 1;
        if (work->queues[from].nnodes == 0) break;
        balance_step<Heap>(graph, work, from);
    }
    work->mincut = work->newcut;
    store_sides(original, work);
    store_gains<Heap>(original, work);
    HEAVY_ASSERT(work_ok(graph, work, true));
    stop_timer(ctrl, TIME_ITERATE);
}

void Balance__(PartCtrl *ctrl, HGraph *graph)
{
    FmWork work;
    sum_sides(graph);
    set_weight_bounds(ctrl, graph->pwgts, work.minpwgts);
    if (within_bounds(graph->pwgts, work.minpwgts)) return;
    const HGraph *const refined = open_work(graph, &work, 2);
    with_form(&work, [&]<bool Heap>() { balance_sides<Heap>(ctrl, graph, refined, &work); });
    close_work(&work, 2);
}
