/* SPDX-License-Identifier: MIT */
/* coarsen/coarsen.h: the multilevel coarsening drivers. */
#ifndef ZORPEL_COARSEN_COARSEN_H
#define ZORPEL_COARSEN_COARSEN_H

#include "core/hgraph.h"
#include "core/ctrl.h"

/* Builds ever coarser levels of graph until about ctrl->CoarsenTo vertices are left or progress
 * is slow; returns the coarsest. Levels are linked by coarser and finer, level counts from 0.
 *   ctrl   in  CoarsenTo, CType (1 to 7), MaxCellWgt, maxnetsize, dbglvl; charges timers
 * Islands of each level are parked before it is matched. Needs lists, incidence and weights.
 * Errors: an unknown CType ends the process. */
HGraph *Coarsen__(PartCtrl *ctrl, HGraph *graph);

/* The same without merging vertices of different parts of where (CType 0 or 1); where moves down
 * to the coarsest level. The first level of slow progress is the last. */
HGraph *CCoarsen__(PartCtrl *ctrl, HGraph *graph);

/* Tests that the level's cutnets is what its where says (C3 of partner.h). */
bool cut_nets_ok(const HGraph *graph);

/* Hyperedges of at least four pins. */
int NumOfLargeNets__(int nnets, const int *netptr);

#endif
