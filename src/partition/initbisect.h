/* SPDX-License-Identifier: MIT */
/* partition/initbisect.h: bisection of the coarsest level. */
#ifndef ZORPEL_PARTITION_INITBISECT_H
#define ZORPEL_PARTITION_INITBISECT_H

#include "core/hgraph.h"
#include "core/ctrl.h"

/* Bisects a level from scratch into where and mincut (pwgts is stale), allocating its refinement
 * arrays; passes and moves are not traced. Charges "Initial Partition". */
void InitPartition__(PartCtrl *ctrl, HGraph *graph);

/* The best of 20 random bisections (10 without kwayrefine), each grown in random order up to side
 * 0's share of the weight, balanced and refined; the earliest one on ties. */
void Random_FMPartition__(PartCtrl *ctrl, HGraph *graph);

/* How many of the leading fixed vertices belong on side 0, the side with splitratio of the parts.
 */
int fixed_on_side0(const PartCtrl *ctrl, int nfixed);

#endif
