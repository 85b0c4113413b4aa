/* SPDX-License-Identifier: MIT */
/* partition/bisection.h: one multilevel bisection. */
#ifndef ZORPEL_PARTITION_BISECTION_H
#define ZORPEL_PARTITION_BISECTION_H

#include "core/hgraph.h"
#include "core/ctrl.h"

/* Bisects graph so that side 0 holds ctrl->splitratio of the weight within ctrl->ubfactor.
 *   graph  in   lists, weights, nfixed; gets incidence
 *   part   out  [ncells] side of each vertex in the best bisection of ctrl->Nruns runs
 * Returns its cut. Seeds the generator. */
int Hypergraph_Bisection__(PartCtrl *ctrl, HGraph *graph, int *part);

/* Improves graph's bisection (where, mincut) by at most nvcycles V-cycles; returns mincut. */
int VCycleRefinement__(PartCtrl *ctrl, HGraph *graph, int nvcycles);

/* Total weight of the hyperedges whose vertices are not all in one part of where. */
int ComputeActualCut__(const HGraph *graph, const int *where);

/* Share of the lighter side in the weight: 0.5 is perfect balance. */
float ComputeBalance__(const HGraph *graph, const int *where);

#endif
