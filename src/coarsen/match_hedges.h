/* SPDX-License-Identifier: MIT */
/* coarsen/match_hedges.h: matching by whole hyperedges. */
#ifndef ZORPEL_COARSEN_MATCH_HEDGES_H
#define ZORPEL_COARSEN_MATCH_HEDGES_H

#include "coarsen/match_work.h"
#include "core/hgraph.h"
#include "core/ctrl.h"

/* Merges all vertices of each heavy, small hyperedge whose vertices are all free, and contracts
 * (graph->coarser); the vertices left over stay single. Fixed vertices stay alone; no group
 * outweighs ctrl->MaxCellWgt. */
void Match_Hedges__(PartCtrl *ctrl, HGraph *graph, const MatchWork *work);

/* The vertices left over are paired by edge matching. */
void Match_Hedges_Edges__(PartCtrl *ctrl, HGraph *graph, const MatchWork *work);

/* Before that, the free vertices of hyperedges that are more than half free are merged. */
void Match_Hedges_PHedges_Edges__(PartCtrl *ctrl, HGraph *graph, const MatchWork *work);

#endif
