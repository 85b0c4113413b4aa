// SPDX-License-Identifier: MIT
/* refine/fm.cpp: Fiduccia-Mattheyses refinement, one loop for four variants.
 *
 * A pass moves the best-gain vertex that the balance rule allows, over and over, and then goes back
 * to the best balanced point. The variants differ in two choices: whether a side's candidate must
 * fit into its room (constrained), and whether gains are kept exact through the way back so that a
 * pass may be left early (exact).
 *     fm_begin_pass   gains, bounds, queues
 *     fm_moves        until the queues are empty, or past the limit
 *     fm_end_pass     undo the tail (exact), or keep the first moves only
 * True between moves: the open bisection holds (B1 to B9); queue s has the unmoved free vertices of
 * side s; steps 0..nswaps-1 of the pass are its moves in order. Without exact gains the level's
 * where keeps the start of the pass until its end.
 * Source: Fiduccia & Mattheyses, DAC 1982.
 */
#include "refine/fm.h"

#include <cassert>

#include "core/heavy_assert.h"
#include "core/memory.h"
#include "core/timers.h"
#include "core/trace.h"
#include "refine/fm_pass.h"
#include "refine/move_vertex.h"

struct FmRules {
    bool constrained; // candidates must fit
    bool exact;       // exact gains and early exit; the best point has no tie-break on balance
};
constexpr FmRules FM = {.constrained = false, .exact = false};
constexpr FmRules FM2 = {.constrained = true, .exact = false};
constexpr FmRules EEFM = {.constrained = false, .exact = true};
constexpr FmRules EEFM2 = {.constrained = true, .exact = true};

/* ---- the moves of a pass ---- */

/* A side's candidate, -1 when its queue is empty. */
template <FmRules R, class Queue>
static int candidate(OpenBisection<Queue> *b, const FmPass *pass, int side)
{
    Queue *const queue = &b->queues[side];
    if (!R.constrained) return queue_top(queue);
    return queue_fitting_top(queue, room_of(b->pwgts[side], pass->minpwgts[side]),
                             b->level->cellwgt);
}

/* The side that gives up its candidate when both have one: the better gain, unless that side would
 * fall below its bound; then the other, without a test of its own. Equal gains: the side with more
 * room, side 0 if neither has more. */
template <class Queue>
static int choose_side(const OpenBisection<Queue> *b, const FmPass *pass, const int a[2])
{
    const int *const pwgts = b->pwgts, *const minpwgts = pass->minpwgts;
    const int *const cellwgt = b->level->cellwgt;
    assert(side_of(b, a[0]) == 0 && side_of(b, a[1]) == 1);
    const int gain[2] = {gain_of(b, a[0]), gain_of(b, a[1])};
    if (gain[0] > gain[1]) return pwgts[0] - cellwgt[a[0]] < minpwgts[0] ? 1 : 0;
    if (gain[0] < gain[1]) return pwgts[1] - cellwgt[a[1]] < minpwgts[1] ? 0 : 1;
    const long long room0 = static_cast<long long>(pwgts[0]) - minpwgts[0];
    const long long room1 = static_cast<long long>(pwgts[1]) - minpwgts[1];
    return room0 < room1 ? 1 : 0;
}

/* Takes the next vertex to move out of its queue; -1 when both are empty. */
template <FmRules R, class Queue>
static int fm_take_next(OpenBisection<Queue> *b, const FmPass *pass)
{
    const int a[2] = {candidate<R>(b, pass, 0), candidate<R>(b, pass, 1)};
    if (a[0] < 0 && a[1] < 0) return -1;
    const int from = a[0] < 0 ? 1 : a[1] < 0 ? 0 : choose_side(b, pass, a);
    assert(a[from] >= b->level->nfixed && side_of(b, a[from]) == from);
    queue_delete(&b->queues[from], a[from]);
    return a[from];
}

/* gain is the one that v had before it moved. */
template <FmRules R, class Queue>
[[gnu::cold]] static void trace_move(const PartCtrl *ctrl, const OpenBisection<Queue> *b, int v,
                                     int gain)
{
    const int *const pwgts = b->pwgts;
    const int number = original_of(b, v), from = 1 - side_of(b, v);
    if (R.exact)
        print_trace(ctrl, "Gains from moving %8d from %2d: %4d, \tNewcut: %d\n", number, from, gain,
                    b->cut);
    else if (R.constrained)
        print_trace(ctrl, "Gains from moving %8d from %2d: %4d, \tNewcut: %d [%6d %6d %6d]\n",
                    number, from, gain, b->cut, b->level->cellwgt[v], pwgts[0], pwgts[1]);
    else
        print_trace(ctrl, "Gains from moving %8d from %2d: %4d, \tNewcut: %d [%6d %6d]\n", number,
                    from, gain, b->cut, pwgts[0], pwgts[1]);
}

/* Whether a pass of exact gains ends before a step to this cut: it has been above the best one for
 * more than limit moves. */
static bool past_limit(const FmPass *pass, int cut, int limit)
{
    return pass->mincut < cut && pass->nswaps - pass->mincutorder > limit;
}

