/* coarsen/match_hedges.h: matching by whole hyperedges. */
#ifndef ZORPEL_COARSEN_MATCH_HEDGES_H
#define ZORPEL_COARSEN_MATCH_HEDGES_H

#include "core/hgraph.h"
#include "partition/ctrl.h"

/* Merges all vertices of each heavy, small hyperedge whose vertices are all free, and contracts
 * (graph->coarser); the vertices left over stay single.
 *   perm    work [max(ncells, nnets)]
 *   htable  work [ncells] all -1, also on return
 *   vpairs  work [2 max(ncells, nnets)]
 * Fixed vertices stay alone; no group outweighs ctrl->MaxCellWgt. */
void Match_Hedges__(PartCtrl *ctrl, HGraph *graph, int *perm, int *htable, int *vpairs);

/* The vertices left over are paired by edge matching. */
void Match_Hedges_Edges__(PartCtrl *ctrl, HGraph *graph, int *perm, int *htable, int *vpairs);

/* Before that, the free vertices of hyperedges that are more than half free are merged. */
void Match_Hedges_PHedges_Edges__(PartCtrl *ctrl, HGraph *graph, int *perm, int *htable,
                                  int *vpairs);

#endif
