/* SPDX-License-Identifier: MIT */
/* coarsen/match_edges.h: matching of vertex pairs by heaviest connectivity. */
#ifndef ZORPEL_COARSEN_MATCH_EDGES_H
#define ZORPEL_COARSEN_MATCH_EDGES_H

#include "coarsen/match_work.h"
#include "core/hgraph.h"
#include "core/ctrl.h"

struct Grouping;
struct PartnerSearch;

/* Pairs each vertex of the level with at most one other and contracts (graph->coarser). Fixed
 * vertices stay alone under their own numbers; no group outweighs ctrl->MaxCellWgt. */
void Match_Edges__(PartCtrl *ctrl, HGraph *graph, const MatchWork *work);

/* The same within the parts of where, ignoring hyperedges of more than ctrl->maxnetsize pins. */
void CMatch_Edges__(PartCtrl *ctrl, HGraph *graph, const int *where, const MatchWork *work);

/* The free vertex most strongly connected to u that fits, -1 when there is none; C, in the same
 * part. */
int FindCell__(PartnerSearch *search, int u);
int CFindCell__(PartnerSearch *search, int u);

/* Pairs the vertices that are free in groups, or leaves them single; each ends up in a group. */
void match_free_vertices(PartCtrl *ctrl, HGraph *graph, const MatchWork *work, Grouping *groups);

#endif
