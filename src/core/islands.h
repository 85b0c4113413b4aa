/* SPDX-License-Identifier: MIT */
/* core/islands.h: vertices without hyperedges. */
#ifndef ZORPEL_CORE_ISLANDS_H
#define ZORPEL_CORE_ISLANDS_H

#include "core/hgraph.h"

/* Parks the vertices without hyperedges, fixed ones excepted, behind the others: ncells becomes the
 * count of the others, nislands theirs. Renumbers pins, weights, where and the finer level's
 * cellmap or, on the finest level, fills islandmap. Incidence must be there. */
void SeparateIslands__(HGraph *graph);

/* Gives each parked vertex, in order, the lighter side by pwgts; side 1 when they are equal. */
void PartitionIslands__(HGraph *graph);

/* Undoes SeparateIslands__ on the finest level: the numbering of before, every vertex in ncells. */
void CombineIslands__(HGraph *graph);

#endif
