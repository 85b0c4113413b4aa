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

#include "core/heavy_assert.h"
#include "core/timers.h"
#include "core/trace.h"
#include "refine/neighbours.h"

struct FmRules {
    bool constrained; // candidates must fit
    bool exact;       // exact gains and early exit; the best point has no tie-break on balance
};
constexpr FmRules FM = {false, false}, FM2 = {true, false};
constexpr FmRules EEFM = {false, true}, EEFM2 = {true, true};

template <FmRules R>
[[gnu::cold]] static void trace_start(const PartCtrl *ctrl, const HGraph *graph, const FmWork *work)
{
    const int queued[2] = {work->queues[0].nnodes, work->queues[1].nnodes};
    const int cut = cut_of_counts(graph, work);
    if (R.exact)
        print_trace(ctrl, "Partitions: [%6d,%8d]  [%6d,%8d], Initial Cut: %8d [%d] [%d]\n",
                    queued[0], work->pwgts[0], queued[1], work->pwgts[1], work->initcut, cut,
                    work->minpwgts[0]);
    else if (R.constrained)
        print_trace(ctrl, "Partitions2: [%6d,%8d]  [%6d,%8d], Initial Cut: %8d [%d] [%d %d]\n",
                    queued[0], work->pwgts[0], queued[1], work->pwgts[1], work->initcut, cut,
                    work->minpwgts[0], work->minpwgts[1]);
    else
        print_trace(ctrl, "Partitions: [%6d,%8d]  [%6d,%8d], Initial Cut: %8d [%d] [%d %d]\n",
                    queued[0], work->pwgts[0], queued[1], work->pwgts[1], work->initcut, cut,
                    work->minpwgts[0], work->minpwgts[1]);
}

/* gain is the one that v had before it moved. */
template <FmRules R>
[[gnu::cold]] static void trace_move(const PartCtrl *ctrl, const HGraph *graph, const FmWork *work,
                                     int v, int from, int gain)
{
    const int *const pwgts = work->pwgts;
    const int number = original_of(work, v);
    if (R.exact)
        print_trace(ctrl, "Gains from moving %8d from %2d: %4d, \tNewcut: %d\n", number, from, gain,
                    work->newcut);
    else if (R.constrained)
        print_trace(ctrl, "Gains from moving %8d from %2d: %4d, \tNewcut: %d [%6d %6d %6d]\n",
                    number, from, gain, work->newcut, graph->cellwgt[v], pwgts[0], pwgts[1]);
    else
        print_trace(ctrl, "Gains from moving %8d from %2d: %4d, \tNewcut: %d [%6d %6d]\n", number,
                    from, gain, work->newcut, pwgts[0], pwgts[1]);
}

template <FmRules R>
[[gnu::cold]] static void trace_end(const PartCtrl *ctrl, const HGraph *graph, const FmWork *work)
{
    const int *const pwgts = work->pwgts;
    if (R.exact)
        print_trace(ctrl, "\tMinimum Cut: %8d [%8d] at %5d [%6d %6d]\n", work->mincut,
                    cut_of_counts(graph, work), work->mincutorder, pwgts[0], pwgts[1]);
    else
        print_trace(ctrl, "\tMinimum Cut: %8d at %5d [%6d %6d]\n", work->mincut, work->mincutorder,
                    pwgts[0], pwgts[1]);
}

template <FmRules R, bool Heap>
static void fm_begin_pass(PartCtrl *ctrl, const HGraph *original, const HGraph *graph, FmWork *work,
                          int pass)
{
    start_timer(ctrl, TIME_INITIALIZE);
    if (pass == 0 || (!R.exact && !work->restarted)) {
        load_sides(original, work);
        compute_gains<Heap>(graph, work);
    }
    if (!R.exact && !work->single) save_start<Heap>(graph, work);
    set_weight_bounds(ctrl, work->pwgts, work->minpwgts);
    reset_pass(work, 2);
    fill_queues<Heap>(&ctrl->random, graph, work, -1);
    HEAVY_ASSERT(work_ok(graph, work, R.exact));
    if ((ctrl->dbglvl & DBG_PASS) && pass == 0) trace_start<R>(ctrl, graph, work);
    stop_timer(ctrl, TIME_INITIALIZE);
}

