// SPDX-License-Identifier: MIT
/* partition/bisection.cpp: one multilevel bisection.
 *
 * What the runs of a bisection are made of: the coarsest level is bisected by growing a side,
 * uncoarsening refines by FM, V-cycles keep the sides apart, and the objective is the cut. Runs and
 * the choice of the best are common to all objectives (runs.cpp). The cut is measured once more at
 * the end; one that differs is printed, which only hyperedges of one vertex can bring about.
 * Source: Hendrickson & Leland, A multilevel algorithm for partitioning graphs, SC 1995.
 */
#include "partition/bisection.h"

#include <cassert>
#include <algorithm>

#include "core/heavy_assert.h"
#include "core/trace.h"
#include "partition/initbisect.h"
#include "partition/runs.h"
#include "partition/vcycle.h"
#include "refine/gains.h"
#include "refine/uncoarsen.h"

int ComputeActualCut__(const HGraph *graph, const int *where)
{
    assert(graph->nnets >= 0 && (graph->ncells <= 0 || where != nullptr));
    int cut = 0;
    for (int e = 0; e < graph->nnets; e++)
        if (end_of_part(graph, where, e) < graph->netptr[e + 1]) cut += graph->netwgt[e];
    return cut;
}

float ComputeBalance__(const HGraph *graph, const int *where)
{
    assert(graph->ncells <= 0 || where != nullptr);
    int pwgts[2] = {0, 0};
    for (int v = 0; v < graph->ncells; v++) pwgts[where[v]] += graph->cellwgt[v];
    return static_cast<float>(static_cast<double>(std::min(pwgts[0], pwgts[1])) /
                              (pwgts[0] + pwgts[1]));
}

int VCycleRefinement__(PartCtrl *ctrl, HGraph *graph, int nvcycles)
{
    assert(graph->nislands == 0);
    static const VCycleKind kind = {&HGraph::mincut, Refine__, false};
    return run_vcycles(ctrl, graph, nvcycles, &kind);
}

static void adopt_cut(HGraph *graph, const HGraph *sgraph)
{
    graph->mincut = sgraph->mincut;
}

static int measure_cut(const PartCtrl *, const HGraph *graph, const int *where)
{
    return ComputeActualCut__(graph, where);
}

static void allocate_bisection(PartCtrl *, HGraph *graph)
{
    AllocateRefinementMemory__(graph);
}

static void vcycle_bisection(PartCtrl *ctrl, HGraph *graph)
{
    VCycleRefinement__(ctrl, graph, VCYCLES);
}

static float balance_of(const PartCtrl *, const HGraph *graph, const int *where)
{
    return ComputeBalance__(graph, where);
}

static void trace_header(const PartCtrl *ctrl, const HGraph *graph)
{
    print_trace(ctrl, "\n  Bisecting a hgraph of size [vertices=%d, hedges=%d, balance=%4.2f]\n",
                graph->ncells, graph->nnets, static_cast<double>(ctrl->splitratio));
}

static void trace_trial(const PartCtrl *ctrl, int run, const HGraph *sgraph)
{
    print_trace(ctrl, "    Cut of trial %4d:\t %6d ", run, sgraph->mincut);
}

static void trace_run(const PartCtrl *ctrl, int run, const HGraph *graph, float balance)
{
    print_trace(ctrl, "    Cut of trial %4d:\t %6d [%4.2f]\n", run, graph->mincut,
                static_cast<double>(balance));
}

static void trace_summary(const PartCtrl *ctrl, int best, double average, float balance)
{
    print_trace(ctrl,
                "    The mincut for this bisection = %d, (average = %3.1f) (balance = %4.2f)\n",
                best, average, static_cast<double>(balance));
}

static const RunScheme BISECTION = {
    .value = &HGraph::mincut,
    .startfactor = 1,
    .kept_few = 1,
    .kept_many = 3,
    .initial = InitPartition__,
    .uncoarsen = Refine__,
    .adopt_values = adopt_cut,
    .measure = measure_cut,
    .allocate = allocate_bisection,
    .refine = refine_whole,
    .vcycles = vcycle_bisection,
    .balance = balance_of,
    .trace_header = trace_header,
    .trace_trial = trace_trial,
    .trace_run = trace_run,
    .trace_summary = trace_summary,
};

int Hypergraph_Bisection__(PartCtrl *ctrl, HGraph *graph, int *part)
{
    assert(0 <= ctrl->splitratio && ctrl->splitratio <= 1 && graph->nislands == 0);
    HEAVY_ASSERT(ctrl_ok(ctrl));
    const int bestcut = best_of_runs(ctrl, graph, part, &BISECTION);
    const int actual = ComputeActualCut__(graph, part);
    if (actual != bestcut) print_trace(ctrl, "Wrong cut! %d %d\n", bestcut, actual);
    return bestcut;
}
