/* SPDX-License-Identifier: MIT */
/* partition/entry.h: the entry point for programs that this library is part of. */
#ifndef ZORPEL_PARTITION_ENTRY_H
#define ZORPEL_PARTITION_ENTRY_H

#include "partition/halves.h"

/* What ZORPEL_PartRecursive() does, or with polish 0 ZORPEL_PartRecursiveInternal(): the same
 * bits, but numbers from a generator of its own, and up to crew->idle threads beside this one. */
void partition_with_crew(int nvtxs, int nhedges, const int *vwgts, const int *eptr, const int *eind,
                         const int *hewgts, int nparts, int ubfactor, const int *options, int *part,
                         int *edgecut, int polish, Crew *crew);

#endif
