/* SPDX-License-Identifier: MIT */
/* partition/recursive.h: recursive bisection into any number of parts. */
#ifndef ZORPEL_PARTITION_RECURSIVE_H
#define ZORPEL_PARTITION_RECURSIVE_H

#include "core/hgraph.h"
#include "core/ctrl.h"

/* Partitions graph, owned by the caller, into ctrl->nparts parts, honouring pre-assignments
 * (ctrl->fixed) and polishing k-way afterwards (ctrl->kwayrefine, more than 2 parts).
 *   part  in/out  [ncells] pre-assigned part or -1 (with fixed); the partition
 * Returns the cut to report. ctrl->ubfactor is not restored after a polish. */
int MultilevelPartition__(PartCtrl *ctrl, HGraph *graph, int *part);

/* Bisects graph again and again into k parts numbered from offset; writes part[label[v]]. Returns
 * the sum of the cuts. Frees graph's label, and graph itself unless keep is 1. */
int MLRB__(PartCtrl *ctrl, HGraph *graph, int *part, int k, int offset);

#endif
