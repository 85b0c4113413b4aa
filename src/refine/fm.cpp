/* refine/fm.cpp: Fiduccia-Mattheyses refinement, one loop for four variants.
 *
 * A pass moves the best-gain vertex that the balance rule allows, over and over, and then undoes
 * the moves after the best balanced point. The variants differ in two choices: whether a side's
 * candidate must fit into its room (constrained), and whether gains are kept exact through the
 * rollback so that a pass may be left early (exact).
 * True between moves: newcut is the cut of where; queue s holds the unmoved vertices of side s
 * under their gains; the steps 0..nswaps-1 are the moves of this pass in order.
 * Source: Fiduccia & Mattheyses, DAC 1982.
 */
#include "refine/fm.h"

#include <cassert>
#include <cstdio>

#include "core/heavy_assert.h"
#include "core/timers.h"
#include "refine/fm_steps.h"
#include "refine/gains.h"

struct FmRules {
    bool constrained; // candidates must fit
    bool exact;       // exact gains and early exit; the best point has no tie-break on balance
};
constexpr FmRules FM = {false, false}, FM2 = {true, false};
constexpr FmRules EEFM = {false, true}, EEFM2 = {true, true};

template <FmRules R> [[gnu::cold]] static void trace_start(const HGraph *graph, const FmWork *work)
{
    const int *const pwgts = graph->pwgts;
    const int queued[2] = {work->queues[0].nnodes, work->queues[1].nnodes};
    if (R.exact) {
        printf("Partitions: [%6d,%8d]  [%6d,%8d], Initial Cut: %8d [%d] [%d]\n", queued[0],
               pwgts[0], queued[1], pwgts[1], work->initcut, ComputeCut__(graph),
               work->minpwgts[0]);
        return;
    }
    if (R.constrained)
        printf("Partitions2: [%6d,%8d]  [%6d,%8d], Initial Cut: %8d [%d] [%d %d]\n", queued[0],
               pwgts[0], queued[1], pwgts[1], work->initcut, ComputeCut__(graph), work->minpwgts[0],
               work->minpwgts[1]);
    else
        printf("Partitions: [%6d,%8d]  [%6d,%8d], Initial Cut: %8d [%d] [%d %d]\n", queued[0],
               pwgts[0], queued[1], pwgts[1], work->initcut, ComputeCut__(graph), work->minpwgts[0],
               work->minpwgts[1]);
}

/* gain is the gain that v had before it moved. */
template <FmRules R>
[[gnu::cold]] static void trace_move(const HGraph *graph, int v, int from, int newcut)
{
    const int *const pwgts = graph->pwgts;
    if (R.exact)
        printf("Gains from moving %8d from %2d: %4d, \tNewcut: %d\n", v, from, graph->gain[v],
               newcut);
    else if (R.constrained)
        printf("Gains from moving %8d from %2d: %4d, \tNewcut: %d [%6d %6d %6d]\n", v, from,
               graph->gain[v], newcut, graph->cellwgt[v], pwgts[0], pwgts[1]);
    else
        printf("Gains from moving %8d from %2d: %4d, \tNewcut: %d [%6d %6d]\n", v, from,
               graph->gain[v], newcut, pwgts[0], pwgts[1]);
}

template <FmRules R> [[gnu::cold]] static void trace_end(const HGraph *graph, const FmWork *work)
{
    const int *const pwgts = graph->pwgts;
    if (R.exact)
        printf("\tMinimum Cut: %8d [%8d] at %5d [%6d %6d]\n", work->mincut, ComputeCut__(graph),
               work->mincutorder, pwgts[0], pwgts[1]);
    else
        printf("\tMinimum Cut: %8d at %5d [%6d %6d]\n", work->mincut, work->mincutorder, pwgts[0],
               pwgts[1]);
}

template <FmRules R>
static void fm_begin_pass(PartCtrl *ctrl, HGraph *graph, FmWork *work, int pass)
{
    start_timer(ctrl, TIME_INITIALIZE);
    if (!R.exact || pass == 0) ComputeInitGains__(graph);
    set_weight_bounds(ctrl, graph->pwgts, work->minpwgts);
    reset_pass(graph, work);
    fill_queues(graph, work->queues, work->perm, work->moved, -1);
    if ((ctrl->dbglvl & DBG_PASS) && pass == 0) trace_start<R>(graph, work);
    stop_timer(ctrl, TIME_INITIALIZE);
}

/* A side's candidate, -1 when its queue is empty. */
template <FmRules R> static int candidate(const HGraph *graph, const FmWork *work, int side)
{
    const PQueue *const queue = &work->queues[side];
    if (!R.constrained) return PQueueSeeMax__(queue);
    return PQueueSeeConstraintMax(queue, room_of(graph->pwgts[side], work->minpwgts[side]),
                                  graph->cellwgt);
}

/* The side that gives up its candidate when both have one: the better gain, unless that side would
 * fall below its bound; then the other, without a test of its own. Equal gains: the side with more
 * room, side 0 if neither has more. */
