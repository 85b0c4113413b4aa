/* SPDX-License-Identifier: MIT */
/* refine/balance.h: greedy repair of an unbalanced bisection. */
#ifndef ZORPEL_REFINE_BALANCE_H
#define ZORPEL_REFINE_BALANCE_H

#include "core/hgraph.h"
#include "core/ctrl.h"

/* Moves vertices, best gain first, onto the side that is below its lower bound until both sides
 * keep theirs or none can move; accepts any loss of cut. Within bounds already: only pwgts is
 * recomputed. Otherwise where, pwgts, mincut, gain and ndeg are exact on return.
 *   ctrl   in  ubfactor, splitratio, dbglvl; charges timers
 * Needs AllocateRefinementMemory__ and a bisection in where. */
void Balance__(PartCtrl *ctrl, HGraph *graph);

#endif
