/* SPDX-License-Identifier: MIT */
/* kway/kway_gains.h: part lists of hyperedges and vertices for k-way refinement. */
#ifndef ZORPEL_KWAY_KWAY_GAINS_H
#define ZORPEL_KWAY_KWAY_GAINS_H

#include "core/hgraph.h"
#include "core/ctrl.h"

/* Allocates where, kpwgts, kplace, nrinfo, crinfo, nrdata and crdata for ctrl->nparts parts and
 * sets the views into the pools; contents are not set, but ndegrees of hyperedges is 0. */
void AllocateKwayRefinementMemory__(const PartCtrl *ctrl, HGraph *graph);

/* Computes kpwgts, mincut, minsoed and all records from where, islands excluded. */
void ComputeInitKwayGains__(const PartCtrl *ctrl, HGraph *graph);

/* ndegrees of a hyperedge that is known to be within one part before the records are computed, as
 * that of the coarser level was: its pins need not be looked at. */
constexpr int UNCUT = -1;

/* Tests from scratch, with records current:
 *   K1  kpwgts holds the weight of each part
 *   K2  mincut and minsoed are those of where; not if a hyperedge has one pin, as they drift
 *   K3  nrinfo lists the parts that each hyperedge touches with its pins in each; an uncut one may
 *       do without the list
 *   K4  id and ed of each vertex
 *   K5  crinfo lists the other parts that each vertex is connected to, with num and soed
 *   K6  kplace is all -1
 * The order within lists and ties are left out: an update may leave ties of unvisited pins as they
 * were. */
bool kway_ok(const PartCtrl *ctrl, const HGraph *graph);

#endif
