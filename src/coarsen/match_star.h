/* SPDX-License-Identifier: MIT */
/* coarsen/match_star.h: first-choice matching, whose groups grow into stars. */
#ifndef ZORPEL_COARSEN_MATCH_STAR_H
#define ZORPEL_COARSEN_MATCH_STAR_H

#include "coarsen/match_work.h"
#include "core/hgraph.h"
#include "core/ctrl.h"

struct PartnerSearch;

/* Groups while vertices join them.
 *   T1  cellmap holds SINGLE or a group below ngroups; fixed vertices are in those of their numbers
 *   T2  wgts[c] is the weight of group c, but twice MaxCellWgt for the groups of fixed vertices,
 *       which nobody joins; wgts[-1] is 0
 *   T3  a group of two and more vertices never outweighs MaxCellWgt; it holds a
 *       fixed vertex only where nothing may have a weight
 */
struct Stars {
    int *cellmap; // [ncells] coarse vertex, SINGLE while free
    int *wgts;    // [-1..ncells - 1] weight of each group
    int ngroups;
};
bool stars_ok(const PartCtrl *ctrl, const HGraph *graph, const Stars *stars);

/* In which order vertices look for a partner: by increasing degree, or by strength of their best
 * connection, strongest first. */
enum class VisitOrder { by_degree, by_strength };

/* Lets each free vertex join its most strongly connected neighbour, grouped or not, until 40 % of
 * the vertices have joined one, and contracts (graph->coarser).
 * Fixed vertices stay alone. Charges "Aux3" (order) and "Aux4" (matching). */
void Match_EdgesStars__(PartCtrl *ctrl, HGraph *graph, const MatchWork *work, VisitOrder order);

/* By degree and within the parts of where, ignoring hyperedges above ctrl->maxnetsize pins. */
void CMatch_EdgesStars__(PartCtrl *ctrl, HGraph *graph, const int *where, const MatchWork *work);

/* The neighbour of u, free or in a group with room, most strongly connected to it; -1 when there
 * is none; C, in the same part. */
int FindCellStar__(PartnerSearch *search, int u);
int CFindCellStar__(PartnerSearch *search, int u);

/* Writes 100 / (best connectivity) of each vertex into keys, the largest + 1 for vertices without
 * a candidate; returns that largest + 1. Looks at hyperedges of edgewgt 0.1 and more only. Writes
 * into partners who is the best candidate if the others can't change that, else -1. */
int ComputeAllWeights__(const PartCtrl *ctrl, const HGraph *graph, int *keys, int *partners,
                        int *htable);

#endif
