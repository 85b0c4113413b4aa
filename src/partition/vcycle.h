/* SPDX-License-Identifier: MIT */
/* partition/vcycle.h: the V-cycle loop of two-way and k-way partitions. */
#ifndef ZORPEL_PARTITION_VCYCLE_H
#define ZORPEL_PARTITION_VCYCLE_H

#include "core/hgraph.h"
#include "core/ctrl.h"

constexpr int VCYCLES = 10; // most V-cycles of every loop

struct VCycleKind {
    int HGraph::*value; // field of the objective
    void (*uncoarsen)(PartCtrl *ctrl, HGraph *graph, HGraph *coarsest);
    bool shows_start; // the trace opens with the value before the first cycle
};

/* Coarsens graph within the parts of where and refines back, at most ncycles times, until two
 * cycles in a row bring no improvement; returns the objective after the last cycle. A cycle that
 * makes the partition worse stands. CoarsenTo and CType are restored. */
int run_vcycles(PartCtrl *ctrl, HGraph *graph, int ncycles, const VCycleKind *kind);

/* At most ncycles V-cycles on graph (where, objval); returns objval. No k-way arrays are left. */
int VCycleRefinementKway__(PartCtrl *ctrl, HGraph *graph, int ncycles);

#endif
