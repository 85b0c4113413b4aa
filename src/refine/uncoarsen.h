/* SPDX-License-Identifier: MIT */
/* refine/uncoarsen.h: uncoarsening of one multilevel bisection. */
#ifndef ZORPEL_REFINE_UNCOARSEN_H
#define ZORPEL_REFINE_UNCOARSEN_H

#include "core/hgraph.h"
#include "core/ctrl.h"

constexpr int FM_PASSES = 10; // most that refine_whole makes

/* Carries the bisection of graph, the coarsest level of a chain, to orggraph, its finest level:
 * projects, balances and refines at every finer level, gives the islands sides, and at last puts
 * them back into orggraph's numbering. The levels above orggraph are freed. A chain of one level
 * is left as it is.
 *   ctrl  in  RType, heavycells, ubfactor, splitratio, dbglvl; charges timers
 * Errors: an unknown RType ends the process. */
void Refine__(PartCtrl *ctrl, HGraph *orggraph, HGraph *graph);

/* Carries the bisection of cgraph to its finer level and frees cgraph; islands get no side. */
void ProjectPartition__(PartCtrl *ctrl, HGraph *cgraph);

/* Refines one level with many passes: FM for ordinary levels, its constrained form for levels
 * with heavy vertices. */
void refine_whole(PartCtrl *ctrl, HGraph *graph);

#endif
