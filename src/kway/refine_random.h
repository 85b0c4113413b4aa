/* SPDX-License-Identifier: MIT */
/* kway/refine_random.h: greedy k-way refinement in random order. */
#ifndef ZORPEL_KWAY_REFINE_RANDOM_H
#define ZORPEL_KWAY_REFINE_RANDOM_H

#include "core/hgraph.h"
#include "core/ctrl.h"

constexpr int KWAY_PASSES = 10; // of every k-way refinement

/* Moves single vertices to other parts while that lowers the cut, or ties break in favour of a
 * move, for at most npasses sweeps in random order.
 *   ctrl   in  nparts, ubfactor (heaviest part allowed over the average), dbglvl; charges timers
 *   graph  in/out  where (islands excluded), k-way arrays allocated; records, kpwgts, mincut,
 *          minsoed and objval (= mincut) are current on return
 * Fixed vertices stay. */
void RefineCutKway_Random__(PartCtrl *ctrl, HGraph *graph, int npasses);

/* The same for the sum of external degrees; objval is minsoed. */
void RefineSOEDKway_Random__(PartCtrl *ctrl, HGraph *graph, int npasses);

/* What is left of the vertices' records. */
enum class KwayRecords { current, dropped };

/* The one or the other. Callers that free the records next let them be dropped: most are then never
 * computed. */
void refine_kway_random(PartCtrl *ctrl, HGraph *graph, int npasses, KwayObjective objective,
                        KwayRecords records);

#endif
