/* SPDX-License-Identifier: MIT */
/* core/prefetch.h: asking for memory ahead of its use.
 *
 * The compiler takes a routine that does nothing but prefetch for one without effect and drops the
 * calls, so such routines are always_inline.
 */
#ifndef ZORPEL_CORE_PREFETCH_H
#define ZORPEL_CORE_PREFETCH_H

#include "core/heavy_assert.h"
#include "core/hgraph.h"

/* Pins of a level from which on its lists leave the second-level cache; on smaller ones asking
 * ahead costs more than it saves. */
constexpr int PREFETCH_PINS = HEAVY_ASSERTS ? 32 : 1 << 17;

inline bool worth_prefetching(const HGraph *graph)
{
    return graph->incptr[graph->ncells] >= PREFETCH_PINS;
}

#endif
