/* coarsen/match_edges.h: matching of vertex pairs by heaviest connectivity. */
#ifndef ZORPEL_COARSEN_MATCH_EDGES_H
#define ZORPEL_COARSEN_MATCH_EDGES_H

#include "core/hgraph.h"
#include "partition/ctrl.h"

struct Candidates;
struct Grouping;

/* Pairs each vertex of the level with at most one other and contracts (graph->coarser).
 *   perm    work [ncells]
 *   htable  work [ncells] all -1, also on return
 *   vpairs  work [2 ncells]
 * Fixed vertices stay alone under their own numbers; no group outweighs ctrl->MaxCellWgt. */
void Match_Edges__(PartCtrl *ctrl, HGraph *graph, int *perm, int *htable, int *vpairs);

/* The same within the parts of where, ignoring hyperedges of more than ctrl->maxnetsize pins. */
void CMatch_Edges__(PartCtrl *ctrl, HGraph *graph, const int *where, int *htable, int *perm,
                    int *vpairs);

/* The free vertex most strongly connected to u that fits, -1 when there is none. list and htable
 * are as open_candidates leaves them. */
int FindCell__(const PartCtrl *ctrl, int u, const int *incptr, const int *incind, const int *netptr,
               const int *netind, const int *cellwgt, const float *edgewgt, const int *cellmap,
               int *htable, Candidates *list);
int CFindCell__(const PartCtrl *ctrl, int u, const int *incptr, const int *incind,
                const int *netptr, const int *netind, const int *cellwgt, const float *edgewgt,
                const int *cellmap, int *htable, const int *where, Candidates *list);

/* Pairs the vertices that are free in groups, or leaves them single; each ends up in a group. */
void match_free_vertices(PartCtrl *ctrl, HGraph *graph, int *perm, int *htable, int *vpairs,
                         Grouping *groups);

#endif
