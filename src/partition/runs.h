/* SPDX-License-Identifier: MIT */
/* partition/runs.h: independent multilevel runs of one hypergraph, the best one kept. */
#ifndef ZORPEL_PARTITION_RUNS_H
#define ZORPEL_PARTITION_RUNS_H

#include "core/hgraph.h"
#include "core/ctrl.h"

/* What a run minimises and how: bisection and direct k-way partitioning fill one each. */
struct RunScheme {
    int HGraph::*value;      // field of the objective
    long long startfactor;   // the best value starts at this times the total netwgt, plus 1
    int kept_few, kept_many; // candidates for V-cycles at the end: up to 10 runs, and beyond

    /* Partitions the coarsest level. */
    void (*initial)(PartCtrl *ctrl, HGraph *coarsest);
    /* Carries the partition of coarsest to graph. */
    void (*uncoarsen)(PartCtrl *ctrl, HGraph *graph, HGraph *coarsest);
    /* Copies the values of sgraph's partition, which graph takes over as it is. */
    void (*adopt_values)(HGraph *graph, const HGraph *sgraph);
    /* The objective of where, from scratch. */
    int (*measure)(const PartCtrl *ctrl, const HGraph *graph, const int *where);
    /* Allocates graph's refinement arrays, where included. */
    void (*allocate)(PartCtrl *ctrl, HGraph *graph);
    /* Refines graph's where on the whole hypergraph. */
    void (*refine)(PartCtrl *ctrl, HGraph *graph);
    void (*vcycles)(PartCtrl *ctrl, HGraph *graph);
    float (*balance)(const PartCtrl *ctrl, const HGraph *graph, const int *where);

    void (*trace_header)(const PartCtrl *ctrl, const HGraph *graph);
    void (*trace_trial)(const PartCtrl *ctrl, int run, const HGraph *sgraph);
    void (*trace_run)(const PartCtrl *ctrl, int run, const HGraph *graph, float balance);
    void (*trace_summary)(const PartCtrl *ctrl, int best, double average, float balance);
};

/* Makes ctrl->Nruns runs on graph without its large hyperedges, refines each on the whole of it,
 * applies V-cycles as ctrl->VCycle says, and writes the best partition into part [ncells].
 * Returns its value; ties keep the earlier run. Seeds the generator. */
int best_of_runs(PartCtrl *ctrl, HGraph *graph, int *part, const RunScheme *scheme);

#endif
