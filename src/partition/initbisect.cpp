// SPDX-License-Identifier: MIT
/* partition/initbisect.cpp: bisection of the coarsest level.
 *
 * Side 0 takes vertices in random order until it reaches its share of the weight; side 1 gets the
 * rest. Fixed vertices are dealt out first, each side getting as many as it will have parts.
 */
#include "partition/initbisect.h"

#include <cassert>

#include "core/memory.h"
#include "core/numbers.h"
#include "core/random.h"
#include "core/timers.h"
#include "core/trace.h"
#include "core/vectors.h"
#include "refine/balance.h"
#include "refine/fm.h"
#include "refine/gains.h"
#include "refine/uncoarsen.h"

constexpr int TRIALS = 10;
constexpr int TRIALS_BEFORE_POLISH = 20;
constexpr double FIXED_BIAS = 0.4; // makes the truncated share the number of the side's parts

int fixed_on_side0(const PartCtrl *ctrl, int nfixed)
{
    assert(0 <= ctrl->splitratio && ctrl->splitratio <= 1);
    const float share = static_cast<float>(nfixed) * ctrl->splitratio;
    return trunc_int(static_cast<double>(share) + FIXED_BIAS);
}

/* Fills where with a random bisection whose side 0 holds about goal0. */
static void grow_bisection(PartCtrl *ctrl, HGraph *graph, int *perm, int goal0, int nfixed0)
{
    int wgt0 = 0;
    assert(nfixed0 == 0 || (0 < nfixed0 && nfixed0 <= graph->nfixed));
    if (graph->nfixed > 0) {
        RandomPermuteFine__(&ctrl->random, perm, graph->nfixed, 1);
        for (int i = 0; i < graph->nfixed; i++) {
            const int v = perm[i];
            graph->where[v] = i < nfixed0 ? 0 : 1;
            if (i < nfixed0) wgt0 += graph->cellwgt[v];
        }
    }
    RandomPermuteFine__(&ctrl->random, perm, graph->ncells, 1);
    for (int i = 0; i < graph->ncells; i++) {
        const int v = perm[i];
        if (v < graph->nfixed) continue;
        graph->where[v] = wgt0 < goal0 ? 0 : 1;
        if (graph->where[v] == 0) wgt0 += graph->cellwgt[v];
    }
}

void Random_FMPartition__(PartCtrl *ctrl, HGraph *graph)
{
    assert(graph->where == nullptr || graph->ncells == 0);
    AllocateRefinementMemory__(graph);
    if (graph->ncells == 0) return;
    const size_t n = static_cast<size_t>(graph->ncells);
    int *perm = imalloc__(n, "Random_FMPartition: perm");
    int *bestwhere = imalloc__(n, "Random_FMPartition: graph->where");
    const int total = iasum__(graph->ncells, graph->cellwgt);
    const int goal0 = trunc_int(static_cast<float>(total) * ctrl->splitratio);
    const int nfixed0 = fixed_on_side0(ctrl, graph->nfixed);
    const int ntrials = ctrl->kwayrefine ? TRIALS_BEFORE_POLISH : TRIALS;
    FmSession *const session = open_fm_session(graph);
    int bestcut = 0;
    assert(ntrials > 0);
    for (int trial = 0; trial < ntrials; trial++) {
        grow_bisection(ctrl, graph, perm, goal0, nfixed0);
        Balance__(ctrl, graph);
        refine_in_session(ctrl, session, FM_PASSES, ctrl->heavycells);
        if (ctrl->dbglvl & DBG_INIT)
            print_trace(ctrl, "%5d %5d %5d\n", graph->pwgts[0], graph->pwgts[1], graph->mincut);
        if (trial > 0 && graph->mincut >= bestcut) continue;
        bestcut = graph->mincut;
        icopy__(graph->ncells, graph->where, bestwhere);
    }
    close_fm_session(session);
    if (ctrl->dbglvl & DBG_INIT) print_trace(ctrl, "Bestcut Icut: %5d\n", bestcut);
    icopy__(graph->ncells, bestwhere, graph->where);
    graph->mincut = bestcut;
    QXfree__(&perm, &bestwhere, LTERM);
}

void InitPartition__(PartCtrl *ctrl, HGraph *graph)
{
    const int dbglvl = ctrl->dbglvl;
    ctrl->dbglvl &= ~(DBG_PASS | DBG_MOVE);
    start_timer(ctrl, TIME_INITPARTITION);
    Random_FMPartition__(ctrl, graph);
    stop_timer(ctrl, TIME_INITPARTITION);
    ctrl->dbglvl = dbglvl;
}
