// SPDX-License-Identifier: MIT
/* partition/vcycle.cpp: the V-cycle loop of two-way and k-way partitions.
 *
 * A cycle coarsens without merging across parts and refines on the way back. Cycles alternate the
 * two restricted matchings and end once two in a row bring nothing. What a cycle makes worse stays
 * worse: the value is returned as it is, and the caller keeps its best.
 */
#include "partition/vcycle.h"

#include <cassert>

#include "coarsen/coarsen.h"
#include "core/trace.h"
#include "kway/uncoarsen_kway.h"

int run_vcycles(PartCtrl *ctrl, HGraph *graph, int ncycles, const VCycleKind *kind)
{
    const int coarsento = ctrl->CoarsenTo, ctype = ctrl->CType;
    const bool trace = (ctrl->dbglvl & DBG_DETAIL) != 0;
    assert(graph->nislands == 0 && graph->coarser == nullptr);
    ctrl->CoarsenTo = VCYCLE_COARSEN_TO;
    int best = graph->*kind->value, bestcycle = -1;
    if (trace) {
        if (kind->shows_start)
            print_trace(ctrl, "          [%d ", best);
        else
            print_trace(ctrl, "          [");
    }
    for (int cycle = 0; cycle < ncycles; cycle++) {
        ctrl->CType = cycle % 2 == 0 ? RESTRICTED_STARS : RESTRICTED_EDGES;
        kind->uncoarsen(ctrl, graph, CCoarsen__(ctrl, graph));
        assert(graph->nislands == 0 && graph->coarser == nullptr);
        if (trace) {
            print_trace(ctrl, "%d ", graph->*kind->value);
            flush_traces(ctrl);
        }
        free_cycle_arrays(graph);
        free_kway_arrays(graph);
        if (graph->*kind->value < best) {
            best = graph->*kind->value;
            bestcycle = cycle;
        } else if (cycle - bestcycle > 1) {
            break;
        }
    }
    if (trace) print_trace(ctrl, "(min = %d)]\n", graph->*kind->value);
    ctrl->CoarsenTo = coarsento;
    ctrl->CType = ctype;
    return graph->*kind->value;
}

int VCycleRefinementKway__(PartCtrl *ctrl, HGraph *graph, int ncycles)
{
    static const VCycleKind kind = {&HGraph::objval, RefineKway__, true};
    return run_vcycles(ctrl, graph, ncycles, &kind);
}
