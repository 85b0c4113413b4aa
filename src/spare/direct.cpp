// SPDX-License-Identifier: MIT
/* spare/direct.cpp: direct multilevel k-way partitioning.
 *
 * The coarsest level is partitioned by recursive bisection and refined; the finer ones are refined
 * k-way for the cut or for the sum of external degrees. Runs, V-cycles and the choice of the best
 * are those of bisection, see partition/runs.h.
 */
#include "spare/direct.h"

#include <cassert>

#include "core/memory.h"
#include "core/timers.h"
#include "core/trace.h"
#include "core/vectors.h"
#include "kway/kway_gains.h"
#include "kway/uncoarsen_kway.h"
#include "kway/refine_random.h"
#include "partition/bisection.h"
#include "partition/runs.h"
#include "partition/vcycle.h"
#include "zorpel.h"

float ComputeBalanceKway__(const PartCtrl *ctrl, const HGraph *graph, const int *where)
{
    const int nparts = ctrl->nparts;
    int *kpwgts = ismalloc__(static_cast<size_t>(nparts), 0, "ComputeBalanceKway: kpwgts");
    assert(nparts > 0);
    for (int v = 0; v < graph->ncells; v++) kpwgts[where[v]] += graph->cellwgt[v];
    const double heaviest = kpwgts[iamax__(nparts, kpwgts)];
    const float balance =
        static_cast<float>(nparts * heaviest / static_cast<double>(iasum__(nparts, kpwgts)));
    QXfree__(&kpwgts, LTERM);
    return balance;
}

int ComputeActualSOED__(const HGraph *graph, const int *where)
{
    if (graph->ncells < 1) return 0;
    const int nparts = where[iamax__(graph->ncells, where)] + 1;
    int *htable = ismalloc__(static_cast<size_t>(nparts), -1, "htable");
    unsigned soed = 0; // wraps if it must
    for (int e = 0; e < graph->nnets; e++) {
        unsigned lambda = 0;
        for (int j = graph->netptr[e]; j < graph->netptr[e + 1]; j++) {
            const int p = where[graph->netind[j]];
            assert(0 <= p && p < nparts);
            if (htable[p] == e) continue;
            htable[p] = e;
            lambda++;
        }
        if (lambda > 1) soed += lambda * static_cast<unsigned>(graph->netwgt[e]);
    }
    QXfree__(&htable, LTERM);
    return static_cast<int>(soed);
}

void InitPartitionKway__(PartCtrl *ctrl, HGraph *cgraph)
{
    // two runs of first choice without V-cycles, tightest balance, seeded from the clock
    static const int options[ZORPEL_NOPTIONS] = {
        1, 2, ZORPEL_CTYPE_FC, ZORPEL_RTYPE_FM, ZORPEL_VCYCLE_NO, 0, 0, -1, 0};
    start_timer(ctrl, TIME_INITPARTITION);
    int *bestwhere = imalloc__(static_cast<size_t>(cgraph->ncells), "InitPartitionKway: bestwhere");
    AllocateKwayRefinementMemory__(ctrl, cgraph);
    int edgecut;
    ZORPEL_PartRecursiveInternal(cgraph->ncells, cgraph->nnets, cgraph->cellwgt, cgraph->netptr,
                                 cgraph->netind, cgraph->netwgt, ctrl->nparts, 1, options,
                                 bestwhere, &edgecut);
    icopy__(cgraph->ncells, bestwhere, cgraph->where);
    refine_objective(ctrl, cgraph, KwayRecords::current);
    if (ctrl->dbglvl & DBG_INIT)
        print_trace(ctrl, "%d-way initial %s: %d\n", ctrl->nparts,
                    kway_objective(ctrl) == OBJECTIVE_CUT ? "cut" : "soed", cgraph->objval);
    QXfree__(&bestwhere, LTERM);
    stop_timer(ctrl, TIME_INITPARTITION);
}

static void adopt_values(HGraph *graph, const HGraph *sgraph)
{
    graph->mincut = sgraph->mincut;
    graph->minsoed = sgraph->minsoed;
    graph->objval = sgraph->objval;
}

static int measure(const PartCtrl *ctrl, const HGraph *graph, const int *where)
{
    return kway_objective(ctrl) == OBJECTIVE_CUT ? ComputeActualCut__(graph, where)
                                                 : ComputeActualSOED__(graph, where);
}

static void allocate(PartCtrl *ctrl, HGraph *graph)
{
    AllocateKwayRefinementMemory__(ctrl, graph);
}

static void refine_whole_kway(PartCtrl *ctrl, HGraph *graph)
{
    const KwayObjective objective =
        kway_objective(ctrl) == OBJECTIVE_CUT ? OBJECTIVE_CUT : OBJECTIVE_SOED;
    refine_kway_random(ctrl, graph, KWAY_PASSES, objective, KwayRecords::dropped);
}

static void vcycle_kway(PartCtrl *ctrl, HGraph *graph)
{
    VCycleRefinementKway__(ctrl, graph, VCYCLES);
}

static void trace_header(const PartCtrl *ctrl, const HGraph *graph)
{
    print_trace(ctrl, "\n  Partitioning a hgraph of size [vertices=%d, hedges=%d, balance=%4.2f]\n",
                graph->ncells, graph->nnets, static_cast<double>(part_ratio(ctrl)));
}

static void trace_trial(const PartCtrl *ctrl, int run, const HGraph *sgraph)
{
    print_trace(ctrl, "    Cut/SOED of trial %4d:\t %6d %6d", run, sgraph->mincut, sgraph->minsoed);
}

static void trace_run(const PartCtrl *ctrl, int run, const HGraph *graph, float balance)
{
    print_trace(ctrl, "    Cut/SOED of trial %4d:\t %6d %6d [%4.2f]\n", run, graph->mincut,
                graph->minsoed, static_cast<double>(balance));
}

static void trace_summary(const PartCtrl *ctrl, int best, double average, float balance)
{
    print_trace(ctrl,
                "    The %s for this partitioning = %d, (average = %3.1f) (balance = %4.2f)\n",
                kway_objective(ctrl) == OBJECTIVE_CUT ? "mincut" : "minsoed", best, average,
                static_cast<double>(balance));
}

static const RunScheme DIRECT = {
    .value = &HGraph::objval,
    .startfactor = 10, // the sum of external degrees can exceed the total weight
    .kept_few = 2,
    .kept_many = 3,
    .initial = InitPartitionKway__,
    .uncoarsen = RefineKway__,
    .adopt_values = adopt_values,
    .measure = measure,
    .allocate = allocate,
    .refine = refine_whole_kway,
    .vcycles = vcycle_kway,
    .balance = ComputeBalanceKway__,
    .trace_header = trace_header,
    .trace_trial = trace_trial,
    .trace_run = trace_run,
    .trace_summary = trace_summary,
};

int MultilevelKwayPartition__(PartCtrl *ctrl, HGraph *graph, int *part)
{
    return best_of_runs(ctrl, graph, part, &DIRECT);
}
