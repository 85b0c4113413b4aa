/* SPDX-License-Identifier: MIT */
/* spare/direct.h: direct multilevel k-way partitioning. */
#ifndef ZORPEL_SPARE_DIRECT_H
#define ZORPEL_SPARE_DIRECT_H

#include "core/hgraph.h"
#include "core/ctrl.h"

/* Partitions graph into ctrl->nparts parts in one multilevel sweep: coarsens once, partitions the
 * coarsest level, refines k-way on the way back. A library routine without a caller in the tool.
 *   ctrl   in   RType (1 cut, 2 sum of external degrees), Nruns, VCycle, CType, nparts, and
 *               ubfactor as a ratio >= 1: heaviest part allowed over the average
 *   graph  in   lists, weights, nfixed; gets incidence
 *   part   out  [ncells]
 * Returns the objective. Errors: an unknown RType ends the process. */
int MultilevelKwayPartition__(PartCtrl *ctrl, HGraph *graph, int *part);

/* Partitions the coarsest level by recursive bisection and k-way refinement. */
void InitPartitionKway__(PartCtrl *ctrl, HGraph *cgraph);

/* Heaviest part over the average part: 1 is perfect balance. */
float ComputeBalanceKway__(const PartCtrl *ctrl, const HGraph *graph, const int *where);

/* Sum over the cut hyperedges of their weight times the number of parts that they touch. */
int ComputeActualSOED__(const HGraph *graph, const int *where);

#endif
