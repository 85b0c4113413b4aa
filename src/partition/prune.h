/* partition/prune.h: leaving out large hyperedges. */
#ifndef ZORPEL_PARTITION_PRUNE_H
#define ZORPEL_PARTITION_PRUNE_H

#include "core/hgraph.h"
#include "partition/ctrl.h"

/* A copy of graph, same vertices, with only the hyperedges of at most ctrl->maxnetsize pins, in
 * their order, and its incidence. graph is not modified; the caller frees the copy. */
HGraph *PruneHGraph__(const PartCtrl *ctrl, const HGraph *graph);

#endif
