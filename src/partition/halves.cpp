// SPDX-License-Identifier: MIT
/* partition/halves.cpp: the two halves of a bisection side by side, in two threads.
 *
 * Each bisection seeds its generator, so a half's result does not depend on what was done before:
 * whoever is first, the bits are the same. The right half gets a thread and a copy of the control
 * record; the left one stays here. What the right half leaves in its copy is what one thread would
 * have left at this point. The halves write to different places of part, and share nothing else.
 * A thread that cannot be had is no error: the halves then come one after the other.
 */
#include "partition/halves.h"

#include <cassert>
#include <cstdio>

#include "core/heavy_assert.h"
#include "core/timers.h"
#include "core/trace.h"
#include "partition/recursive.h"

static bool take_thread(Crew *crew)
{
    int idle = crew->idle.load();
    while (idle > 0)
        if (crew->idle.compare_exchange_weak(idle, idle - 1)) return true;
    return false;
}

static void give_back(Crew *crew)
{
    crew->idle++;
    HEAVY_ASSERT(crew_ok(crew));
}

static void partition_half(void *what)
{
    Half *const half = static_cast<Half *>(what);
    half->cut = MLRB__(&half->ctrl, half->graph, half->part, half->k, half->offset);
    give_back(half->ctrl.crew);
}

static bool worth_a_thread(const Crew *crew, const HGraph *lgraph, const HGraph *rgraph)
{
    assert(crew->least_pins >= 0 && lgraph->netptr[0] == 0 && rgraph->netptr[0] == 0);
    return lgraph->netptr[lgraph->nnets] >= crew->least_pins &&
           rgraph->netptr[rgraph->nnets] >= crew->least_pins;
}

static bool keeps_traces_back(const PartCtrl *ctrl)
{
    return ctrl->crew->ordered && ctrl->dbglvl != 0;
}

/* Starts the half's thread, with a file for its traces if they have to wait. */
static void *start_half(Half *half)
{
    PartCtrl *const ctrl = &half->ctrl;
    InitTimers__(ctrl);
    const bool back = keeps_traces_back(ctrl);
    if (back && (ctrl->traces = tmpfile()) == nullptr) return nullptr;
    void *const thread = ctrl->crew->start(partition_half, half);
    if (thread == nullptr && back) fclose(ctrl->traces);
    return thread;
}

/* Waits for the half's thread; another one may be at work meanwhile. */
static void await_half(Crew *crew, void *thread)
{
    give_back(crew);
    crew->await(thread);
    crew->idle--;
}

static void append_traces(const PartCtrl *ctrl, FILE *file)
{
    char block[4096];
    rewind(file);
    for (size_t got; (got = fread(block, 1, sizeof block, file)) > 0;)
        write_trace(ctrl, block, got);
    fclose(file);
}

/* Makes ctrl what it would be had it gone through the half itself; splitratio is 0.5 at the end of
 * either half. */
static void take_over(PartCtrl *ctrl, const Half *half)
{
    const PartCtrl *const other = &half->ctrl;
    for (int i = 0; i < NTIMERS; i++) ctrl->timers[i] += other->timers[i];
    ctrl->random = other->random;
    ctrl->MaxCellWgt = other->MaxCellWgt;
    ctrl->heavycells = other->heavycells;
    if (keeps_traces_back(ctrl)) append_traces(ctrl, other->traces);
}

bool partition_side_by_side(PartCtrl *ctrl, HGraph *lgraph, HGraph *rgraph, int *part, int left,
                            int right, int offset, long long *cut)
{
    Crew *const crew = ctrl->crew;
    assert(ctrl->random.own && left > 1 && right > 1);
    if (!worth_a_thread(crew, lgraph, rgraph) || !take_thread(crew)) return false;
    Half half = {*ctrl, rgraph, part, right, offset + left, 0};
    void *const thread = start_half(&half);
    if (thread == nullptr) {
        give_back(crew);
        return false;
    }
    *cut = MLRB__(ctrl, lgraph, part, left, offset);
    await_half(crew, thread);
    *cut += half.cut;
    assert(half.cut >= 0 && half.ctrl.crew == crew);
    take_over(ctrl, &half);
    return true;
}