template <FmRules R, class Queue>
static void fm_moves(PartCtrl *ctrl, OpenBisection<Queue> *b, FmPass *pass, int limit)
{
    constexpr MoveRules rules = R.exact ? ALL_GAINS : QUEUED_GAINS;
    start_timer(ctrl, TIME_ITERATE);
    for (int v; (v = fm_take_next<R>(b, pass)) >= 0;) {
        const int gain = gain_of(b, v);
        count_work(WORK_MOVES, 1);
        if (R.exact && past_limit(pass, b->cut - gain, limit)) break;
        note_step(pass, v, b->level->ncells);
        move_vertex<rules>(b, v);
        note_best<!R.exact>(pass, b);
        if (ctrl->dbglvl & DBG_MOVE) trace_move<R>(ctrl, b, v, gain);
    }
    HEAVY_ASSERT(bisection_ok(b, rules));
    stop_timer(ctrl, TIME_ITERATE);
}

/* ---- the start of a pass ---- */

template <FmRules R, class Queue>
[[gnu::cold]] static void trace_start(const PartCtrl *ctrl, const OpenBisection<Queue> *b,
                                      const FmPass *pass)
{
    const int *const pwgts = b->pwgts, *const minpwgts = pass->minpwgts;
    const int queued[2] = {b->queues[0].nnodes, b->queues[1].nnodes};
    const int cut = cut_of_counts(b);
    if (R.exact)
        print_trace(ctrl, "Partitions: [%6d,%8d]  [%6d,%8d], Initial Cut: %8d [%d] [%d]\n",
                    queued[0], pwgts[0], queued[1], pwgts[1], pass->initcut, cut, minpwgts[0]);
    else if (R.constrained)
        print_trace(ctrl, "Partitions2: [%6d,%8d]  [%6d,%8d], Initial Cut: %8d [%d] [%d %d]\n",
                    queued[0], pwgts[0], queued[1], pwgts[1], pass->initcut, cut, minpwgts[0],
                    minpwgts[1]);
    else
        print_trace(ctrl, "Partitions: [%6d,%8d]  [%6d,%8d], Initial Cut: %8d [%d] [%d %d]\n",
                    queued[0], pwgts[0], queued[1], pwgts[1], pass->initcut, cut, minpwgts[0],
                    minpwgts[1]);
}

/* Keeps the gains as those of the pass that starts. */
template <class Queue> static void save_gains(const OpenBisection<Queue> *b, FmPass *pass)
{
    const int n = b->level->ncells;
    if (pass->startgain == nullptr)
        pass->startgain = imalloc__(static_cast<size_t>(n), "FM_Refine: startgain");
    for (int v = 0; v < n; v++) pass->startgain[v] = gain_of(b, v);
}

template <FmRules R, class Queue>
static void fm_begin_pass(PartCtrl *ctrl, OpenBisection<Queue> *b, FmPass *pass, bool first)
{
    constexpr bool both[2] = {true, true};
    start_timer(ctrl, TIME_INITIALIZE);
    if (first || (!R.exact && !pass->restarted)) load_bisection(b);
    if (!R.exact && !b->single) save_gains(b, pass);
    set_weight_bounds(ctrl, b->pwgts, pass->minpwgts);
    begin_pass(pass, b);
    empty_queues(b);
    fill_queues(&ctrl->random, b, both);
    HEAVY_ASSERT(bisection_ok(b, R.exact ? ALL_GAINS : QUEUED_GAINS));
    if ((ctrl->dbglvl & DBG_PASS) && first) trace_start<R>(ctrl, b, pass);
    stop_timer(ctrl, TIME_INITIALIZE);
}

/* ---- the end of a pass ---- */

/* Takes back the moves after the best point; gains and counts stay exact. */
template <class Queue> static void undo_tail(OpenBisection<Queue> *b, const FmPass *pass)
{
    assert(pass->mincutorder < pass->nswaps || pass->nswaps == 0);
    count_work(WORK_UNDONE, pass->nswaps - 1 - pass->mincutorder);
    for (int i = pass->nswaps - 1; i > pass->mincutorder; i--) undo_vertex(b, pass->swaps[i]);
    assert(b->cut == pass->mincut);
    HEAVY_ASSERT(bisection_ok(b, ALL_GAINS_UNQUEUED));
}

/* Making more moves again than one in so many costs more than a sweep over all pins. */
constexpr int RESTART_PART = 4;

/* After a pass that moved every free vertex once: takes gains, counts and sides back to its start,
 * then makes the moves up to the best point again. They are few where a pass has many, and nothing
 * needs computing from scratch. */
template <class Queue> static void restart_at_best(OpenBisection<Queue> *b, const FmPass *pass)
{
    assert(pass->nswaps == b->level->ncells - b->level->nfixed && !b->single);
    load_sides(b);
    b->cut = pass->initcut;
    for (int v = 0; v < b->level->ncells; v++) gain_of(b, v) = pass->startgain[v];
    reverse_counts(b);
    count_work(WORK_UNDONE, pass->mincutorder + 1);
    for (int i = 0; i <= pass->mincutorder; i++) move_vertex<ALL_GAINS_UNQUEUED>(b, pass->swaps[i]);
    assert(b->cut == pass->mincut);
}

