/* SPDX-License-Identifier: MIT */
/* partition/prune.h: leaving out large hyperedges. */
#ifndef ZORPEL_PARTITION_PRUNE_H
#define ZORPEL_PARTITION_PRUNE_H

#include "core/hgraph.h"
#include "core/ctrl.h"

/* Whether graph has hyperedges of more than ctrl->maxnetsize pins. */
bool has_large_nets(const PartCtrl *ctrl, const HGraph *graph);

/* A copy of graph, same vertices, with only the hyperedges of at most ctrl->maxnetsize pins, in
 * their order, and its incidence. graph is not modified; the caller frees the copy. When no
 * hyperedge is left out graph must have its incidence, and the copy borrows graph's lists,
 * incidence and weights: it must be freed before graph, and work on one of them, parked islands
 * above all, must end before work on the other. */
HGraph *PruneHGraph__(const PartCtrl *ctrl, const HGraph *graph);

#endif