static int choose_side(const HGraph *graph, const FmWork *work, int a0, int a1)
{
    const int *const pwgts = graph->pwgts, *const minpwgts = work->minpwgts;
    if (graph->gain[a0] > graph->gain[a1])
        return pwgts[0] - graph->cellwgt[a0] < minpwgts[0] ? 1 : 0;
    if (graph->gain[a0] < graph->gain[a1])
        return pwgts[1] - graph->cellwgt[a1] < minpwgts[1] ? 0 : 1;
    const long long room0 = static_cast<long long>(pwgts[0]) - minpwgts[0];
    const long long room1 = static_cast<long long>(pwgts[1]) - minpwgts[1];
    return room0 < room1 ? 1 : 0;
}

/* Takes the next vertex to move out of its queue; -1 when both are empty. */
template <FmRules R> static int fm_take_next(const HGraph *graph, FmWork *work, int *from)
{
    const int a0 = candidate<R>(graph, work, 0);
    const int a1 = candidate<R>(graph, work, 1);
    if (a0 < 0 && a1 < 0) return -1;
    *from = a0 < 0 ? 1 : a1 < 0 ? 0 : choose_side(graph, work, a0, a1);
    if (!R.constrained) return PQueueGetMax__(&work->queues[*from]);
    const int v = *from == 0 ? a0 : a1;
    PQueueDelete(&work->queues[*from], v, graph->gain[v]);
    return v;
}

/* limit: moves above the best cut after which a pass of exact gains is left. */
template <FmRules R> static void fm_moves(PartCtrl *ctrl, HGraph *graph, FmWork *work, int limit)
{
    constexpr UpdateRules updates = {R.exact, false, true};
    start_timer(ctrl, TIME_ITERATE);
    for (int v, from; work->nswaps < graph->ncells; work->nswaps++) {
        if ((v = fm_take_next<R>(graph, work, &from)) < 0) break;
        work->newcut -= graph->gain[v];
        work->moved[v] = work->nswaps;
        work->swaps[work->nswaps] = v;
        change_side(graph, v, from, 1 - from);
        const bool best = note_best<!R.exact>(graph, work);
        if (R.exact && !best && work->mincut < work->newcut &&
            work->nswaps - work->mincutorder > limit) {
            change_side(graph, v, 1 - from, from); // counts and gains were not touched yet
            break;
        }
        if (ctrl->dbglvl & DBG_MOVE) trace_move<R>(graph, v, from, work->newcut);
        if (R.exact) graph->gain[v] = -graph->gain[v];
        update_neighbours<updates>(graph, work->queues, work->moved, v, from);
    }
    HEAVY_ASSERT(pqueue_ok(&work->queues[0]) && pqueue_ok(&work->queues[1]));
    stop_timer(ctrl, TIME_ITERATE);
}

/* Takes back the moves after the best point; keeps gains and counts exact if R asks for it. */
template <FmRules R> static void fm_undo_tail(HGraph *graph, FmWork *work)
{
    constexpr UpdateRules updates = {true, false, false};
    for (int i = work->nswaps - 1; i > work->mincutorder; i--) {
        const int v = work->swaps[i];
        const int from = graph->where[v];
        change_side(graph, v, from, 1 - from);
        if (!R.exact) continue;
        graph->gain[v] = -graph->gain[v];
        update_neighbours<updates>(graph, work->queues, work->moved, v, from);
    }
    HEAVY_ASSERT(!R.exact || (graph->mincut = work->mincut, hgraph_ok(graph, HG_WHERE | HG_GAINS)));
}

template <FmRules R> static void fm_end_pass(PartCtrl *ctrl, HGraph *graph, FmWork *work)
{
    start_timer(ctrl, TIME_WRAPUP);
    fm_undo_tail<R>(graph, work);
    if (ctrl->dbglvl & DBG_PASS) trace_end<R>(graph, work);
    graph->mincut = work->mincut;
    stop_timer(ctrl, TIME_WRAPUP);
}

template <FmRules R>
static void fm_refine(PartCtrl *ctrl, HGraph *graph, int npasses, float fraction)
{
    const int limit = trunc_int(static_cast<float>(graph->ncells) * fraction);
    FmWork work;
    open_work(graph, &work, 2);
    for (int pass = 0; pass < npasses; pass++) {
        fm_begin_pass<R>(ctrl, graph, &work, pass);
        fm_moves<R>(ctrl, graph, &work, limit);
        fm_end_pass<R>(ctrl, graph, &work);
        if (work.mincut == work.initcut) break;
    }
    close_work(&work);
}

void Refine_FM__(PartCtrl *ctrl, HGraph *graph, int npasses)
{
    fm_refine<FM>(ctrl, graph, npasses, 0);
}

void Refine_FM2__(PartCtrl *ctrl, HGraph *graph, int npasses)
{
    fm_refine<FM2>(ctrl, graph, npasses, 0);
}

void Refine_EEFM__(PartCtrl *ctrl, HGraph *graph, int npasses, float fraction)
{
    fm_refine<EEFM>(ctrl, graph, npasses, fraction);
}

void Refine_EEFM2__(PartCtrl *ctrl, HGraph *graph, int npasses, float fraction)
{
    fm_refine<EEFM2>(ctrl, graph, npasses, fraction);
}
