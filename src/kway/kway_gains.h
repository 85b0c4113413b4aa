/* kway/kway_gains.h: part lists of hyperedges and vertices for k-way refinement. */
#ifndef ZORPEL_KWAY_KWAY_GAINS_H
#define ZORPEL_KWAY_KWAY_GAINS_H

#include "core/hgraph.h"
#include "partition/ctrl.h"

/* Allocates where, kpwgts, nrinfo, crinfo, nrdata and crdata for ctrl->nparts parts and sets the
 * views into the pools; contents are not set. */
void AllocateKwayRefinementMemory__(const PartCtrl *ctrl, HGraph *graph);

/* Computes kpwgts, mincut, minsoed and all records from where, islands excluded. */
void ComputeInitKwayGains__(const PartCtrl *ctrl, HGraph *graph);

/* Recomputes the records of the n vertices in list from the hyperedges' records. */
void ComputeKwayGainsSet__(HGraph *graph, int n, const int *list);

/* Brings the records up to date after v moved (where, kpwgts, mincut, minsoed are already so).
 *   marker  in/out  [ncells] vertex numbers as stamps; no entry may be v before
 *   updind  work    [ncells] */
void KwayUpdateGainInfo__(HGraph *graph, int v, int from, int to, int *marker, int *updind);

/* Recomputes everything aside and compares, the order within lists and ties of vertices excepted:
 * an update may leave ties of unvisited pins as they were. */
bool kway_ok(const PartCtrl *ctrl, const HGraph *graph);

#endif
