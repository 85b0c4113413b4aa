/* SPDX-License-Identifier: MIT */
/* coarsen/collapse.h: merging of identical hyperedges in bare lists. */
#ifndef ZORPEL_COARSEN_COLLAPSE_H
#define ZORPEL_COARSEN_COLLAPSE_H

#include "core/net_lists.h"

/* Merges hyperedges of equal pins into one of their summed weight.
 *   nets    in/out  each hyperedge's pins are sorted
 *   merged  out     new arrays, owned by the caller */
void CollapseSameHEdges__(const NetLists *nets, NetLists *merged);

#endif
