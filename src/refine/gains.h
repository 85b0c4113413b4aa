/* SPDX-License-Identifier: MIT */
/* refine/gains.h: two-way refinement arrays, and gains, pin counts and cut from scratch. */
#ifndef ZORPEL_REFINE_GAINS_H
#define ZORPEL_REFINE_GAINS_H

#include "core/hgraph.h"

/* Allocates where (ncells + nislands), gain, ndeg[0] and ndeg[1]; contents are not set. */
void AllocateRefinementMemory__(HGraph *graph);

/* Computes ndeg, mincut, pwgts and gain from where (0 or 1 for every vertex), in O(pins).
 * gain(v) sums, over v's hyperedges, +w where v is the only pin on its side and the other side has
 * some, -w where the other side has none. */
void ComputeInitGains__(HGraph *graph);

#endif
