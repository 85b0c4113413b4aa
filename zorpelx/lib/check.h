/* SPDX-License-Identifier: MIT */
/* zorpelx/lib/check.h: checks of everything that a caller hands over. Each heeds its watch. */
#ifndef ZORPELX_LIB_CHECK_H
#define ZORPELX_LIB_CHECK_H

#include "fault.h"
#include "watch.h"

/* Whether totals of weights must fit the engine's 32 bits. */
enum class Totals { Bounded, Any };

Fault check_hypergraph(const zorpelx_hypergraph *hypergraph, Totals totals, Watch &watch);

/* All of it; what zorpelx_check() does. */
Fault check_call(const zorpelx_hypergraph *hypergraph, const zorpelx_options &options,
                 Watch &watch);

/* part [nvtxs] has a part from 0 to nparts - 1 for every vertex, and nparts is no absurd number. */
Fault check_partition(const zorpelx_hypergraph *hypergraph, int nparts, const int *part,
                      Watch &watch);

#endif