/* A side's candidate, -1 when its queue is empty. */
template <FmRules R, bool Heap> static int candidate(const HGraph *graph, FmWork *work, int side)
{
    PQueue *const queue = &work->queues[side];
    if (R.constrained)
        return PQueueSeeConstraintMax(queue, room_of(work->pwgts[side], work->minpwgts[side]),
                                      graph->cellwgt);
    if (Heap) return PQueueSeeMax__(queue);
    return queue->nnodes == 0 ? PQ_NONE : bucket_top(queue);
}

/* The side that gives up its candidate when both have one: the better gain, unless that side would
 * fall below its bound; then the other, without a test of its own. Equal gains: the side with more
 * room, side 0 if neither has more. */
static int choose_side(const HGraph *graph, const FmWork *work, const int a[2], const int gain[2])
{
    const int *const pwgts = work->pwgts, *const minpwgts = work->minpwgts;
    if (gain[0] > gain[1]) return pwgts[0] - graph->cellwgt[a[0]] < minpwgts[0] ? 1 : 0;
    if (gain[0] < gain[1]) return pwgts[1] - graph->cellwgt[a[1]] < minpwgts[1] ? 0 : 1;
    const long long room0 = static_cast<long long>(pwgts[0]) - minpwgts[0];
    const long long room1 = static_cast<long long>(pwgts[1]) - minpwgts[1];
    return room0 < room1 ? 1 : 0;
}

/* Takes the next vertex to move out of its queue; -1 when both are empty. */
template <FmRules R, bool Heap>
static int fm_take_next(const HGraph *graph, FmWork *work, int *from)
{
    const int a[2] = {candidate<R, Heap>(graph, work, 0), candidate<R, Heap>(graph, work, 1)};
    if (a[0] < 0 && a[1] < 0) return -1;
    if (a[0] < 0 || a[1] < 0) {
        *from = a[0] < 0 ? 1 : 0;
    } else {
        const int gain[2] = {gain_of<Heap>(work, a[0]), gain_of<Heap>(work, a[1])};
        *from = choose_side(graph, work, a, gain);
    }
    const int v = a[*from];
    if (Heap)
        PQueueDelete(&work->queues[*from], v, gain_of<Heap>(work, v));
    else
        bucket_delete(&work->queues[*from], v);
    return v;
}

/* limit: moves above the best cut after which a pass of exact gains is left. */
template <FmRules R, bool Heap>
static void fm_moves(PartCtrl *ctrl, const HGraph *graph, FmWork *work, int limit)
{
    constexpr UpdateRules updates = {R.exact, false, true};
    start_timer(ctrl, TIME_ITERATE);
    for (int v, from; (v = fm_take_next<R, Heap>(graph, work, &from)) >= 0; work->nswaps++) {
        const int gain = gain_of<Heap>(work, v);
        work->newcut -= gain;
        work->swaps[work->nswaps] = v;
        change_side(graph, work, v, from, 1 - from);
        count_work(WORK_MOVES, 1);
        const bool best = note_best<!R.exact>(work);
        if (R.exact && !best && work->mincut < work->newcut &&
            work->nswaps - work->mincutorder > limit) {
            change_side(graph, work, v, 1 - from, from); // counts and gains were not touched yet
            break;
        }
        if (ctrl->dbglvl & DBG_MOVE) trace_move<R>(ctrl, graph, work, v, from, gain);
        if (R.exact) gain_of<Heap>(work, v) = -gain;
        update_neighbours<Heap, updates>(graph, work, v, from);
    }
    HEAVY_ASSERT(work_ok(graph, work, R.exact));
    stop_timer(ctrl, TIME_ITERATE);
}

