/* SPDX-License-Identifier: MIT */
/* partition/fixed.h: pre-assigned vertices. */
#ifndef ZORPEL_PARTITION_FIXED_H
#define ZORPEL_PARTITION_FIXED_H

#include "core/hgraph.h"
#include "core/ctrl.h"

/* Builds graph->coarser, in which vertex p < ctrl->nparts stands for all vertices fixed to part p
 * (perhaps none) and the free vertices follow in order. fix [ncells] holds a part or -1. Fills
 * cellmap, mptr, mind; leaves neither level with incidence. */
void CompressFixedCells__(PartCtrl *ctrl, HGraph *graph, const int *fix);

/* Writes into part [ncells] the partition fpart of the compressed hypergraph, the parts renumbered
 * so that merged vertex p is in part p. */
void ProjectFixedCells__(const PartCtrl *ctrl, const HGraph *graph, int *part, const int *fpart);

#endif
