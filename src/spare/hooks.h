/* SPDX-License-Identifier: MIT */
/* spare/hooks.h: places for a breakpoint while debugging.
 *
 * They look at a record and report nothing; a debugger shows what they found. The engine checks
 * itself with its predicates (..._ok) instead.
 */
#ifndef ZORPEL_SPARE_HOOKS_H
#define ZORPEL_SPARE_HOOKS_H

#include "core/hgraph.h"
#include "spare/pqueue.h"

/* The cut by ndeg and netwgt; right only while ndeg matches where. */
int ComputeCut__(const HGraph *graph);

/* Recomputes gains and pin counts aside and drops them: always 1. */
int CheckDegrees(const HGraph *graph);

/* Looks whether pins and incidence agree and no hyperedge repeats a pin: always 1. */
int CheckHGraph(const HGraph *graph);

/* Checks nothing: always 1. */
int CheckHeap(const PQueue *queue);

#endif
