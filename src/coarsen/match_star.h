/* coarsen/match_star.h: first-choice matching, whose groups grow into stars. */
#ifndef ZORPEL_COARSEN_MATCH_STAR_H
#define ZORPEL_COARSEN_MATCH_STAR_H

#include "core/hgraph.h"
#include "partition/ctrl.h"

struct Candidates;

/* Lets each free vertex join its most strongly connected neighbour, grouped or not, until 40 % of
 * the vertices have joined one, and contracts (graph->coarser).
 *   flag    in   1: visit vertices by strength of their best connection, strongest first;
 *                0: by increasing degree
 *   perm    work [ncells]
 *   htable  work [ncells] all -1, also on return
 *   vpairs  work [2 ncells]
 * Fixed vertices stay alone. Charges "Aux3" (order) and "Aux4" (matching). */
void Match_EdgesStars__(PartCtrl *ctrl, HGraph *graph, int *perm, int *htable, int *vpairs,
                        int flag);

/* By degree and within the parts of where, ignoring hyperedges above ctrl->maxnetsize pins. */
void CMatch_EdgesStars__(PartCtrl *ctrl, HGraph *graph, const int *where, int *htable, int *perm,
                         int *vpairs);

/* The neighbour of u, free or in a group with room, most strongly connected to it; -1 when there
 * is none. wgts holds each group's weight, wgts[-1] is 0. */
int FindCellStar__(const PartCtrl *ctrl, int u, const int *incptr, const int *incind,
                   const int *netptr, const int *netind, const int *cellwgt, const float *edgewgt,
                   const int *cellmap, int *htable, const int *wgts, Candidates *list);
int CFindCellStar__(const PartCtrl *ctrl, int u, const int *incptr, const int *incind,
                    const int *netptr, const int *netind, const int *cellwgt, const float *edgewgt,
                    const int *cellmap, int *htable, const int *wgts, const int *where,
                    Candidates *list);

/* Writes 100 / (best connectivity) of each vertex into keys, the largest + 1 for vertices without
 * a candidate; returns that largest + 1. Looks at hyperedges of edgewgt 0.1 and more only. Writes
 * into partners who is the best candidate if the others can't change that, else -1. */
int ComputeAllWeights__(const PartCtrl *ctrl, const HGraph *graph, int *keys, int *partners,
                        int *htable);

#endif