/* Makes the moves up to the best point in the level's where, which still holds the start of the
 * pass, and takes weights and cut to that point. */
template <class Queue> static void keep_prefix(OpenBisection<Queue> *b, const FmPass *pass)
{
    int *const where = b->original->where;
    assert(pass->mincutorder < pass->nswaps || pass->nswaps == 0);
    for (int side = 0; side < 2; side++) b->pwgts[side] = pass->initpwgts[side];
    for (int i = 0; i <= pass->mincutorder; i++) {
        const int v = pass->swaps[i], weight = b->level->cellwgt[v];
        int *const side = &where[original_of(b, v)];
        b->pwgts[*side] -= weight;
        *side ^= 1;
        b->pwgts[*side] += weight;
    }
    b->cut = pass->mincut;
}

template <FmRules R, class Queue>
[[gnu::cold]] static void trace_end(const PartCtrl *ctrl, const OpenBisection<Queue> *b,
                                    const FmPass *pass)
{
    const int *const pwgts = b->pwgts;
    if (R.exact)
        print_trace(ctrl, "\tMinimum Cut: %8d [%8d] at %5d [%6d %6d]\n", pass->mincut,
                    cut_of_counts(b), pass->mincutorder, pwgts[0], pwgts[1]);
    else
        print_trace(ctrl, "\tMinimum Cut: %8d at %5d [%6d %6d]\n", pass->mincut, pass->mincutorder,
                    pwgts[0], pwgts[1]);
}

template <FmRules R, class Queue>
static void fm_end_pass(PartCtrl *ctrl, OpenBisection<Queue> *b, FmPass *pass, bool last)
{
    start_timer(ctrl, TIME_WRAPUP);
    if (R.exact) {
        undo_tail(b, pass);
    } else {
        const int few = b->level->ncells / RESTART_PART;
        pass->restarted = !last && !b->single && pass->mincutorder < few;
        if (pass->restarted) restart_at_best(b, pass);
        keep_prefix(b, pass);
    }
    if (ctrl->dbglvl & DBG_PASS) trace_end<R>(ctrl, b, pass);
    stop_timer(ctrl, TIME_WRAPUP);
}

/* ---- the passes ---- */

template <FmRules R, class Queue>
static void fm_passes(PartCtrl *ctrl, OpenBisection<Queue> *b, FmPass *pass, int npasses,
                      float fraction)
{
    HGraph *const original = b->original;
    const int limit = trunc_int(static_cast<float>(original->ncells) * fraction);
    assert(npasses > 0 && fraction >= 0);
    for (int i = 0; i < npasses; i++) {
        fm_begin_pass<R>(ctrl, b, pass, i == 0);
        fm_moves<R>(ctrl, b, pass, limit);
        const bool last = pass->mincut == pass->initcut || i + 1 == npasses;
        fm_end_pass<R>(ctrl, b, pass, last);
        if (last) break;
    }
    if (R.exact) {
        store_bisection(b);
        return;
    }
    original->pwgts[0] = b->pwgts[0];
    original->pwgts[1] = b->pwgts[1];
    original->mincut = b->cut;
}

template <FmRules R>
static void fm_refine(PartCtrl *ctrl, HGraph *graph, int npasses, float fraction)
{
    if (npasses < 1) return;
    FmPass pass;
    open_pass(&pass, graph->ncells);
    with_open_bisection(graph, [&](auto *b) { fm_passes<R>(ctrl, b, &pass, npasses, fraction); });
    close_pass(&pass);
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

/* ---- many bisections of one level ---- */

struct FmSession {
    bool heap;              // which of the two is open
    BucketBisection bucket; // of the level
    HeapBisection tree;
    FmPass pass;
};

FmSession *open_fm_session(HGraph *graph)
{
    FmSession *const session = alloc_array<FmSession>(1, "FM_Refine: session");
    const int span = largest_of(graph->ncells, graph->adjwgt);
    session->heap = queue_form(graph->ncells, span) == PQ_HEAP;
    if (session->heap)
        open_bisection(&session->tree, graph, span);
    else
        open_bisection(&session->bucket, graph, span);
    open_pass(&session->pass, graph->ncells);
    return session;
}

void refine_in_session(PartCtrl *ctrl, FmSession *session, int npasses, bool constrained)
{
    const auto refine = [&](auto *b) {
        assert(b->original->where != nullptr);
        if (constrained)
            fm_passes<FM2>(ctrl, b, &session->pass, npasses, 0);
        else
            fm_passes<FM>(ctrl, b, &session->pass, npasses, 0);
    };
    if (session->heap)
        refine(&session->tree);
    else
        refine(&session->bucket);
}

void close_fm_session(FmSession *session)
{
    if (session->heap)
        close_bisection(&session->tree);
    else
        close_bisection(&session->bucket);
    close_pass(&session->pass);
    QXfree__(&session, LTERM);
}