/* Takes back the moves after the best point and keeps gains and counts exact. */
template <bool Heap> static void undo_tail(const HGraph *graph, FmWork *work)
{
    constexpr UpdateRules updates = {true, false, false};
    count_work(WORK_UNDONE, work->nswaps - 1 - work->mincutorder);
    for (int i = work->nswaps - 1; i > work->mincutorder; i--) {
        const int v = work->swaps[i], from = side_of(work, v);
        change_side(graph, work, v, from, 1 - from);
        gain_of<Heap>(work, v) = -gain_of<Heap>(work, v);
        update_neighbours<Heap, updates>(graph, work, v, from);
    }
    HEAVY_ASSERT(work_ok(graph, work, true));
}

/* Makes the moves up to the best point in the original's where, which still holds the start of the
 * pass, and takes the weights back to that point. */
static void keep_prefix(HGraph *original, const HGraph *graph, FmWork *work)
{
    for (int side = 0; side < 2; side++) work->pwgts[side] = work->initpwgts[side];
    for (int i = 0; i <= work->mincutorder; i++) {
        const int v = work->swaps[i];
        int *const where = &original->where[original_of(work, v)];
        work->pwgts[*where] -= graph->cellwgt[v];
        *where ^= 1;
        work->pwgts[*where] += graph->cellwgt[v];
    }
}

/* Making more moves again than one in so many costs more than a sweep over all pins. */
constexpr int RESTART_PART = 4;

template <FmRules R, bool Heap>
static void fm_end_pass(PartCtrl *ctrl, HGraph *original, const HGraph *graph, FmWork *work,
                        bool last)
{
    start_timer(ctrl, TIME_WRAPUP);
    if (R.exact) {
        undo_tail<Heap>(graph, work);
    } else {
        work->restarted =
            !last && !work->single && work->mincutorder < graph->ncells / RESTART_PART;
        if (work->restarted) restart_at_best<Heap>(original, graph, work);
        keep_prefix(original, graph, work);
    }
    if (ctrl->dbglvl & DBG_PASS) trace_end<R>(ctrl, graph, work);
    stop_timer(ctrl, TIME_WRAPUP);
}

template <FmRules R, bool Heap>
static void fm_passes(PartCtrl *ctrl, HGraph *original, const HGraph *graph, FmWork *work,
                      int npasses, float fraction)
{
    const int limit = trunc_int(static_cast<float>(graph->ncells) * fraction);
    for (int pass = 0; pass < npasses; pass++) {
        fm_begin_pass<R, Heap>(ctrl, original, graph, work, pass);
        fm_moves<R, Heap>(ctrl, graph, work, limit);
        const bool last = work->mincut == work->initcut || pass + 1 == npasses;
        fm_end_pass<R, Heap>(ctrl, original, graph, work, last);
        if (last) break;
    }
    if (R.exact) {
        store_sides(original, work);
        store_gains<Heap>(original, work);
    }
    original->pwgts[0] = work->pwgts[0];
    original->pwgts[1] = work->pwgts[1];
    original->mincut = work->mincut;
}

template <FmRules R>
static void fm_refine(PartCtrl *ctrl, HGraph *graph, int npasses, float fraction)
{
    if (npasses < 1) return;
    FmWork work;
    const HGraph *const refined = open_work(graph, &work, 2);
    with_form(&work, [&]<bool Heap>() {
        fm_passes<R, Heap>(ctrl, graph, refined, &work, npasses, fraction);
    });
    close_work(&work, 2);
}

void refine_fm_again(PartCtrl *ctrl, HGraph *graph, const HGraph *refined, FmWork *work,
                     int npasses, bool constrained)
{
    with_form(work, [&]<bool Heap>() {
        if (constrained)
            fm_passes<FM2, Heap>(ctrl, graph, refined, work, npasses, 0);
        else
            fm_passes<FM, Heap>(ctrl, graph, refined, work, npasses, 0);
    });
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
