// SPDX-License-Identifier: MIT
/* bench/stage_clock.cpp: the engine's timers with each second charged to one stage.
 *
 * Stands in for core/timers.cpp in the staged library. The engine's own timers overlap, and the
 * initial bisection charges those of refinement; here the innermost running timer is charged, and
 * all that runs inside the initial bisection is the initial bisection's. During k-way refinement,
 * whose ubfactor is a ratio to the average and not a fraction, everything but coarsening is k-way.
 * True between calls: running[0..depth-1] are the timers that run, the innermost last; stage is
 * theirs, and charged up to the moment since.
 */
#include <cassert>
#include <ctime>

#include "core/timers.h"

enum Stage {
    STAGE_MATCHING, // with all of coarsening that is not contraction
    STAGE_CONTRACTION,
    STAGE_INITIAL,
    STAGE_FILL,     // gains from scratch, queues filled
    STAGE_MOVES,    // moves and the updates that follow
    STAGE_ROLLBACK, // undoing the moves after the best point
    STAGE_REFINEMENT_REST,
    STAGE_KWAY,
    STAGE_OTHER, // copies, pruning, splitting, choice among runs
    NSTAGES
};
static const char *const stage_names[NSTAGES] = {
    "matching", "contraction",     "initial", "fill", "moves",
    "rollback", "refinement_rest", "kway",    "other"};

constexpr int MOST_RUNNING = 32;

static double charged[NSTAGES];
static Timer running[MOST_RUNNING];
static int depth;
static Stage stage;
static double since;

double seconds__()
{
    timespec time;
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) + 1e-9 * static_cast<double>(time.tv_nsec);
}

static Stage stage_of(Timer timer, bool kway)
{
    switch (timer) {
    case TIME_AUX1:
    case TIME_AUX3:
    case TIME_AUX4:
    case TIME_COARSENING:
        return STAGE_MATCHING;
    case TIME_AUX2:
        return STAGE_CONTRACTION;
    case TIME_INITIALIZE:
        return kway ? STAGE_KWAY : STAGE_FILL;
    case TIME_ITERATE:
        return kway ? STAGE_KWAY : STAGE_MOVES;
    case TIME_WRAPUP:
        return STAGE_ROLLBACK;
    case TIME_REFINEMENT:
    case TIME_UNCOARSENING:
    case TIME_PROJECTION:
        return kway ? STAGE_KWAY : STAGE_REFINEMENT_REST;
    default:
        return kway ? STAGE_KWAY : STAGE_OTHER;
    }
}

static Stage current_stage(const PartCtrl *ctrl)
{
    for (int i = 0; i < depth; i++)
        if (running[i] == TIME_INITPARTITION) return STAGE_INITIAL;
    return depth == 0 ? STAGE_OTHER : stage_of(running[depth - 1], ctrl->ubfactor >= 1);
}

static void charge()
{
    const double now = seconds__();
    if (depth > 0) charged[stage] += now - since;
    since = now;
}

void InitTimers__(PartCtrl *ctrl)
{
    for (double &timer : ctrl->timers) timer = 0;
    for (double &seconds : charged) seconds = 0;
}

void start_timer(PartCtrl *ctrl, Timer timer)
{
    if ((ctrl->dbglvl & DBG_TIME) == 0) return;
    charge();
    assert(depth < MOST_RUNNING);
    running[depth++] = timer;
    stage = current_stage(ctrl);
}

void stop_timer(PartCtrl *ctrl, [[maybe_unused]] Timer timer)
{
    if ((ctrl->dbglvl & DBG_TIME) == 0) return;
    charge();
    assert(depth > 0 && running[depth - 1] == timer);
    depth--;
    stage = current_stage(ctrl);
}

void PrintTimers__(const PartCtrl *, int)
{
}

/* For zorpel-time, see stages.h. */
extern "C" [[gnu::visibility("default")]] int zorpel_stage_seconds(const double **seconds,
                                                                   const char *const **names)
{
    *seconds = charged;
    *names = stage_names;
    return NSTAGES;
}
