/* SPDX-License-Identifier: MIT */
/* refine/fm.h: Fiduccia-Mattheyses refinement of a bisection and its variants. */
#ifndef ZORPEL_REFINE_FM_H
#define ZORPEL_REFINE_FM_H

#include "core/hgraph.h"
#include "core/ctrl.h"

/* Fiduccia-Mattheyses refinement of the bisection of one level.
 *   ctrl     in      ubfactor, splitratio (fractions of the weight), dbglvl; charges timers
 *   graph    in/out  where, pwgts, mincut: best bisection found; gain, ndeg: stale on return
 *   npasses  in      most passes to make; below 1 none is made and nothing changes
 * Needs   AllocateRefinementMemory__; where[0..ncells-1] holds 0 or 1.
 * Cost    O(pins) gain updates a pass. Allocated once: about 30 bytes a vertex, 24 a hyperedge and
 *         the queues' buckets; on large levels also a renumbered copy of the level's lists.
 * Errors  out of memory ends the process.
 * Source  Fiduccia & Mattheyses, A linear-time heuristic for improving network partitions,
 *         DAC 1982. Here a pass moves every free vertex; only the rollback drops the bad tail.
 */
void Refine_FM__(PartCtrl *ctrl, HGraph *graph, int npasses);

/* The same for levels with heavy vertices: each side offers its best vertex of positive gain that
 * fits into its room above the bound. */
void Refine_FM2__(PartCtrl *ctrl, HGraph *graph, int npasses);

/* Either of the two on many bisections of one level, in arrays that are kept in between: often they
 * take longer to allocate than a bisection to refine. graph's where, pwgts and mincut are those of
 * the present bisection; its arrays must stay where they are while the session is open. */
struct FmSession;
FmSession *open_fm_session(HGraph *graph);
void refine_in_session(PartCtrl *ctrl, FmSession *session, int npasses, bool constrained);
void close_fm_session(FmSession *session);

/* FM that leaves a pass once the cut has been above the best for more than fraction x ncells
 * moves. gain and ndeg are exact on return. EEFM2 chooses as Refine_FM2__ does. */
void Refine_EEFM__(PartCtrl *ctrl, HGraph *graph, int npasses, float fraction);
void Refine_EEFM2__(PartCtrl *ctrl, HGraph *graph, int npasses, float fraction);

#endif
