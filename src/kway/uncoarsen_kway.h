/* SPDX-License-Identifier: MIT */
/* kway/uncoarsen_kway.h: uncoarsening of a k-way partition. */
#ifndef ZORPEL_KWAY_UNCOARSEN_KWAY_H
#define ZORPEL_KWAY_UNCOARSEN_KWAY_H

#include "core/hgraph.h"
#include "kway/refine_random.h"
#include "core/ctrl.h"

/* Carries the partition of cgraph, the coarsest level of a chain, to graph, its finest: projects,
 * refines for the objective in ctrl->RType, and places the islands at every finer level. Levels
 * above graph are freed; graph keeps its k-way arrays. A chain of one level is left as it is.
 * Errors: an unknown RType ends the process. */
void RefineKway__(PartCtrl *ctrl, HGraph *graph, HGraph *cgraph);

/* Carries the partition of cgraph to its finer level, with fresh k-way arrays; frees cgraph. If
 * cgraph has records of its hyperedges, they are current. */
void ProjectKwayPartition__(PartCtrl *ctrl, HGraph *cgraph);

/* Gives each parked vertex, in order, the lightest part by kpwgts; the lowest number on ties. */
void PartitionIslandsKway__(const PartCtrl *ctrl, HGraph *graph);

/* Refines one level for the objective in ctrl->RType: false, and nothing done, for another value.
 */
bool refine_objective(PartCtrl *ctrl, HGraph *graph, KwayRecords records);

#endif
